#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "tests/support/clock/virtualclock.h"
#include "tests/support/unittest.h"

#include "gnss_download/serialset.h"
#include "gps/gpsupdate.h"
#include "tools/common.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTextBlock>
#include <QTextBrowser>

using bench::journal;
using testmode::gpsupdate;

namespace {

const QString kTime = QStringLiteral("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}");

template <typename Widget>
Widget *part(const gpsupdate &page, const char *name)
{
    return page.findChild<Widget *>(QString::fromLatin1(name));
}

void press(const gpsupdate &page, const char *name)
{
    auto *button = part<QPushButton>(page, name);
    QVERIFY2(button != nullptr, name);
    QTest::mouseClick(button, Qt::LeftButton);
}

QList<SerialSet *> settingsDialogs()
{
    QList<SerialSet *> found;
    const QWidgetList all = QApplication::topLevelWidgets();
    for (QWidget *widget : all) {
        if (auto *dialog = qobject_cast<SerialSet *>(widget))
            found << dialog;
    }
    return found;
}

// The pictures that the unit keeps in the framework's working directory.
void makeIcon(const char *name, const QColor &colour)
{
    QPixmap icon(60, 60);
    icon.fill(colour);
    QVERIFY(QDir().mkpath("ICO"));
    QVERIFY(icon.save(QStringLiteral("ICO/%1.png").arg(name)));
}

QColor iconColour(const gpsupdate &page)
{
    return part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).toImage().pixelColor(30, 30);
}

// Fragments of the log's last line.
QList<QTextFragment> lastLine(const gpsupdate &page)
{
    QList<QTextFragment> fragments;
    const QTextBlock block = part<QTextBrowser>(page, "textBrowser")->document()->lastBlock();
    for (auto it = block.begin(); !it.atEnd(); ++it)
        fragments << it.fragment();
    return fragments;
}

} // namespace

// The update page without a worker: its looks, its presses, its lines.
class TestGpsUpdate : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();

    void hasItsSignalAndSlotsInOrder();
    void formHoldsItsWidgets_data();
    void formHoldsItsWidgets();
    void panelsHaveTheirPlacesAndColours_data();
    void panelsHaveTheirPlacesAndColours();
    void onlyTheSecondResetLiesOffTheScreen();
    void panelsAreShownAboveTheBackdropInOrder();
    void nothingOverlaps();
    void textsFit();
    void logIsRichTextOfTwelvePoints();
    void progressBarStartsEmpty();
    void downloadBaudRateIsSetOnce();
    void chosenBaudRateStays();
    void queuedTypesAreRegistered();
    void settingsDialogIsHiddenAndOutlivesThePage();

    void onePortIsOffered();
    void portsThatAreNotOfferedAreForgotten();
    void activatingAPortTogglesIt();
    void activatingThroughTheListTogglesIt();
    void activatedPortsAreListed();

    void checkResetsTheSerialSettings();
    void checkTellsWhetherThereIsAPackage_data();
    void checkTellsWhetherThereIsAPackage();
    void choosingLoadsThePackage();
    void choosingWithoutPackageShowsThePathAllTheSame();

    void resetPulsesTheLine();
    void secondResetReleasesTheLine();
    void portSwitchTogglesTheSettingAndReboots();
    void clearEmptiesTheLog();
    void returnHidesThePage();

    void resultLine_data();
    void resultLine();
    void resetLine();
    void resultIsTraced_data();
    void resultIsTraced();
    void reportWithoutRunningPortEndsTheUpdate_data();
    void reportWithoutRunningPortEndsTheUpdate();
    void missingIconLeavesTheLabelEmpty();
    void messageBoxStandsBeforeThePage();
    void pageMayGoWhileAMessageIsOpen();
    void progressBytesAreIgnored();
    void logKeepsItsLastLines();
    void olderCompletionSlot();
};

void TestGpsUpdate::init()
{
    UnitTest::init();
    com.clear();
    br.clear();
    com_set = config();
    downloadfile = file();
    qDeleteAll(settingsDialogs());
    makeIcon("red", Qt::red);
    makeIcon("green", Qt::green);
}

void TestGpsUpdate::hasItsSignalAndSlotsInOrder()
{
    QCOMPARE(tests::signalsOf(gpsupdate::staticMetaObject),
             QStringList{"signal_Close_COM(QString)"});
    QCOMPARE(tests::slotsOf(gpsupdate::staticMetaObject),
             (QStringList{"on_pushButton_clicked()", "on_pushButton_2_clicked()",
                          "on_pushButton_3_clicked()", "on_pushButton_4_clicked()",
                          "on_comboBox_activated(QString)", "on_btn_reset_clicked()",
                          "on_btn_reset_2_clicked()", "on_btn_gpsdisconnect_clicked()",
                          "on_btn_exit_clicked()", "show_log(QByteArray)",
                          "show_result(QString,bool)", "show_reset_result(QString)",
                          "show_Messagebox(QString,QString)", "thend(QString,QString)"}));
}

void TestGpsUpdate::formHoldsItsWidgets_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("panel");
    QTest::newRow("pushButton_3") << QByteArray("QPushButton") << "开始"
                                  << "widget_3";
    QTest::newRow("progressBar") << QByteArray("QProgressBar") << ""
                                 << "widget_3";
    QTest::newRow("label_2") << QByteArray("QLabel") << "固件："
                             << "widget";
    QTest::newRow("lineEdit") << QByteArray("QLineEdit") << ""
                              << "widget";
    QTest::newRow("label") << QByteArray("QLabel") << "串口："
                           << "widget";
    QTest::newRow("comboBox") << QByteArray("QComboBox") << ""
                              << "widget";
    QTest::newRow("lineEdit_2") << QByteArray("QLineEdit") << ""
                                << "widget";
    QTest::newRow("pushButton") << QByteArray("QPushButton") << "Check"
                                << "widget";
    QTest::newRow("pushButton_2") << QByteArray("QPushButton") << "选择"
                                  << "widget";
    QTest::newRow("btn_reset") << QByteArray("QPushButton") << "复位0"
                               << "Gpsupdate";
    QTest::newRow("btn_reset_2") << QByteArray("QPushButton") << "复位1"
                                 << "Gpsupdate";
    QTest::newRow("textBrowser") << QByteArray("QTextBrowser") << ""
                                 << "widget_2";
    QTest::newRow("label_3") << QByteArray("QLabel") << ""
                             << "widget_2";
    QTest::newRow("pushButton_4") << QByteArray("QPushButton") << "清除"
                                  << "widget_2";
    QTest::newRow("btn_exit") << QByteArray("QPushButton") << "Return"
                              << "Gpsupdate";
    QTest::newRow("btn_gpsdisconnect") << QByteArray("QPushButton") << "设置端口(重启)"
                                       << "Gpsupdate";
}

void TestGpsUpdate::formHoldsItsWidgets()
{
    QFETCH(QByteArray, type);
    QFETCH(QString, text);
    QFETCH(QString, panel);
    const gpsupdate page;
    const auto *widget = part<QWidget>(page, QTest::currentDataTag());
    QVERIFY(widget != nullptr);
    QVERIFY(widget->inherits(type.constData()));
    QVERIFY(widget->parentWidget() != nullptr);
    QCOMPARE(widget->parentWidget()->objectName(), panel);
    if (!text.isEmpty())
        QCOMPARE(widget->property("text").toString(), text);
}

void TestGpsUpdate::panelsHaveTheirPlacesAndColours_data()
{
    QTest::addColumn<QRect>("place");
    QTest::addColumn<QString>("style");
    QTest::newRow("label_bg") << QRect(0, 0, 1024, 600) << "background-color: rgb(0, 0, 0);";
    QTest::newRow("widget") << QRect(52, 100, 941, 117) << "background-color: rgb(143, 240, 164);";
    QTest::newRow("widget_2") << QRect(50, 210, 631, 301)
                              << "background-color: rgb(249, 240, 107);";
    QTest::newRow("widget_3") << QRect(50, 510, 391, 76) << "background-color: rgb(143, 240, 164);";
}

void TestGpsUpdate::panelsHaveTheirPlacesAndColours()
{
    QFETCH(QRect, place);
    QFETCH(QString, style);
    const gpsupdate page;
    QCOMPARE(page.geometry(), QRect(0, 0, 1024, 600));
    QCOMPARE(page.styleSheet(), QStringLiteral("color: rgb(36, 31, 49);"));
    const auto *panel = part<QWidget>(page, QTest::currentDataTag());
    QVERIFY(panel != nullptr);
    QCOMPARE(panel->parentWidget(), static_cast<const QWidget *>(&page));
    QCOMPARE(panel->geometry(), place);
    QCOMPARE(panel->styleSheet(), style);
}

void TestGpsUpdate::onlyTheSecondResetLiesOffTheScreen()
{
    const gpsupdate page;
    const QList<QWidget *> children =
        page.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget *child : children)
        QCOMPARE(page.rect().contains(child->geometry()), child->objectName() != "btn_reset_2");
    QCOMPARE(part<QWidget>(page, "btn_reset_2")->x(), 1050);
    QCOMPARE(part<QWidget>(page, "label_3")->size(), QSize(60, 60));
}

void TestGpsUpdate::panelsAreShownAboveTheBackdropInOrder()
{
    gpsupdate page;
    page.show();
    const QObjectList order = page.children(); // later lies above
    const auto place = [&](const char *name) { return order.indexOf(part<QWidget>(page, name)); };
    QVERIFY(place("label_bg") < place("widget"));
    QCOMPARE(place("widget_2"), place("widget") + 1);
    QCOMPARE(place("widget_3"), place("widget") + 2);
    QCOMPARE(order.last(), part<QWidget>(page, "widget_3"));
    for (const char *name : {"widget", "widget_2", "widget_3"})
        QVERIFY(part<QWidget>(page, name)->isVisible());
}

// The panels' own places overlap by a few lines; what stands in them must not.
void TestGpsUpdate::nothingOverlaps()
{
    gpsupdate page;
    page.show();
    QList<QWidget *> parts;
    for (const char *name :
         {"pushButton", "pushButton_2", "pushButton_3", "pushButton_4", "progressBar", "label",
          "label_2", "label_3", "lineEdit", "lineEdit_2", "comboBox", "textBrowser", "btn_reset",
          "btn_exit", "btn_gpsdisconnect"})
        parts << part<QWidget>(page, name);
    const auto onPage = [&page](const QWidget *widget) {
        return QRect(widget->mapTo(&page, QPoint()), widget->size());
    };
    for (QWidget *one : qAsConst(parts)) {
        for (QWidget *other : qAsConst(parts)) {
            QVERIFY2(one == other || !onPage(one).intersects(onPage(other)),
                     qPrintable(one->objectName() + " and " + other->objectName()));
        }
        // no panel lies over it
        for (const QPoint &corner : {QPoint(2, 2), one->rect().bottomRight() - QPoint(2, 2)}) {
            const QWidget *seen = page.childAt(one->mapTo(&page, corner));
            QVERIFY2(seen == one || one->isAncestorOf(seen), qPrintable(one->objectName()));
        }
    }
}

void TestGpsUpdate::textsFit()
{
    gpsupdate page;
    page.show();
    const QList<QPushButton *> buttons = page.findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 8);
    for (const QPushButton *button : buttons) {
        QVERIFY2(button->sizeHint().width() <= button->width()
                     && button->sizeHint().height() <= button->height(),
                 qPrintable(button->objectName()));
        QVERIFY2(button->height() >= 44, qPrintable(button->objectName())); // for a finger
    }
    for (const char *name : {"label", "label_2"}) {
        const auto *label = part<QLabel>(page, name);
        QVERIFY2(label->sizeHint().width() <= label->width(), name);
    }
    const QString longest = QStringLiteral("No Update file!");
    const auto *line = part<QLineEdit>(page, "lineEdit_2");
    QVERIFY(line->fontMetrics().horizontalAdvance(longest) < line->width() - 20);
}

void TestGpsUpdate::logIsRichTextOfTwelvePoints()
{
    const gpsupdate page;
    const auto *browser = part<QTextBrowser>(page, "textBrowser");
    QVERIFY(browser->acceptRichText());
    QCOMPARE(browser->font().pointSize(), 12);
    QCOMPARE(browser->fontPointSize(), 12.0);
    QCOMPARE(browser->toPlainText(), QString());
}

void TestGpsUpdate::progressBarStartsEmpty()
{
    const gpsupdate page;
    const auto *bar = part<QProgressBar>(page, "progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), -1);
    QCOMPARE(bar->text(), QString());
    QCOMPARE(bar->alignment(), Qt::AlignCenter);
}

void TestGpsUpdate::downloadBaudRateIsSetOnce()
{
    QCOMPARE(br, QString());
    const gpsupdate first;
    QCOMPARE(br, QStringLiteral("921600"));
    // a window built a second time must still be able to flash
    const gpsupdate second;
    QCOMPARE(br, QStringLiteral("921600"));
}

void TestGpsUpdate::chosenBaudRateStays()
{
    br = "460800";
    const gpsupdate page;
    QCOMPARE(br, QStringLiteral("460800"));
}

void TestGpsUpdate::queuedTypesAreRegistered()
{
    const gpsupdate page;
    QCOMPARE(QMetaType::type("uint8_t"), qMetaTypeId<uint8_t>());
    QCOMPARE(QMetaType::type("uint16_t"), qMetaTypeId<uint16_t>());
    QCOMPARE(QMetaType::type("uint32_t"), qMetaTypeId<uint32_t>());
}

void TestGpsUpdate::settingsDialogIsHiddenAndOutlivesThePage()
{
    auto *page = new gpsupdate;
    page->show();
    QCOMPARE(settingsDialogs().size(), 1);
    const QPointer<SerialSet> dialog = settingsDialogs().first();
    QVERIFY(dialog->parent() == nullptr);
    QVERIFY(dialog->isHidden());
    delete page;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!dialog.isNull());
}

void TestGpsUpdate::onePortIsOffered()
{
    gpsupdate page;
    const auto *box = part<QComboBox>(page, "comboBox");
    QCOMPARE(box->count(), 1);
    QCOMPARE(box->itemText(0), QStringLiteral("/dev/ttyS4"));
    page.ComboboxGetSerial();
    QCOMPARE(box->count(), 1);
    QCOMPARE(part<QLineEdit>(page, "lineEdit_2")->text(), QString());
}

void TestGpsUpdate::portsThatAreNotOfferedAreForgotten()
{
    com = QStringList{"/dev/ttyUSB0", "/dev/ttyS4", "", "/dev/ttyS", "/dev/ttyS4"};
    const gpsupdate page;
    QCOMPARE(com, (QStringList{"/dev/ttyS4", "/dev/ttyS4"}));
    QCOMPARE(part<QLineEdit>(page, "lineEdit_2")->text(), QStringLiteral("/dev/ttyS4 /dev/ttyS4 "));
}

void TestGpsUpdate::activatingAPortTogglesIt()
{
    gpsupdate page;
    trace().clear();
    QSignalSpy closed(&page, &gpsupdate::signal_Close_COM);
    const auto *line = part<QLineEdit>(page, "lineEdit_2");

    page.on_comboBox_activated("/dev/ttyS4");
    QCOMPARE(com, QStringList{"/dev/ttyS4"});
    QCOMPARE(line->text(), QStringLiteral("/dev/ttyS4 "));
    QCOMPARE(closed.count(), 0);

    page.on_comboBox_activated("/dev/ttyS4");
    QCOMPARE(com, QStringList());
    QCOMPARE(line->text(), QString());
    QCOMPARE(closed.count(), 1);
    QCOMPARE(closed.first().first().toString(), QStringLiteral("/dev/ttyS4"));
    QCOMPARE(trace().payloads(), (QStringList{"(\"/dev/ttyS4\")", "()"}));
}

void TestGpsUpdate::activatingThroughTheListTogglesIt()
{
    gpsupdate page;
    page.show();
    auto *box = part<QComboBox>(page, "comboBox");
    QTest::mouseClick(box, Qt::LeftButton);
    QAbstractItemView *list = box->view();
    QTRY_VERIFY(list->isVisible());
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(com, QStringList{"/dev/ttyS4"});
    QCOMPARE(part<QLineEdit>(page, "lineEdit_2")->text(), QStringLiteral("/dev/ttyS4 "));
}

void TestGpsUpdate::activatedPortsAreListed()
{
    gpsupdate page;
    page.on_comboBox_activated("/dev/ttyS4");
    page.on_comboBox_activated("/dev/ttyS5");
    QCOMPARE(part<QLineEdit>(page, "lineEdit_2")->text(), QStringLiteral("/dev/ttyS4 /dev/ttyS5 "));
    page.on_comboBox_activated("/dev/ttyS4");
    QCOMPARE(part<QLineEdit>(page, "lineEdit_2")->text(), QStringLiteral("/dev/ttyS5 "));
}

void TestGpsUpdate::checkResetsTheSerialSettings()
{
    com_set = {460800, 5, "Odd", 2.0F, "Hardware"};
    gpsupdate page;
    press(page, "pushButton");
    QCOMPARE(com_set.baudRate, 115200);
    QCOMPARE(com_set.dataBits, 8);
    QCOMPARE(com_set.parity, QStringLiteral("None"));
    QCOMPARE(com_set.stopBits, 1.0F);
    QCOMPARE(com_set.flowControl, QStringLiteral("None"));
    QCOMPARE(br, QStringLiteral("921600"));
}

void TestGpsUpdate::checkTellsWhetherThereIsAPackage_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("shown");
    QTest::newRow("none") << ""
                          << "No Update file!";
    QTest::newRow("found") << "/media/usb0/package"
                           << "OK";
}

void TestGpsUpdate::checkTellsWhetherThereIsAPackage()
{
    QFETCH(QString, folder);
    QFETCH(QString, shown);
    bench::unit().change()->system.updateFolder = folder;
    gpsupdate page;
    journal().clear();
    trace().clear();
    press(page, "pushButton");
    QCOMPARE(journal().texts(), QStringList{"McuManager.findUpdateFile(7)"});
    QCOMPARE(part<QLineEdit>(page, "lineEdit_2")->text(), shown);
    QCOMPARE(trace().payloads(), QStringList{"\"" + shown + "\""});
}

void TestGpsUpdate::choosingLoadsThePackage()
{
    const QString folder = "/run/unit/package";
    QVERIFY(QDir().mkpath(folder));
    for (const char *name : {"flash_download.cfg", "partition_table.bin", "bootloader.bin",
                             "gnss_demo.bin", "gnss_config.bin"}) {
        QFile image(folder + "/" + name);
        QVERIFY(image.open(QIODevice::WriteOnly));
        image.write(name);
    }
    bench::unit().change()->system.updateFolder = folder;
    gpsupdate page;
    journal().clear();
    trace().clear();
    press(page, "pushButton_2");
    QCOMPARE(journal().texts(), QStringList{"McuManager.findUpdateFile(7)"});
    QCOMPARE(trace().payloads().first(),
             QStringLiteral("\"/run/unit/package/flash_download.cfg\""));
    QCOMPARE(part<QLineEdit>(page, "lineEdit")->text(),
             QStringLiteral("/run/unit/package/flash_download.cfg"));
    QCOMPARE(downloadfile.bootloader_bin, QByteArray("bootloader.bin"));
    QCOMPARE(downloadfile.partition_bin, QByteArray("partition_table.bin"));
    QCOMPARE(downloadfile.app_bin, QByteArray("gnss_demo.bin"));
    QCOMPARE(downloadfile.config_bin, QByteArray("gnss_config.bin"));
    QDir(folder).removeRecursively();
}

void TestGpsUpdate::choosingWithoutPackageShowsThePathAllTheSame()
{
    gpsupdate page;
    boxes().expect("Error", "Not open cfg_file!");
    press(page, "pushButton_2");
    QCOMPARE(part<QLineEdit>(page, "lineEdit")->text(), QStringLiteral("/flash_download.cfg"));
    QCOMPARE(save_path, QStringLiteral("/"));
}

void TestGpsUpdate::resetPulsesTheLine()
{
    const tests::VirtualClock clock;
    gpsupdate page;
    journal().clear();
    bool interrupted = false;
    QTimer::singleShot(0, &page, [&interrupted] { interrupted = true; });
    press(page, "btn_reset");
    QVERIFY(!interrupted); // the screen stands meanwhile
    QCOMPARE(journal().texts(),
             (QStringList{"PlatformService.setGPSResetGPIO(true)",
                          "PlatformService.setGPSResetGPIO(false)"}));
    const auto entries = journal().entries();
    QCOMPARE(entries.at(1).elapsed - entries.at(0).elapsed, 100);
}

void TestGpsUpdate::secondResetReleasesTheLine()
{
    gpsupdate page;
    journal().clear();
    press(page, "btn_reset_2");
    QCOMPARE(journal().texts(), QStringList{"PlatformService.setGPSResetGPIO(false)"});
}

void TestGpsUpdate::portSwitchTogglesTheSettingAndReboots()
{
    const tests::VirtualClock clock;
    gpsupdate page;
    QSignalSpy rebooted(&bench::unit(), &bench::HeadUnit::rebootRequested);
    for (const char *written : {"true", "false", "true"}) {
        journal().clear();
        press(page, "btn_gpsdisconnect");
        QCOMPARE(
            journal().texts(),
            (QStringList{"SettingsFunc.getValue(\"GPS_UPDATE\", false)",
                         QStringLiteral("SettingsFunc.setValue(\"GPS_UPDATE\", false, %1, true)")
                             .arg(written),
                         "PlatformService.setGPSResetGPIO(false)", "shell: reboot"}));
        const auto entries = journal().entries();
        QCOMPARE(entries.at(3).elapsed - entries.at(2).elapsed, 10);
        QCOMPARE(entries.at(3).arguments, QJsonArray{0});
    }
    QCOMPARE(rebooted.count(), 3);
    QCOMPARE(bench::unit().settings.func.value("GPS_UPDATE").value.type(), QVariant::Bool);
}

void TestGpsUpdate::clearEmptiesTheLog()
{
    gpsupdate page;
    page.show_reset_result("/dev/ttyS4");
    auto *browser = part<QTextBrowser>(page, "textBrowser");
    QVERIFY(!browser->toPlainText().isEmpty());
    press(page, "pushButton_4");
    QCOMPARE(browser->toPlainText(), QString());
}

void TestGpsUpdate::returnHidesThePage()
{
    gpsupdate page;
    page.show();
    press(page, "btn_exit");
    QVERIFY(!page.isVisible());
}

void TestGpsUpdate::resultLine_data()
{
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("good") << true << "/dev/ttyS4: succed " << QColor(51, 204, 51);
    QTest::newRow("bad") << false << "/dev/ttyS4: failed " << QColor(255, 0, 0);
}

void TestGpsUpdate::resultLine()
{
    QFETCH(bool, ok);
    QFETCH(QString, text);
    QFETCH(QColor, colour);
    gpsupdate page;
    page.show_result("/dev/ttyS4", ok);
    const QList<QTextFragment> line = lastLine(page);
    QCOMPARE(line.size(), 2);
    const QRegularExpression wanted("^" + text + kTime + "$");
    QVERIFY2(wanted.match(line.at(0).text()).hasMatch(), qPrintable(line.at(0).text()));
    QCOMPARE(line.at(0).charFormat().foreground().color(), colour);
    QCOMPARE(line.at(0).charFormat().intProperty(QTextFormat::FontPixelSize), 20);
    QCOMPARE(line.at(1).text(), QStringLiteral(" "));
    QCOMPARE(line.at(1).charFormat().foreground().color(), QColor(Qt::black));
}

void TestGpsUpdate::resetLine()
{
    gpsupdate page;
    page.show_reset_result("/dev/ttyS4");
    const QList<QTextFragment> line = lastLine(page);
    QCOMPARE(line.size(), 2);
    const QRegularExpression wanted("^/dev/ttyS4: reset succed " + kTime + "$");
    QVERIFY2(wanted.match(line.at(0).text()).hasMatch(), qPrintable(line.at(0).text()));
    QCOMPARE(line.at(0).charFormat().foreground().color(), QColor(51, 204, 255));
    QCOMPARE(line.at(0).charFormat().intProperty(QTextFormat::FontPixelSize), 18);
    QCOMPARE(line.at(1).charFormat().foreground().color(), QColor(Qt::black));
}

void TestGpsUpdate::resultIsTraced_data()
{
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("traced");
    QTest::newRow("good") << true << "\"/dev/ttyS4\" success.";
    QTest::newRow("bad") << false << "\"/dev/ttyS4\" fail.";
}

void TestGpsUpdate::resultIsTraced()
{
    QFETCH(bool, ok);
    QFETCH(QString, traced);
    gpsupdate page;
    trace().clear();
    page.show_result("/dev/ttyS4", ok);
    QCOMPARE(trace().payloads(), (QStringList{traced, "update completely."}));
}

void TestGpsUpdate::reportWithoutRunningPortEndsTheUpdate_data()
{
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("value");
    QTest::addColumn<QColor>("icon");
    QTest::newRow("good") << true << 100 << QColor(Qt::green);
    QTest::newRow("bad") << false << 0 << QColor(Qt::red);
}

void TestGpsUpdate::reportWithoutRunningPortEndsTheUpdate()
{
    QFETCH(bool, ok);
    QFETCH(int, value);
    QFETCH(QColor, icon);
    gpsupdate page;
    auto *bar = part<QProgressBar>(page, "progressBar");
    auto *start = part<QPushButton>(page, "pushButton_3");
    bar->setRange(-5, 0);
    start->setEnabled(false);
    page.show_result("/dev/ttyS9", ok);
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), value);
    QCOMPARE(iconColour(page), icon);
    QVERIFY(start->isEnabled());
    // and a failure is not remembered past the end
    page.show_result("/dev/ttyS9", true);
    QCOMPARE(bar->value(), 100);
    QCOMPARE(iconColour(page), QColor(Qt::green));
}

void TestGpsUpdate::missingIconLeavesTheLabelEmpty()
{
    QVERIFY(QFile::remove("ICO/green.png"));
    gpsupdate page;
    page.show_result("/dev/ttyS4", true);
    QVERIFY(part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).isNull());
}

void TestGpsUpdate::messageBoxStandsBeforeThePage()
{
    gpsupdate page;
    page.show();
    boxes().expect("错误", "打开串口失败");
    page.show_Messagebox("错误", "打开串口失败");
    const tests::ModalBoxes::Box box = boxes().seen().value(0);
    QCOMPARE(box.buttons, QStringList{"OK"});
    QCOMPARE(box.icon, QMessageBox::Information);
    QVERIFY(box.modal);
    QCOMPARE(box.parent, &page);
}

// The framework may destroy the window at any time.
void TestGpsUpdate::pageMayGoWhileAMessageIsOpen()
{
    auto *page = new gpsupdate;
    const QPointer<gpsupdate> guard = page;
    boxes().expect("title", "text");
    boxes().onShown([page] { delete page; });
    page->show_Messagebox("title", "text");
    QVERIFY(guard.isNull());
}

void TestGpsUpdate::progressBytesAreIgnored()
{
    gpsupdate page;
    trace().clear();
    page.show_log("bytes");
    QCOMPARE(part<QTextBrowser>(page, "textBrowser")->toPlainText(), QString());
    QCOMPARE(trace().lines(), QStringList());
}

void TestGpsUpdate::logKeepsItsLastLines()
{
    gpsupdate page;
    for (int i = 1; i <= 650; ++i)
        page.show_reset_result(QString::number(i));
    const QStringList lines = part<QTextBrowser>(page, "textBrowser")->toPlainText().split('\n');
    QCOMPARE(lines.size(), 600);
    QVERIFY(lines.first().startsWith("51: reset succed"));
    QVERIFY(lines.last().startsWith("650: reset succed"));
}

void TestGpsUpdate::olderCompletionSlot()
{
    gpsupdate page;
    auto *bar = part<QProgressBar>(page, "progressBar");
    auto *start = part<QPushButton>(page, "pushButton_3");
    auto *browser = part<QTextBrowser>(page, "textBrowser");
    bar->setMaximum(0);
    start->setEnabled(false);
    trace().clear();
    page.thend("done", "/dev/ttyS4");
    QCOMPARE(iconColour(page), QColor(Qt::green));
    QCOMPARE(browser->toPlainText(), QStringLiteral("/dev/ttyS4:\ndone"));
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), 100);
    QVERIFY(start->isEnabled());
    QCOMPARE(trace().payloads(), QStringList{"update completely."});

    // an empty text is a failure, and the page stays failed
    press(page, "pushButton_4");
    bar->reset();
    start->setEnabled(false);
    page.thend("", "/dev/ttyS4");
    QCOMPARE(iconColour(page), QColor(Qt::red));
    QCOMPARE(bar->value(), -1);
    QVERIFY(start->isEnabled());
    page.thend("done", "/dev/ttyS4");
    QCOMPARE(iconColour(page), QColor(Qt::red));
    QCOMPARE(bar->value(), -1);
}

TESTMODE_TEST_MAIN(TestGpsUpdate)
#include "test_gpsupdate.moc"
