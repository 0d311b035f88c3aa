#include "uiscreen.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStandardItemModel>

using tests::json;
using tests::kButton;
using tests::place;

// Choosing from combo boxes and typing into fields through the calls.
class TestUiFields : public tests::UiScreenTest
{
    Q_OBJECT

private slots:
    void init() { makeScreen(); }
    void cleanup() { takeScreenAway(); }

    void chooseEmitsAsAUserWould();
    void chooseTheItemThatIsChosen();
    void chooseRefuses_data();
    void chooseRefuses();

    void typeReplacesTheText_data();
    void typeReplacesTheText();
    void typeOfNothingEmptiesTheField();
    void typeRespectsTheValidator();
    void typeRefuses_data();
    void typeRefuses();
};

void TestUiFields::chooseEmitsAsAUserWould()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two", "three"});
    QSignalSpy activated(combo, QOverload<int>::of(&QComboBox::activated));
    QSignalSpy changed(combo, QOverload<int>::of(&QComboBox::currentIndexChanged));
    show();
    QCOMPARE(result("ui.choose", "{'object':'combo','text':'three'}"), QJsonObject());
    QCOMPARE(combo->currentText(), QString("three"));
    QCOMPARE(activated, QList<QVariantList>{{2}});
    QCOMPARE(changed, QList<QVariantList>{{2}});
    QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
}

void TestUiFields::chooseTheItemThatIsChosen()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two"});
    QSignalSpy activated(combo, QOverload<int>::of(&QComboBox::activated));
    show();
    result("ui.choose", "{'object':'combo','text':'one'}");
    QCOMPARE(activated, QList<QVariantList>{{0}});
}

void TestUiFields::chooseRefuses_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such item") << QByteArray("{'object':'combo','text':'four'}")
                                  << "NotFound: combo has no item four; there are: one, two";
    QTest::newRow("other case") << QByteArray("{'object':'combo','text':'One'}")
                                << "NotFound: combo has no item One; there are: one, two";
    QTest::newRow("disabled item") << QByteArray("{'object':'combo','text':'two'}")
                                   << "Disabled: item two of combo is disabled";
    QTest::newRow("no combo box") << QByteArray("{'object':'key','text':'one'}")
                                  << "WrongKind: key is no combo box";
    QTest::newRow("disabled combo box")
        << QByteArray("{'object':'off','text':'one'}") << "Disabled: off is disabled";
    QTest::newRow("missing") << QByteArray("{'object':'gone','text':'one'}")
                             << "NotFound: no object gone";
}

void TestUiFields::chooseRefuses()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two"});
    qobject_cast<QStandardItemModel *>(combo->model())->item(1)->setEnabled(false);
    QSignalSpy activated(combo, QOverload<int>::of(&QComboBox::activated));
    QComboBox *off = place<QComboBox>(screen.get(), "off", {20, 100, 100, 40});
    off->addItem("one");
    off->setEnabled(false);
    button("key", {20, 200, 100, 40});
    show();
    QCOMPARE(error("ui.choose", params), message);
    QCOMPARE(activated.count(), 0);
}

void TestUiFields::typeReplacesTheText_data()
{
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QString>("typed");
    QTest::newRow("line") << QByteArray("line") << "0x4f Größe 中文";
    QTest::newRow("text") << QByteArray("text") << "first\nsecond";
    QTest::newRow("number") << QByteArray("spin") << "42";
    QTest::newRow("editable combo box") << QByteArray("combo") << "115200";
}

void TestUiFields::typeReplacesTheText()
{
    QFETCH(QByteArray, object);
    QFETCH(QString, typed);
    place<QLineEdit>(screen.get(), "line", {0, 0, 200, 30})->setText("old");
    place<QPlainTextEdit>(screen.get(), "text", {0, 40, 200, 60})->setPlainText("old");
    place<QSpinBox>(screen.get(), "spin", {0, 120, 200, 30});
    place<QComboBox>(screen.get(), "combo", {0, 160, 200, 30})->setEditable(true);
    show();
    const QJsonObject params{{"object", QString(object)}, {"text", typed}};
    QCOMPARE(result("ui.type", QJsonDocument(params).toJson()).value("text"), QJsonValue(typed));
    QCOMPARE(result("ui.state", "{'object':'" + object + "'}").value("text"), QJsonValue(typed));
}

void TestUiFields::typeOfNothingEmptiesTheField()
{
    QLineEdit *line = place<QLineEdit>(screen.get(), "line", kButton);
    line->setText("old");
    QSignalSpy edited(line, &QLineEdit::textEdited);
    show();
    QCOMPARE(result("ui.type", "{'object':'line','text':''}"), json("{'text':''}"));
    QCOMPARE(edited, QList<QVariantList>{{""}});
}

void TestUiFields::typeRespectsTheValidator()
{
    place<QLineEdit>(screen.get(), "line", kButton)->setMaxLength(3);
    show();
    QCOMPARE(result("ui.type", "{'object':'line','text':'12345'}"), json("{'text':'123'}"));
}

void TestUiFields::typeRefuses_data()
{
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QString>("message");
    QTest::newRow("button") << QByteArray("key") << "WrongKind: key takes no text";
    QTest::newRow("plain combo box") << QByteArray("combo") << "WrongKind: combo takes no text";
    QTest::newRow("read-only") << QByteArray("fixed") << "Disabled: fixed is read-only";
    QTest::newRow("disabled") << QByteArray("off") << "Disabled: off is disabled";
    QTest::newRow("missing") << QByteArray("gone") << "NotFound: no object gone";
}

void TestUiFields::typeRefuses()
{
    QFETCH(QByteArray, object);
    QFETCH(QString, message);
    button();
    place<QComboBox>(screen.get(), "combo", {20, 80, 100, 30});
    place<QLineEdit>(screen.get(), "fixed", {20, 120, 100, 30})->setReadOnly(true);
    place<QLineEdit>(screen.get(), "off", {20, 160, 100, 30})->setEnabled(false);
    show();
    QCOMPARE(error("ui.type", "{'object':'" + object + "','text':'1'}"), message);
}

TESTMODE_TEST_MAIN(TestUiFields)
#include "test_uifields.moc"
