#include "refusingchip.h"
#include "tests/support/clock/virtualclock.h"
#include "tests/support/connectionlog.h"
#include "tests/support/unittest.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"
#include "gps/gpsupdate.h"
#include "tools/common.h"

#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextBrowser>

#include <optional>

using bench::journal;
using testmode::gpsupdate;
using tests::RefusingChip;
using tests::VirtualClock;

namespace {

// A refused update takes less than a second, one whose port cannot be opened two time-outs of
// three.
constexpr int kUpdateMilliseconds = 10000;

constexpr int kTestAndChip = 2; // threads, while no update runs

template <typename Widget>
Widget *part(const gpsupdate &page, const char *name)
{
    return page.findChild<Widget *>(QString::fromLatin1(name));
}

QStringList logLines(const gpsupdate &page)
{
    return part<QTextBrowser>(page, "textBrowser")->toPlainText().split('\n');
}

bool startEnabled(const gpsupdate &page)
{
    return part<QPushButton>(page, "pushButton_3")->isEnabled();
}

void pressStart(const gpsupdate &page)
{
    QTest::mouseClick(part<QPushButton>(page, "pushButton_3"), Qt::LeftButton);
}

} // namespace

// The update page with workers, each of which is refused by the chip within a second.
class TestGpsUpdateWorkers : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void workerIsConnectedInOrderAndStartedAtTopPriority();
    void startShowsThatAnUpdateRuns();
    void startClearsTheIconOfTheLastUpdate();
    void refusedUpdateEndsRed();
    void everyUpdateIsReportedOnce();
    void portChoiceDoesNotEnterTheUpdate();
    void deviceThatCannotBeOpenedIsShownInABox();
    void portThatIsNotRunningChangesNothing();
    void failuresBeforeASuccessLeaveTheIconRed();
    void resultsAreKeptAcrossPages();
    void earlierReportStopsTheWorker();
    void olderCompletionSlotEndsTheWorker();
    void hiddenPageIsToldTheResult();
    void workerOutlivesItsPageAndGoesByItself();
    void workerBesideOneWithoutItsPageDoesNoHarm();
    void workerStartedTwiceDoesNoHarm();

private:
    std::optional<VirtualClock> clock;
};

void TestGpsUpdateWorkers::initTestCase()
{
    QVERIFY(QDir().mkpath("ICO"));
    for (const char *name : {"red", "green"}) {
        QPixmap icon(60, 60);
        icon.fill(QColor(name));
        QVERIFY(icon.save(QStringLiteral("ICO/%1.png").arg(name)));
    }
}

void TestGpsUpdateWorkers::init()
{
    UnitTest::init();
    com.clear();
    br.clear();
    com_set = config();
    downloadfile = {"boot", "partition", "application", "configuration"};
    clock.emplace();
}

void TestGpsUpdateWorkers::cleanup()
{
    clock.reset(); // no worker is left over
    UnitTest::cleanup();
}

void TestGpsUpdateWorkers::workerIsConnectedInOrderAndStartedAtTopPriority()
{
    const RefusingChip chip;
    gpsupdate page;
    const tests::ConnectionLog connections;
    pressStart(page);
    auto *transport = connections.sender<serial_thread>();
    QVERIFY(transport != nullptr);
    QCOMPARE(
        connections.signalsOf(transport),
        (QStringList{"signal_Messagebox(QString,QString)", "signal_TransferData(QByteArray)"}));
    auto *worker = connections.sender<ugrade_thread>();
    QVERIFY(worker != nullptr);
    QCOMPARE(worker->transport(), transport);
    // the first twelve are its own, with the transport
    QCOMPARE(connections.signalsOf(worker).mid(12, 3),
             (QStringList{"signal_TransferData(QByteArray)", "signals_success(QString,bool)",
                          "signals_reset_success(QString)"}));
    QCOMPARE(worker->priority(), QThread::TimeCriticalPriority);

    // each goes to its own slot of the page; only a connection that is there can be cut
    const auto cut = [&page](auto *sender, auto signal, auto slot) {
        return QObject::disconnect(sender, signal, &page, slot);
    };
    QVERIFY(cut(transport, &serial_thread::signal_Messagebox, &gpsupdate::show_Messagebox));
    QVERIFY(cut(transport, &serial_thread::signal_TransferData, &gpsupdate::show_log));
    QVERIFY(cut(worker, &ugrade_thread::signal_TransferData, &gpsupdate::show_log));
    QVERIFY(cut(worker, &ugrade_thread::signals_reset_success, &gpsupdate::show_reset_result));
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds); // over the one that is left
}

void TestGpsUpdateWorkers::startShowsThatAnUpdateRuns()
{
    const RefusingChip chip;
    gpsupdate page;
    page.show();
    trace().clear();
    pressStart(page);
    QVERIFY(!startEnabled(page));
    QCOMPARE(part<QProgressBar>(page, "progressBar")->maximum(), 0);
    QVERIFY(part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).isNull());
    const QRegularExpression started("^/dev/ttyS4: started "
                                     "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}$");
    QCOMPARE(logLines(page).size(), 1);
    QVERIFY2(started.match(logLines(page).first()).hasMatch(), qPrintable(logLines(page).first()));
    const QTextBlock line = part<QTextBrowser>(page, "textBrowser")->document()->firstBlock();
    QCOMPARE(line.begin().fragment().charFormat().fontPointSize(), 12.0);
    const QStringList lines = trace().lines();
    QVERIFY(lines.first().contains("void testmode::gpsupdate::on_pushButton_3_clicked() "));
    QVERIFY(QRegularExpression("-- mian: 0x[0-9a-f]+$").match(lines.first()).hasMatch());
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
}

void TestGpsUpdateWorkers::startClearsTheIconOfTheLastUpdate()
{
    const RefusingChip chip;
    gpsupdate page;
    page.show_result("/dev/ttyS4", true);
    QVERIFY(!part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).isNull());
    pressStart(page);
    QVERIFY(part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).isNull());
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
}

void TestGpsUpdateWorkers::refusedUpdateEndsRed()
{
    const RefusingChip chip;
    gpsupdate page;
    journal().clear();
    trace().clear();
    pressStart(page);
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);

    const QStringList lines = logLines(page);
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(0).startsWith("/dev/ttyS4: started "));
    QVERIFY(lines.at(1).startsWith("/dev/ttyS4: reset succed "));
    QVERIFY(lines.at(2).startsWith("/dev/ttyS4: failed "));
    const auto *bar = part<QProgressBar>(page, "progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), 0);
    QCOMPARE(part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).toImage().pixelColor(30, 30),
             QColor(Qt::red));
    QCOMPARE(trace().payloads().mid(trace().payloads().size() - 2),
             (QStringList{"\"/dev/ttyS4\" fail.", "update completely."}));
    const QString slot = "void testmode::gpsupdate::show_result(QString, bool)";
    QCOMPARE(tracedFunctions().mid(tracedFunctions().size() - 2), (QStringList{slot, slot}));
    QCOMPARE(tracedFunctions().filter("hdl_connect"),
             (QStringList{"bool ugrade_thread::hdl_connect(const hdl_da_info_t*, hdl_da_report_t*)",
                          "bool ugrade_thread::hdl_connect(const hdl_da_info_t*, "
                          "hdl_da_report_t*)"}));
    QCOMPARE(journal().texts(),
             (QStringList{"PlatformService.setGPSResetGPIO(true)",
                          "PlatformService.setGPSResetGPIO(false)"}));
    QVERIFY(chip.received().endsWith(QByteArray("\xa5\xd9\0", 3))); // taken leave of
    QTRY_COMPARE_WITH_TIMEOUT(VirtualClock::threads(), kTestAndChip,
                              kUpdateMilliseconds); // the chip's own
}

void TestGpsUpdateWorkers::everyUpdateIsReportedOnce()
{
    const RefusingChip chip;
    gpsupdate page;
    for (int round = 1; round <= 3; ++round) {
        pressStart(page);
        QVERIFY(!startEnabled(page));
        QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
        QCOMPARE(logLines(page).filter("failed").size(), round);
        QCOMPARE(logLines(page).filter("started").size(), round);
        QCOMPARE(logLines(page).size(), 3 * round);
    }
}

void TestGpsUpdateWorkers::portChoiceDoesNotEnterTheUpdate()
{
    const RefusingChip chip;
    gpsupdate page;
    com = QStringList{"/dev/ttyS7", "/dev/ttyS8"};
    pressStart(page);
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QCOMPARE(logLines(page).filter("started").size(), 1);
    QVERIFY(logLines(page).first().startsWith("/dev/ttyS4: "));
    QVERIFY(chip.received().startsWith('\xa0'));
}

void TestGpsUpdateWorkers::deviceThatCannotBeOpenedIsShownInABox()
{
    gpsupdate page;
    page.show();
    boxes().expect("错误", "打开串口失败");
    pressStart(page);
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QCOMPARE(boxes().seen().size(), 1);
    QCOMPARE(boxes().seen().first().buttons, QStringList{"OK"});
    const QStringList lines = logLines(page);
    QCOMPARE(lines.size(), 2); // no reset was seen
    QVERIFY(lines.at(1).startsWith("/dev/ttyS4: failed "));
    QCOMPARE(part<QProgressBar>(page, "progressBar")->value(), 0);
}

void TestGpsUpdateWorkers::portThatIsNotRunningChangesNothing()
{
    const RefusingChip chip;
    gpsupdate page;
    pressStart(page);
    trace().clear();
    page.show_result("/dev/ttyS9", true);
    QVERIFY(logLines(page).last().startsWith("/dev/ttyS9: succed "));
    QVERIFY(!startEnabled(page));
    QCOMPARE(part<QProgressBar>(page, "progressBar")->maximum(), 0);
    QVERIFY(part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(!trace().payloads().contains("update completely."));
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QVERIFY(logLines(page).last().startsWith("/dev/ttyS4: failed "));
}

void TestGpsUpdateWorkers::failuresBeforeASuccessLeaveTheIconRed()
{
    const RefusingChip chip;
    gpsupdate page;
    pressStart(page);
    page.show_result("/dev/ttyS7", false);
    page.show_result("/dev/ttyS8", false);
    QVERIFY(!startEnabled(page));
    page.show_result("/dev/ttyS4", true);
    QVERIFY(startEnabled(page));
    QCOMPARE(part<QProgressBar>(page, "progressBar")->maximum(), 100);
    QCOMPARE(part<QProgressBar>(page, "progressBar")->value(), 0);
    QCOMPARE(part<QLabel>(page, "label_3")->pixmap(Qt::ReturnByValue).toImage().pixelColor(30, 30),
             QColor(Qt::red));
}

// The bookkeeping is the process's, not a page's.
void TestGpsUpdateWorkers::resultsAreKeptAcrossPages()
{
    const RefusingChip chip;
    {
        gpsupdate page;
        pressStart(page);
        page.show_result("/dev/ttyS7", false);
    }
    gpsupdate later;
    later.show_result("/dev/ttyS8", true);
    QCOMPARE(part<QProgressBar>(later, "progressBar")->value(), 0);
    later.show_result("/dev/ttyS8", true);
    QCOMPARE(part<QProgressBar>(later, "progressBar")->value(), 100);
    QTRY_COMPARE_WITH_TIMEOUT(VirtualClock::threads(), kTestAndChip, kUpdateMilliseconds);
}

// A report that comes while the worker still runs waits for it, and does not abort the process.
void TestGpsUpdateWorkers::earlierReportStopsTheWorker()
{
    const RefusingChip chip;
    gpsupdate page;
    const tests::ConnectionLog connections;
    pressStart(page);
    QTRY_VERIFY(!chip.received().isEmpty());
    QVERIFY(connections.sender<ugrade_thread>() != nullptr);
    page.show_result("/dev/ttyS4", true);
    QVERIFY(connections.sender<ugrade_thread>() == nullptr); // at once
    QTRY_COMPARE(VirtualClock::threads(), kTestAndChip);
    QVERIFY(startEnabled(page));
    pressStart(page);
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
}

void TestGpsUpdateWorkers::olderCompletionSlotEndsTheWorker()
{
    const RefusingChip chip;
    gpsupdate page;
    const tests::ConnectionLog connections;
    pressStart(page);
    page.thend("done", "/dev/ttyS7"); // not this one
    QVERIFY(!startEnabled(page));
    QVERIFY(connections.sender<ugrade_thread>() != nullptr);
    page.thend("done", "/dev/ttyS4");
    QVERIFY(connections.sender<ugrade_thread>() == nullptr); // at once
    QVERIFY(startEnabled(page));
    QCOMPARE(part<QProgressBar>(page, "progressBar")->value(), 100);
    QTRY_COMPARE(VirtualClock::threads(), kTestAndChip);
}

void TestGpsUpdateWorkers::hiddenPageIsToldTheResult()
{
    const RefusingChip chip;
    gpsupdate page;
    page.show();
    pressStart(page);
    QTest::mouseClick(part<QPushButton>(page, "btn_exit"), Qt::LeftButton);
    QVERIFY(!page.isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QVERIFY(logLines(page).last().startsWith("/dev/ttyS4: failed "));
}

void TestGpsUpdateWorkers::workerOutlivesItsPageAndGoesByItself()
{
    const RefusingChip chip;
    auto *page = new gpsupdate;
    pressStart(*page);
    QTRY_VERIFY(!chip.received().isEmpty());
    delete page;
    QVERIFY(VirtualClock::threads() > kTestAndChip);
    QTRY_VERIFY_WITH_TIMEOUT(chip.received().endsWith(QByteArray("\xa5\xd9\0", 3)),
                             kUpdateMilliseconds); // not cut short
    QTRY_COMPARE_WITH_TIMEOUT(VirtualClock::threads(), kTestAndChip, kUpdateMilliseconds);
}

// The window was closed and opened again while an update runs, and "开始" is there to press.
void TestGpsUpdateWorkers::workerBesideOneWithoutItsPageDoesNoHarm()
{
    const RefusingChip chip;
    auto *gone = new gpsupdate;
    pressStart(*gone);
    QTRY_VERIFY(!chip.received().isEmpty());
    delete gone;

    gpsupdate page;
    boxes().expect("错误", "打开串口失败"); // it finds the port taken
    pressStart(page);
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QCOMPARE(logLines(page).size(), 2); // nothing of the other's
    QVERIFY(logLines(page).last().startsWith("/dev/ttyS4: failed "));
    QTRY_COMPARE_WITH_TIMEOUT(VirtualClock::threads(), kTestAndChip, kUpdateMilliseconds);
    QCOMPARE(chip.received().count(QByteArray("\xa5\xd9\0", 3)), 1); // the other's, undisturbed

    pressStart(page);
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QVERIFY(logLines(page).filter("reset succed").size() == 1);
}

void TestGpsUpdateWorkers::workerStartedTwiceDoesNoHarm()
{
    const RefusingChip chip;
    gpsupdate page;
    page.on_pushButton_3_clicked();
    boxes().expect("错误", "打开串口失败"); // the second finds the port taken
    page.on_pushButton_3_clicked();
    QTRY_VERIFY_WITH_TIMEOUT(startEnabled(page), kUpdateMilliseconds);
    QCOMPARE(logLines(page).filter("failed").size(), 2);
    QTRY_COMPARE_WITH_TIMEOUT(VirtualClock::threads(), kTestAndChip, kUpdateMilliseconds);
}

TESTMODE_TEST_MAIN(TestGpsUpdateWorkers)
#include "test_gpsupdate_workers.moc"
