#include "bench/unit/usbstate.h"
#include "tests/support/clock/virtualclock.h"
#include "tests/support/unittest.h"

#include "lmplfctrl/lmplatformcontrol.h"
#include "pagehelpers.h"

#include <QFile>

using lmplfctrl::LMPlatformControl;

namespace {

const char kReport[] = "/var/ipt.log";

const bench::NetworkTestState &networkTests()
{
    return bench::unit().usb.networkTests;
}

using Operation = int (LMPlatformControl::*)();

int call(Operation operation)
{
    return (LMPlatformControl::GetInstance()->*operation)();
}

} // namespace

Q_DECLARE_METATYPE(Operation)

// The simulated network tests that the Apple device page starts.
class TestNetworkTestService : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void clientRunLeavesItsReport_data();
    void clientRunLeavesItsReport();
    void serverReportsWhenItIsStopped_data();
    void serverReportsWhenItIsStopped();
    void clientRunTakesItsTime();
    void operationsFailOnDemand_data();
    void operationsFailOnDemand();
    void reportOnDemand();
    void noReportOnDemand();
    void reportThatCannotBeStoredFailsTheRun();

private:
    // A unit whose runs end at once and that has no report yet.
    void prepare();
};

void TestNetworkTestService::prepare()
{
    bench::unit().change()->usb.networkTests.runDuration = std::chrono::milliseconds(0);
    QFile::remove(QString::fromLatin1(kReport));
}

void TestNetworkTestService::clientRunLeavesItsReport_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("journalled");
    QTest::addColumn<QByteArray>("title");
    QTest::newRow("UDP 50") << &LMPlatformControl::startUdp50Client
                            << "LMPlatformControl.startUdp50Client()"
                            << QByteArray("UDP client, 50 Mbit/s\n");
    QTest::newRow("UDP 100") << &LMPlatformControl::startUdp100Client
                             << "LMPlatformControl.startUdp100Client()"
                             << QByteArray("UDP client, 100 Mbit/s\n");
    QTest::newRow("TCP") << &LMPlatformControl::startTcpClient
                         << "LMPlatformControl.startTcpClient()" << QByteArray("TCP client\n");
}

void TestNetworkTestService::clientRunLeavesItsReport()
{
    QFETCH(Operation, operation);
    QFETCH(QString, journalled);
    QFETCH(QByteArray, title);
    prepare();
    QCOMPARE(call(operation), 0);
    QCOMPARE(bench::journal().texts(), QStringList{journalled});
    QVERIFY(tests::contentOf(kReport).startsWith(title));
    QCOMPARE(tests::contentOf(kReport).count('\n'), 12);
}

void TestNetworkTestService::serverReportsWhenItIsStopped_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("title");
    QTest::newRow("TCP") << &LMPlatformControl::startTcpServer << QByteArray("TCP server\n");
    QTest::newRow("UDP") << &LMPlatformControl::startUdpServer << QByteArray("UDP server\n");
}

void TestNetworkTestService::serverReportsWhenItIsStopped()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, title);
    prepare();
    QCOMPARE(call(operation), 0);
    QVERIFY(!QFile::exists(QString::fromLatin1(kReport)));
    QCOMPARE(call(&LMPlatformControl::stopNetTest), 0);
    QVERIFY(tests::contentOf(kReport).startsWith(title));
    QCOMPARE(call(&LMPlatformControl::stopNetTest), 0);
    QCOMPARE(tests::contentOf(kReport), QByteArray("no test was running\n"));
}

void TestNetworkTestService::clientRunTakesItsTime()
{
    prepare();
    bench::unit().change()->usb.networkTests.runDuration = std::chrono::milliseconds(60);
    const tests::VirtualClock clock;
    QCOMPARE(call(&LMPlatformControl::startTcpClient), 0);
    QCOMPARE(clock.milliseconds(), 60);
}

void TestNetworkTestService::operationsFailOnDemand_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("startTcpServer") << &LMPlatformControl::startTcpServer;
    QTest::newRow("startUdpServer") << &LMPlatformControl::startUdpServer;
    QTest::newRow("stopNetTest") << &LMPlatformControl::stopNetTest;
    QTest::newRow("startUdp50Client") << &LMPlatformControl::startUdp50Client;
    QTest::newRow("startUdp100Client") << &LMPlatformControl::startUdp100Client;
    QTest::newRow("startTcpClient") << &LMPlatformControl::startTcpClient;
}

void TestNetworkTestService::operationsFailOnDemand()
{
    QFETCH(Operation, operation);
    prepare();
    bench::unit().change()->usb.networkTests.results[QTest::currentDataTag()] = -7;
    QCOMPARE(call(operation), -7);
    QVERIFY(!QFile::exists(QString::fromLatin1(kReport)));
    QCOMPARE(networkTests().server, QString());
}

void TestNetworkTestService::reportOnDemand()
{
    prepare();
    bench::unit().change()->usb.networkTests.log = QStringLiteral("速度 50\n");
    QCOMPARE(call(&LMPlatformControl::startTcpClient), 0);
    QCOMPARE(tests::contentOf(kReport), QByteArray("速度 50\n"));
}

void TestNetworkTestService::noReportOnDemand()
{
    prepare();
    bench::unit().change()->usb.networkTests.writesLog = false;
    QCOMPARE(call(&LMPlatformControl::stopNetTest), 0);
    QVERIFY(!QFile::exists(QString::fromLatin1(kReport)));
}

void TestNetworkTestService::reportThatCannotBeStoredFailsTheRun()
{
    prepare();
    QVERIFY(QDir().mkdir(QString::fromLatin1(kReport)));
    QCOMPARE(call(&LMPlatformControl::startTcpClient), -1);
    QVERIFY(QDir().rmdir(QString::fromLatin1(kReport)));
}

TESTMODE_TEST_MAIN(TestNetworkTestService)
#include "test_networktestservice.moc"
