#include "bench/unit/usbstate.h"
#include "tests/support/unittest.h"

#include "pagehelpers.h"
#include "usb/appledevtest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QScrollBar>
#include <QTextEdit>

#include <memory>

using testmode::AppleDevTest;
using tests::child;
using tests::clickAt;

namespace {

const char kReport[] = "/var/ipt.log";

const QStringList kClientButtons{"btn_c_udp50", "btn_c_tcp", "btn_c_udp100", "btn_c_stop"};
const QStringList kServerButtons{"btn_s_udp", "btn_s_tcp", "btn_s_stop"};

// The state of the page at the moment when the service is called.
struct Moment
{
    QString call;
    bool busyShown = false;
    bool busyPainted = false;
    QString result;
    QString title;
    QStringList enabled;
};

} // namespace

// The network tests of the Apple device page, its NCM switch and its two sides.
class TestAppleNetworkTests : public tests::UnitTest
{
    Q_OBJECT

public:
    bool eventFilter(QObject *object, QEvent *event) override;

private slots:
    void startsServer_data();
    void startsServer();
    void serverThatFailsStaysBusy_data();
    void serverThatFailsStaysBusy();
    void runShowsItsReport_data();
    void runShowsItsReport();
    void runThatFailsStaysBusy_data();
    void runThatFailsStaysBusy();
    void runWithoutReportStaysBusy_data();
    void runWithoutReportStaysBusy();
    void busyNoteIsPaintedBeforeTheRun();
    void nextRunEndsTheBusyNote();
    void reportEndsAt2000Bytes_data();
    void reportEndsAt2000Bytes();
    void reportIsPlainText();
    void shorterReportLeavesNothingOfALongerOne();
    void reportIsClosedAgain();
    void ncmOpensAfterItsFunction();
    void ncmClosesBeforeItsFunction();
    void ncmOnShowsTheClientSide();
    void sides();
    void pressesOnCaptionsReachTheButtons_data();
    void pressesOnCaptionsReachTheButtons();
    void scrollBarFollowsALongReport();

private:
    // The page on its Apple face with NCM on and the buttons of one side open.
    void open(const QString &side);
    void openFor(const QString &button) { open(button.startsWith("btn_s") ? "server" : "client"); }
    void press(const QString &button) { clickAt(*page, button.toLatin1().constData()); }
    QString result() const { return child<QTextEdit>(*page, "result_view")->toPlainText(); }
    bool isBusy() const { return child(*page, "busy_text")->isVisible(); }
    QStringList enabledButtons() const;
    QStringList calls() const { return bench::journal().texts(mark); }
    QStringList said() { return trace().payloads(traceMark); }
    bool isSaidBy(const QString &button) const;
    void watchCalls();
    void forget();

    std::unique_ptr<AppleDevTest> page;
    QList<Moment> moments;
    bool busyPainted = false;
    int mark = 0;
    int traceMark = 0;
};

void TestAppleNetworkTests::open(const QString &side)
{
    bench::unit().change()->usb.networkTests.runDuration = std::chrono::milliseconds(0);
    bench::unit().change()->usb.networkTests.log = QStringLiteral("report\n");
    page = std::make_unique<AppleDevTest>(nullptr);
    page->resume();
    page->show();
    press("btn_c_ncm_sw");
    if (side == "server")
        press("radioButton_2");
    QFile::remove(QString::fromLatin1(kReport));
    forget();
}

void TestAppleNetworkTests::forget()
{
    mark = bench::journal().lastNumber();
    traceMark = trace().payloads().size();
    moments.clear();
    busyPainted = false;
}

QStringList TestAppleNetworkTests::enabledButtons() const
{
    QStringList enabled;
    const QStringList names =
        kClientButtons + kServerButtons + QStringList{"radioButton", "radioButton_2"};
    for (const QString &name : names) {
        if (child(*page, name.toLatin1().constData())->isEnabled())
            enabled << name;
    }
    return enabled;
}

// Every line since is of the button's own slot.
bool TestAppleNetworkTests::isSaidBy(const QString &button) const
{
    QStringList functions = tracedFunctions(traceMark);
    functions.removeDuplicates();
    return functions
        == QStringList{QString("void testmode::AppleDevTest::on_%1_clicked()").arg(button)};
}

void TestAppleNetworkTests::watchCalls()
{
    child(*page, "busy_text")->installEventFilter(this);
    connect(
        &bench::journal(), &bench::Journal::added, page.get(),
        [this](int number) {
            Moment moment;
            moment.call = bench::journal().texts(number - 1).value(0);
            moment.busyShown = isBusy();
            moment.busyPainted = busyPainted;
            moment.result = result();
            moment.title = child<QLabel>(*page, "title_text")->text();
            moment.enabled = enabledButtons();
            moments << moment;
        },
        Qt::DirectConnection);
}

bool TestAppleNetworkTests::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::Paint)
        busyPainted = true;
    return UnitTest::eventFilter(object, event);
}

void TestAppleNetworkTests::startsServer_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("trace");
    QTest::newRow("UDP") << "btn_s_udp"
                         << "LMPlatformControl.startUdpServer()"
                         << QStringList{"Server UDP clicked", "UDP Server ok"};
    QTest::newRow("TCP") << "btn_s_tcp"
                         << "LMPlatformControl.startTcpServer()"
                         << QStringList{"Server TCP clicked", "TCP Server ok"};
}

void TestAppleNetworkTests::startsServer()
{
    QFETCH(QString, button);
    open("server");
    tests::writeFile(kReport, "report of another run\n");
    press(button);
    QTEST(calls().join(' '), "call");
    QTEST(said(), "trace");
    QVERIFY(isSaidBy(button));
    QCOMPARE(result(), QString("Please wait a moment then press <stop> button"));
    QVERIFY(!isBusy());
}

void TestAppleNetworkTests::serverThatFailsStaysBusy_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("trace");
    QTest::newRow("UDP") << "btn_s_udp"
                         << "startUdpServer"
                         << QStringList{"Server UDP clicked", "UDP Server faile"};
    QTest::newRow("TCP") << "btn_s_tcp"
                         << "startTcpServer"
                         << QStringList{"Server TCP clicked", "TCP Server faile"};
}

void TestAppleNetworkTests::serverThatFailsStaysBusy()
{
    QFETCH(QString, button);
    QFETCH(QString, operation);
    open("server");
    press("btn_s_udp");
    for (const int failure : {1, -1}) {
        bench::unit().change()->usb.networkTests.results[operation] = failure;
        forget();
        press(button);
        QTEST(said(), "trace");
        QVERIFY(isSaidBy(button));
        QCOMPARE(result(), QString());
        QVERIFY(isBusy());
    }
}

void TestAppleNetworkTests::runShowsItsReport_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("trace");
    QTest::newRow("btn_c_udp50") << "LMPlatformControl.startUdp50Client()"
                                 << QStringList{"Client UDP50 clicked", "UDP 50 ok",
                                                "udp = report\n"};
    QTest::newRow("btn_c_tcp") << "LMPlatformControl.startTcpClient()"
                               << QStringList{"Client TCP clicked", "TCP Client ok",
                                              "tcp = report\n"};
    QTest::newRow("btn_c_udp100") << "LMPlatformControl.startUdp100Client()"
                                  << QStringList{"Client UDP100 clicked", "UDP 100 ok",
                                                 "udp100 = report\n"};
    QTest::newRow("btn_c_stop") << "LMPlatformControl.stopNetTest()"
                                << QStringList{"Client STOP clicked", "Stop ok", "stop = report\n"};
    QTest::newRow("btn_s_stop") << "LMPlatformControl.stopNetTest()"
                                << QStringList{"Server STOP clicked", "Stop ok", "stop = report\n"};
}

void TestAppleNetworkTests::runShowsItsReport()
{
    const QString button = QTest::currentDataTag();
    openFor(button);
    press(button);
    QTEST(calls().join(' '), "call");
    QTEST(said(), "trace");
    QVERIFY(isSaidBy(button));
    QCOMPARE(result(), QString("report\n"));
    QVERIFY(!isBusy());
}

void TestAppleNetworkTests::runThatFailsStaysBusy_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("trace");
    QTest::newRow("btn_c_udp50") << "startUdp50Client"
                                 << QStringList{"Client UDP50 clicked", "UDP 50 faile"};
    QTest::newRow("btn_c_tcp") << "startTcpClient"
                               << QStringList{"Client TCP clicked", "TCP Client faile"};
    QTest::newRow("btn_c_udp100") << "startUdp100Client"
                                  << QStringList{"Client UDP100 clicked", "UDP 100 faile"};
    QTest::newRow("btn_c_stop") << "stopNetTest"
                                << QStringList{"Client STOP clicked", "Stop faile"};
    QTest::newRow("btn_s_stop") << "stopNetTest"
                                << QStringList{"Server STOP clicked", "Stop faile"};
}

void TestAppleNetworkTests::runThatFailsStaysBusy()
{
    QFETCH(QString, operation);
    const QString button = QTest::currentDataTag();
    openFor(button);
    tests::writeFile(kReport, "report of another run\n");
    press(button);
    for (const int failure : {1, -1}) {
        bench::unit().change()->usb.networkTests.results[operation] = failure;
        forget();
        press(button);
        QTEST(said(), "trace");
        QVERIFY(isSaidBy(button));
        QCOMPARE(result(), QString());
        QVERIFY(isBusy());
    }
}

void TestAppleNetworkTests::runWithoutReportStaysBusy_data()
{
    QTest::addColumn<QStringList>("trace");
    const auto row = [](const char *button, const char *clicked, const char *ok) {
        QTest::newRow(button) << QStringList{clicked, ok, "faile open ipt.log"};
    };
    row("btn_c_udp50", "Client UDP50 clicked", "UDP 50 ok");
    row("btn_c_tcp", "Client TCP clicked", "TCP Client ok");
    row("btn_c_udp100", "Client UDP100 clicked", "UDP 100 ok");
    row("btn_c_stop", "Client STOP clicked", "Stop ok");
    row("btn_s_stop", "Server STOP clicked", "Stop ok");
}

void TestAppleNetworkTests::runWithoutReportStaysBusy()
{
    const QString button = QTest::currentDataTag();
    openFor(button);
    bench::unit().change()->usb.networkTests.writesLog = false;
    press(button);
    QTEST(said(), "trace");
    QVERIFY(isSaidBy(button));
    QCOMPARE(result(), QString());
    QVERIFY(isBusy());
}

void TestAppleNetworkTests::busyNoteIsPaintedBeforeTheRun()
{
    for (const QString &button : kClientButtons.mid(0, 3) + kServerButtons) {
        openFor(button);
        child<QTextEdit>(*page, "result_view")->setPlainText("report of another run");
        watchCalls();
        press(button);
        QCOMPARE(moments.size(), 1);
        QVERIFY2(moments.first().busyShown && moments.first().busyPainted, qPrintable(button));
        QCOMPARE(moments.first().result, QString());
    }
}

void TestAppleNetworkTests::nextRunEndsTheBusyNote()
{
    open("client");
    bench::unit().change()->usb.networkTests.results["startTcpClient"] = 1;
    press("btn_c_tcp");
    QVERIFY(isBusy());
    press("btn_c_udp50");
    QVERIFY(!isBusy());
    QCOMPARE(result(), QString("report\n"));
}

void TestAppleNetworkTests::reportEndsAt2000Bytes_data()
{
    QTest::addColumn<QByteArray>("report");
    QTest::addColumn<QString>("shown");
    const QString x = QStringLiteral("x");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("1999") << QByteArray(1999, 'x') << x.repeated(1999);
    QTest::newRow("2000") << QByteArray(2000, 'x') << x.repeated(2000);
    QTest::newRow("2001") << QByteArray(2001, 'x') << x.repeated(2000);
    QTest::newRow("many") << QByteArray(100000, 'x') << x.repeated(2000);
    QTest::newRow("ends at a zero byte") << QByteArray("ab\0cd", 5) << "ab";
    QTest::newRow("more than one byte a letter") << QByteArray("速度 50") << "速度 50";
}

void TestAppleNetworkTests::reportEndsAt2000Bytes()
{
    QFETCH(QByteArray, report);
    open("client");
    bench::unit().change()->usb.networkTests.writesLog = false;
    tests::writeFile(kReport, report);
    press("btn_c_stop");
    QTEST(result(), "shown");
    QVERIFY(!isBusy());
}

void TestAppleNetworkTests::reportIsPlainText()
{
    open("client");
    bench::unit().change()->usb.networkTests.log = QStringLiteral("<b>12</b> Mbit/s");
    press("btn_c_tcp");
    QCOMPARE(result(), QString("<b>12</b> Mbit/s"));
}

void TestAppleNetworkTests::shorterReportLeavesNothingOfALongerOne()
{
    open("client");
    bench::unit().change()->usb.networkTests.log = QStringLiteral("a long report");
    press("btn_c_tcp");
    bench::unit().change()->usb.networkTests.log = QStringLiteral("short");
    press("btn_c_tcp");
    QCOMPARE(result(), QString("short"));
}

void TestAppleNetworkTests::reportIsClosedAgain()
{
    open("client");
    press("btn_c_udp50");
    for (const QFileInfo &descriptor :
         QDir("/proc/self/fd")
             .entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System))
        QVERIFY(descriptor.symLinkTarget() != kReport);
}

void TestAppleNetworkTests::ncmOpensAfterItsFunction()
{
    open("client");
    press("btn_c_ncm_sw");
    QCOMPARE(child<QLabel>(*page, "ncm_sw_state")->text(), QString("NCM OFF"));
    watchCalls();
    forget();
    press("btn_c_ncm_sw");
    QCOMPARE(calls(), QStringList{"LMUsbManager.switchUsbMode(6)"});
    QCOMPARE(bench::unit().usb.function, 6);
    QCOMPARE(moments.value(0).enabled, QStringList());
    QCOMPARE(child<QLabel>(*page, "ncm_sw_state")->text(), QString("NCM ON"));
}

void TestAppleNetworkTests::ncmClosesBeforeItsFunction()
{
    open("client");
    press("btn_c_tcp");
    QVERIFY(!result().isEmpty());
    watchCalls();
    forget();
    press("btn_c_ncm_sw");
    QCOMPARE(calls(), QStringList{"LMUsbManager.switchUsbMode(7)"});
    QCOMPARE(bench::unit().usb.function, 7);
    QCOMPARE(moments.value(0).enabled, QStringList());
    QCOMPARE(moments.value(0).result, QString());
    QCOMPARE(child<QLabel>(*page, "ncm_sw_state")->text(), QString("NCM OFF"));
}

void TestAppleNetworkTests::ncmOnShowsTheClientSide()
{
    open("server");
    press("btn_c_ncm_sw");
    QCOMPARE(enabledButtons(), QStringList());
    press("btn_c_ncm_sw");
    QCOMPARE(enabledButtons(), kClientButtons + QStringList({"radioButton", "radioButton_2"}));
    QCOMPARE(child<QLabel>(*page, "title_text")->text(),
             QString("Connect the accessory to an Apple device that Client Test"));
}

void TestAppleNetworkTests::sides()
{
    const QStringList both{"radioButton", "radioButton_2"};
    open("client");
    press("btn_c_tcp");
    press("radioButton_2");
    QCOMPARE(child<QLabel>(*page, "title_text")->text(),
             QString("Connect the accessory to an Apple device that Server Test"));
    QCOMPARE(enabledButtons(), kServerButtons + both);
    QCOMPARE(result(), QString());

    press("btn_s_tcp");
    press("radioButton");
    QCOMPARE(child<QLabel>(*page, "title_text")->text(),
             QString("Connect the accessory to an Apple device that Client Test"));
    QCOMPARE(enabledButtons(), kClientButtons + both);
    QCOMPARE(result(), QString());
}

void TestAppleNetworkTests::pressesOnCaptionsReachTheButtons_data()
{
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("call");
    QTest::newRow("s_udp_text") << "server"
                                << "LMPlatformControl.startUdpServer()";
    QTest::newRow("s_tcp_text") << "server"
                                << "LMPlatformControl.startTcpServer()";
    QTest::newRow("s_stop_text") << "server"
                                 << "LMPlatformControl.stopNetTest()";
    QTest::newRow("c_udp50_text") << "client"
                                  << "LMPlatformControl.startUdp50Client()";
    QTest::newRow("c_tcp_text") << "client"
                                << "LMPlatformControl.startTcpClient()";
    QTest::newRow("c_udp100_text") << "client"
                                   << "LMPlatformControl.startUdp100Client()";
    QTest::newRow("c_stop_text") << "client"
                                 << "LMPlatformControl.stopNetTest()";
    QTest::newRow("ncm_sw_state") << "client"
                                  << "LMUsbManager.switchUsbMode(7)";
}

void TestAppleNetworkTests::pressesOnCaptionsReachTheButtons()
{
    QFETCH(QString, side);
    open(side);
    press(QTest::currentDataTag());
    QTEST(calls().join(' '), "call");
}

void TestAppleNetworkTests::scrollBarFollowsALongReport()
{
    open("client");
    auto *bar = child<QScrollBar>(*page, "scrollbar");
    QCOMPARE(bar->maximum(), 0);
    bench::unit().change()->usb.networkTests.log = QStringLiteral("one line\n").repeated(60);
    press("btn_c_tcp");
    QTRY_VERIFY(bar->maximum() > 0);
    QVERIFY(bar->isVisible());
    bar->setValue(bar->maximum());
    QCOMPARE(child<QTextEdit>(*page, "result_view")->verticalScrollBar()->value(), bar->maximum());
}

TESTMODE_TEST_MAIN(TestAppleNetworkTests)
#include "test_applenetworktests.moc"
