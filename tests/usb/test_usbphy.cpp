#include "tests/support/unittest.h"

#include "usb/usbphy.h"

using namespace testmode;

// Addresses, codes and steps of the PHY's values.
class TestUsbPhy : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void registersOfThePorts_data();
    void registersOfThePorts();
    void patternSelectors_data();
    void patternSelectors();
    void swingSteps_data();
    void swingSteps();
    void disconnectSteps_data();
    void disconnectSteps();
    void swingByteOfAPort_data();
    void swingByteOfAPort();
    void swingWordForAPort_data();
    void swingWordForAPort();
};

void TestUsbPhy::registersOfThePorts_data()
{
    QTest::addColumn<unsigned int>("address");
    QTest::addColumn<unsigned int>("expected");
    QTest::newRow("debug select") << usbphy::kDebugSelect << 0x9C000088u;
    QTest::newRow("debug route") << usbphy::kDebugRoute << 0x9C0000A0u;
    QTest::newRow("swing") << usbphy::kSwing << 0x9C000190u;
    QTest::newRow("debug enable 0") << usbphy::debugEnable(0) << 0x9C004A8Cu;
    QTest::newRow("debug enable 1") << usbphy::debugEnable(1) << 0x9C004B0Cu;
    QTest::newRow("debug enable 2") << usbphy::debugEnable(2) << 0x9C004B8Cu;
    QTest::newRow("test mode 0") << usbphy::testMode(0) << 0x9C004A90u;
    QTest::newRow("test mode 1") << usbphy::testMode(1) << 0x9C004B10u;
    QTest::newRow("test mode 2") << usbphy::testMode(2) << 0x9C004B90u;
    QTest::newRow("disconnect 0") << usbphy::disconnect(0) << 0x9C004A9Cu;
    QTest::newRow("disconnect 1") << usbphy::disconnect(1) << 0x9C004B1Cu;
    QTest::newRow("disconnect 2") << usbphy::disconnect(2) << 0x9C004B9Cu;
    QTest::newRow("route word 0") << usbphy::debugRoute(0) << 0x0004100Cu;
    QTest::newRow("route word 1") << usbphy::debugRoute(1) << 0x0008100Cu;
    QTest::newRow("route word 2") << usbphy::debugRoute(2) << 0x0010100Cu;
}

void TestUsbPhy::registersOfThePorts()
{
    QFETCH(unsigned int, address);
    QTEST(address, "expected");
}

void TestUsbPhy::patternSelectors_data()
{
    QTest::addColumn<int>("pattern");
    QTest::addColumn<unsigned int>("atHighSpeed");
    QTest::addColumn<unsigned int>("atFullSpeed");
    QTest::addColumn<QByteArray>("remark");
    QTest::newRow("eye diagram") << 0 << 1u << 4u << QByteArray();
    QTest::newRow("test J") << 1 << 9u << 11u << QByteArray();
    QTest::newRow("test K") << 2 << 10u << 12u << QByteArray();
    QTest::newRow("SE0") << 3 << 7u << 7u << QByteArray();
    QTest::newRow("none") << 4 << 0u << 0u << QByteArray("nothing to do.");
    QTest::newRow("beyond the last") << 5 << 0u << 0u << QByteArray("not support!");
    QTest::newRow("before the first") << -1 << 0u << 0u << QByteArray("not support!");
}

void TestUsbPhy::patternSelectors()
{
    QFETCH(int, pattern);
    QTEST(usbphy::testModeSelector(pattern, false), "atHighSpeed");
    QTEST(usbphy::testModeSelector(pattern, true), "atFullSpeed");
    QTEST(QByteArray(usbphy::remarkOn(pattern)), "remark");
    QCOMPARE(trace().payloads(), QStringList());
}

void TestUsbPhy::swingSteps_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("up");
    QTest::addColumn<int>("down");
    QTest::newRow("-31") << 0x7F << 0x7E << 0x7F;
    QTest::newRow("-30") << 0x7E << 0x7D << 0x7F;
    QTest::newRow("-1") << 0x61 << 0x60 << 0x62;
    QTest::newRow("-0") << 0x60 << 0x40 << 0x61;
    QTest::newRow("+0") << 0x40 << 0x41 << 0x60;
    QTest::newRow("+1") << 0x41 << 0x42 << 0x40;
    QTest::newRow("+30") << 0x5E << 0x5F << 0x5D;
    QTest::newRow("+31") << 0x5F << 0x5F << 0x5E;
    QTest::newRow("not set") << 0 << 0x60 << 0x40;
    QTest::newRow("lowest stray code") << 0x01 << 0x01 << 0x01;
    QTest::newRow("stray code below +0") << 0x3F << 0x3F << 0x3F;
    QTest::newRow("stray code above -31") << 0x80 << 0x80 << 0x80;
    QTest::newRow("highest byte") << 0xFF << 0xFF << 0xFF;
}

void TestUsbPhy::swingSteps()
{
    QFETCH(int, code);
    QTEST(usbphy::swingUp(code), "up");
    QTEST(usbphy::swingDown(code), "down");
}

void TestUsbPhy::disconnectSteps_data()
{
    QTest::addColumn<unsigned int>("word");
    QTest::addColumn<unsigned int>("up");
    QTest::addColumn<unsigned int>("down");
    QTest::newRow("0") << 0x00u << 0x01u << 0x00u;
    QTest::newRow("1") << 0x01u << 0x02u << 0x00u;
    QTest::newRow("30") << 0x1Eu << 0x1Fu << 0x1Du;
    QTest::newRow("31") << 0x1Fu << 0x1Fu << 0x1Eu;
    QTest::newRow("31 with another bit") << 0x3Fu << 0x3Fu << 0x3Eu;
    QTest::newRow("0 with another bit") << 0x20u << 0x21u << 0x20u;
    QTest::newRow("all other bits set") << 0xFFFFFFE0u << 0xFFFFFFE1u << 0xFFFFFFE0u;
    QTest::newRow("all bits set") << 0xFFFFFFFFu << 0xFFFFFFFFu << 0xFFFFFFFEu;
}

void TestUsbPhy::disconnectSteps()
{
    QFETCH(unsigned int, word);
    const int value = static_cast<int>(word);
    QTEST(static_cast<unsigned int>(usbphy::disconnectUp(value)), "up");
    QTEST(static_cast<unsigned int>(usbphy::disconnectDown(value)), "down");
}

void TestUsbPhy::swingByteOfAPort_data()
{
    QTest::addColumn<int>("port");
    QTest::addColumn<int>("code");
    QTest::newRow("port 0") << 0 << 0x33;
    QTest::newRow("port 1") << 1 << 0x22;
    QTest::newRow("port 2") << 2 << 0x11;
}

void TestUsbPhy::swingByteOfAPort()
{
    QFETCH(int, port);
    QTEST(usbphy::swingByte(0xF0112233, port), "code");
}

void TestUsbPhy::swingWordForAPort_data()
{
    QTest::addColumn<int>("port");
    QTest::addColumn<unsigned int>("word");
    QTest::newRow("port 0") << 0 << 0x7F7F2245u;
    QTest::newRow("port 1") << 1 << 0x7F7F4533u;
    QTest::newRow("port 2 cannot choose its low bits") << 2 << 0x7F7F2233u;
}

void TestUsbPhy::swingWordForAPort()
{
    QFETCH(int, port);
    QTEST(usbphy::withSwingByte(0x00112233, port, 0x45), "word");
}

TESTMODE_TEST_MAIN(TestUsbPhy)
#include "test_usbphy.moc"
