#include "gnss_download/serialset.h"

#include "tests/support/unittest.h"
#include "tools/common.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest/qtestspontaneevent.h>

// The serial settings dialog.
class TestSerialSet : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void slotsStandInOrder();
    void formIsAsLaidOut();
    void boxesOfferTheirItems_data();
    void boxesOfferTheirItems();
    void valuesInForceAreSelected_data();
    void valuesInForceAreSelected();
    void fillingAgainDoesNotDouble();
    void okStoresTheChoices();
    void storingHidesTheDialog();
    void cancelStoresNothing();
    void openingASecondTimeSelectsTheStoredValues();
    void comingBackIntoViewKeepsTheChoices();
    void changeBaudCopiesTheBox();
};

namespace {

QComboBox *box(const SerialSet &dialog, const char *name)
{
    auto *found = dialog.findChild<QComboBox *>(name);
    if (found == nullptr)
        qFatal("no box %s", name);
    return found;
}

void press(const SerialSet &dialog, QDialogButtonBox::StandardButton button)
{
    QTest::mouseClick(dialog.findChild<QDialogButtonBox *>()->button(button), Qt::LeftButton);
}

} // namespace

void TestSerialSet::init()
{
    UnitTest::init();
    com_set = config();
    br = "921600";
}

void TestSerialSet::slotsStandInOrder()
{
    QCOMPARE(tests::slotsOf(SerialSet::staticMetaObject),
             QStringList({"on_buttonBox_accepted()", "ChangeBuad()"}));
}

void TestSerialSet::formIsAsLaidOut()
{
    SerialSet dialog(nullptr);
    QCOMPARE(dialog.windowTitle(), QString("Dialog"));
    QMap<QString, QString> boxBeside;
    QMap<QString, QStringList> families;
    const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
    for (QLabel *label : labels) {
        families[label->font().family()] << label->text();
        for (QComboBox *beside : dialog.findChildren<QComboBox *>()) {
            if (beside->y() == label->y())
                boxBeside[label->text()] = beside->objectName();
        }
    }
    const QMap<QString, QStringList> wanted = {{"楷体", {"波特率：", "数据位：", "停止位："}},
                                               {"黑体", {"校验类型：", "流控制："}}};
    QCOMPARE(families, wanted);
    QCOMPARE(boxBeside,
             (QMap<QString, QString>{{"波特率：", "comboBaudRate"},
                                     {"数据位：", "comboDataBits"},
                                     {"停止位：", "comboStopBits"},
                                     {"校验类型：", "comboParity"},
                                     {"流控制：", "comboFlowControl"}}));
    QCOMPARE(dialog.findChild<QDialogButtonBox *>()->standardButtons(),
             QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
}

void TestSerialSet::boxesOfferTheirItems_data()
{
    QTest::addColumn<QStringList>("items");
    QTest::newRow("comboBaudRate")
        << QStringList({"57600", "115200", "230400", "460800", "921600", "2000000"});
    QTest::newRow("comboDataBits") << QStringList({"5", "6", "7", "8"});
    QTest::newRow("comboStopBits") << QStringList({"1", "1.5", "2"});
    QTest::newRow("comboParity") << QStringList({"None", "Even", "Odd", "Mark", "Space"});
    QTest::newRow("comboFlowControl") << QStringList({"None", "Hardware", "Software", "Custom"});
}

void TestSerialSet::boxesOfferTheirItems()
{
    QFETCH(QStringList, items);
    SerialSet dialog(nullptr);
    const QComboBox *found = box(dialog, QTest::currentDataTag());
    QStringList offered;
    for (int i = 0; i < found->count(); ++i)
        offered << found->itemText(i);
    QCOMPARE(offered, items);
}

void TestSerialSet::valuesInForceAreSelected_data()
{
    QTest::addColumn<float>("stopBits");
    QTest::addColumn<QString>("shown");
    QTest::newRow("1") << 1.0F << "1";
    QTest::newRow("1.5") << 1.5F << "1.5";
    QTest::newRow("2") << 2.0F << "2";
}

void TestSerialSet::valuesInForceAreSelected()
{
    QFETCH(float, stopBits);
    QFETCH(QString, shown);
    {
        SerialSet initial(nullptr);
        QCOMPARE(box(initial, "comboBaudRate")->currentText(), QString("921600"));
        QCOMPARE(box(initial, "comboDataBits")->currentText(), QString("8"));
        QCOMPARE(box(initial, "comboStopBits")->currentText(), QString("1"));
        QCOMPARE(box(initial, "comboParity")->currentText(), QString("None"));
        QCOMPARE(box(initial, "comboFlowControl")->currentText(), QString("None"));
    }
    com_set = {57600, 7, "Mark", stopBits, "Custom"};
    SerialSet dialog(nullptr);
    QCOMPARE(box(dialog, "comboBaudRate")->currentText(), QString("57600"));
    QCOMPARE(box(dialog, "comboDataBits")->currentText(), QString("7"));
    QCOMPARE(box(dialog, "comboStopBits")->currentText(), shown);
    QCOMPARE(box(dialog, "comboParity")->currentText(), QString("Mark"));
    QCOMPARE(box(dialog, "comboFlowControl")->currentText(), QString("Custom"));
}

void TestSerialSet::fillingAgainDoesNotDouble()
{
    SerialSet dialog(nullptr);
    com_set.baudRate = 230400;
    dialog.SetBaudValue();
    QCOMPARE(box(dialog, "comboBaudRate")->count(), 6);
    QCOMPARE(box(dialog, "comboBaudRate")->currentText(), QString("230400"));
    com_set.dataBits = 5;
    dialog.SynComPortValue();
    QCOMPARE(box(dialog, "comboDataBits")->count(), 4);
    QCOMPARE(box(dialog, "comboDataBits")->currentText(), QString("5"));
}

void TestSerialSet::okStoresTheChoices()
{
    SerialSet dialog(nullptr);
    dialog.show();
    box(dialog, "comboBaudRate")->setCurrentText("460800");
    box(dialog, "comboDataBits")->setCurrentText("6");
    box(dialog, "comboStopBits")->setCurrentText("1.5");
    box(dialog, "comboParity")->setCurrentText("Space");
    box(dialog, "comboFlowControl")->setCurrentText("Hardware");
    press(dialog, QDialogButtonBox::Ok);
    QCOMPARE(com_set.baudRate, 115200);
    QCOMPARE(br, QString("460800"));
    QCOMPARE(com_set.dataBits, 6);
    QCOMPARE(com_set.stopBits, 1.5F);
    QCOMPARE(com_set.parity, QString("Space"));
    QCOMPARE(com_set.flowControl, QString("Hardware"));
    QVERIFY(dialog.isHidden());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(trace().payloads(), QStringList({"\"460800\""}));
}

// By the slot alone, without the button box that accepts the dialog.
void TestSerialSet::storingHidesTheDialog()
{
    SerialSet dialog(nullptr);
    dialog.show();
    QVERIFY(QMetaObject::invokeMethod(&dialog, "on_buttonBox_accepted"));
    QVERIFY(dialog.isHidden());
    QCOMPARE(dialog.result(), 0);
}

void TestSerialSet::cancelStoresNothing()
{
    SerialSet dialog(nullptr);
    const QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    box(dialog, "comboBaudRate")->setCurrentText("460800");
    press(dialog, QDialogButtonBox::Cancel);
    QCOMPARE(com_set.baudRate, 921600);
    QCOMPARE(br, QString("921600"));
    QVERIFY(dialog.isHidden());
    QCOMPARE(rejected.size(), 1);
    QVERIFY(trace().lines().isEmpty());
}

void TestSerialSet::openingASecondTimeSelectsTheStoredValues()
{
    SerialSet dialog(nullptr);
    dialog.show();
    box(dialog, "comboBaudRate")->setCurrentText("460800");
    press(dialog, QDialogButtonBox::Ok);
    dialog.show();
    QCOMPARE(box(dialog, "comboBaudRate")->currentText(), QString("115200"));
}

// The screen is uncovered while the user is choosing.
void TestSerialSet::comingBackIntoViewKeepsTheChoices()
{
    SerialSet dialog(nullptr);
    dialog.show();
    box(dialog, "comboBaudRate")->setCurrentText("460800");
    box(dialog, "comboParity")->setCurrentText("Odd");
    QShowEvent uncovered;
    QSpontaneKeyEvent::setSpontaneous(&uncovered);
    QVERIFY(uncovered.spontaneous());
    qApp->notify(&dialog, &uncovered);
    QCOMPARE(box(dialog, "comboBaudRate")->currentText(), QString("460800"));
    QCOMPARE(box(dialog, "comboParity")->currentText(), QString("Odd"));
}

void TestSerialSet::changeBaudCopiesTheBox()
{
    SerialSet dialog(nullptr);
    box(dialog, "comboBaudRate")->setCurrentText("2000000");
    QVERIFY(QMetaObject::invokeMethod(&dialog, "ChangeBuad"));
    QCOMPARE(com_set.baudRate, 2000000);
    QCOMPARE(br, QString("921600"));
}

TESTMODE_TEST_MAIN(TestSerialSet)
#include "test_serialset.moc"
