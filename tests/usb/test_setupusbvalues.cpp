#include "tests/support/unittest.h"

#include "pagehelpers.h"
#include "recordedhardware.h"
#include "usb/mode_usbtest.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>

#include <memory>

using testmode::SetupUsbTest;
using tests::child;
using tests::clickAt;
using tests::hardware;

// What the page reads, shows, steps and writes.
class TestSetupUsbValues : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void normalWriteSelectsThePattern_data();
    void normalWriteSelectsThePattern();
    void enteringUphySelectsThePattern_data();
    void enteringUphySelectsThePattern();
    void parametersAreReadFromTheWidgets();
    void lastCheckedPatternCounts();
    void readsTheChosenValue_data();
    void readsTheChosenValue();
    void failedReadCountsAsZero();
    void swingAsShown_data();
    void swingAsShown();
    void disconnectAsShown_data();
    void disconnectAsShown();
    void steps_data();
    void steps();
    void stepsWriteNothing();
    void swingWrite_data();
    void swingWrite();
    void disconnectWriteOpensTheWayFirst_data();
    void disconnectWriteOpensTheWayFirst();
    void steppedValueIsWritten();
    void writeReadsTheWidgetsAnewInUphyModeToo();

private:
    void open(int port = 0);
    void enterUphy(const char *parameter);
    QString shownValue() const { return child<QLabel>(*page, "uphyData")->text(); }
    QStringList calls() const { return bench::journal().texts(mark); }
    QStringList said() { return trace().payloads(traceMark); }
    void forget();

    std::unique_ptr<SetupUsbTest> page;
    int mark = 0;
    int traceMark = 0;
};

namespace {

const char *const kPortButtons[] = {"port0_Btn", "port1_Btn", "port2_Btn"};

} // namespace

void TestSetupUsbValues::open(int port)
{
    hardware() = tests::RecordedHardware();
    page = std::make_unique<SetupUsbTest>(nullptr);
    page->show();
    child<QRadioButton>(*page, kPortButtons[port])->setChecked(true);
    forget();
}

// Into the mode where values of the PHY are worked on, with one of them chosen and read.
void TestSetupUsbValues::enterUphy(const char *parameter)
{
    clickAt(*page, "useUphyBtn");
    clickAt(*page, parameter);
    forget();
}

void TestSetupUsbValues::forget()
{
    mark = bench::journal().lastNumber();
    traceMark = trace().payloads().size();
}

void TestSetupUsbValues::normalWriteSelectsThePattern_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("atHighSpeed");
    QTest::addColumn<QString>("atFullSpeed");
    QTest::newRow("eye diagram") << "test_DiagramBtn"
                                 << "0x1"
                                 << "0x4";
    QTest::newRow("test J") << "test_JBtn"
                            << "0x9"
                            << "0xb";
    QTest::newRow("test K") << "test_KBtn"
                            << "0xa"
                            << "0xc";
    QTest::newRow("SE0") << "test_SE0Btn"
                         << "0x7"
                         << "0x7";
    QTest::newRow("none") << "test_PacketBtn"
                          << "0x0"
                          << "0x0";
}

void TestSetupUsbValues::normalWriteSelectsThePattern()
{
    QFETCH(QString, pattern);
    QFETCH(QString, atHighSpeed);
    QFETCH(QString, atFullSpeed);
    const QString write = R"(registers.write("0x9c004000+%1", "%2"))";
    const char *const registers[] = {"0xa90", "0xb10", "0xb90"};
    for (int port = 0; port < 3; ++port) {
        open(port);
        child<QRadioButton>(*page, pattern.toLatin1().constData())->setChecked(true);
        clickAt(*page, "writeBtn");
        QCOMPARE(calls(), QStringList{write.arg(registers[port], atHighSpeed)});

        child<QRadioButton>(*page, "fullBtn")->setChecked(true);
        forget();
        clickAt(*page, "writeBtn");
        QCOMPARE(calls(), QStringList{write.arg(registers[port], atFullSpeed)});
    }
}

// As "Write" does, but for "None", at which the register is left alone.
void TestSetupUsbValues::enteringUphySelectsThePattern_data()
{
    normalWriteSelectsThePattern_data();
}

void TestSetupUsbValues::enteringUphySelectsThePattern()
{
    QFETCH(QString, pattern);
    QFETCH(QString, atHighSpeed);
    QFETCH(QString, atFullSpeed);
    const QString write = R"(registers.write("0x9c004000+%1", "%2"))";
    const char *const registers[] = {"0xa90", "0xb10", "0xb90"};
    for (int port = 0; port < 3; ++port) {
        for (const bool full : {false, true}) {
            open(port);
            child<QRadioButton>(*page, full ? "fullBtn" : "highBtn")->setChecked(true);
            child<QRadioButton>(*page, pattern.toLatin1().constData())->setChecked(true);
            clickAt(*page, "useUphyBtn");
            QStringList expected{R"(registers.read("0x9c000000+0x190"))"};
            if (pattern != "test_PacketBtn")
                expected.prepend(write.arg(registers[port], full ? atFullSpeed : atHighSpeed));
            QCOMPARE(calls(), expected);
        }
    }
}

void TestSetupUsbValues::parametersAreReadFromTheWidgets()
{
    open(1);
    child<QRadioButton>(*page, "test_SE0Btn")->setChecked(true);
    child<QRadioButton>(*page, "fullBtn")->setChecked(true);
    hardware().words[0x9C004B1C] = 0x1F;
    clickAt(*page, "useUphyBtn");
    clickAt(*page, "uphyDisconnectBtn");
    forget();
    clickAt(*page, "readBtn");
    QCOMPARE(said(),
             (QStringList{"readBtnClicked", "port: 1", "speed: 1", "testPar: 3", "uphyPar: 1",
                          "uphyData: 31"}));
}

void TestSetupUsbValues::lastCheckedPatternCounts()
{
    open();
    const char *const patterns[] = {"test_DiagramBtn", "test_JBtn", "test_KBtn", "test_SE0Btn",
                                    "test_PacketBtn"};
    const auto check = [&](const QList<int> &checked) {
        for (int i = 0; i < 5; ++i) {
            auto *button = child<QRadioButton>(*page, patterns[i]);
            button->setAutoExclusive(false);
            button->setChecked(checked.contains(i));
        }
        forget();
        clickAt(*page, "readBtn");
    };
    check({2, 0});
    QVERIFY(said().contains("testPar: 2"));
    check({});
    QVERIFY(said().contains("testPar: 2")); // none is checked: as before
}

void TestSetupUsbValues::readsTheChosenValue_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("shown");
    const QString read = R"(registers.read("%1"))";
    QTest::newRow("swing 0") << "uphySwingBtn" << 0 << read.arg("0x9c000000+0x190") << "3";
    QTest::newRow("swing 1") << "uphySwingBtn" << 1 << read.arg("0x9c000000+0x190") << "2";
    QTest::newRow("swing 2") << "uphySwingBtn" << 2 << read.arg("0x9c000000+0x190") << "1";
    QTest::newRow("disconnect 0") << "uphyDisconnectBtn" << 0 << read.arg("0x9c004000+0xa9c")
                                  << "a0";
    QTest::newRow("disconnect 1") << "uphyDisconnectBtn" << 1 << read.arg("0x9c004000+0xb1c")
                                  << "a1";
    QTest::newRow("disconnect 2") << "uphyDisconnectBtn" << 2 << read.arg("0x9c004000+0xb9c")
                                  << "a2";
}

void TestSetupUsbValues::readsTheChosenValue()
{
    QFETCH(QString, button);
    QFETCH(int, port);
    open(port);
    hardware().words = {
        {0x9C000190, 0x00414243}, {0x9C004A9C, 0xA0}, {0x9C004B1C, 0xA1}, {0x9C004B9C, 0xA2}};
    clickAt(*page, "useUphyBtn");
    forget();
    clickAt(*page, button.toLatin1().constData());
    QTEST(calls().value(0), "call");
    QCOMPARE(calls().size(), 1);
    QTEST(shownValue(), "shown");

    // The button "Read" does the same.
    forget();
    clickAt(*page, "readBtn");
    QTEST(calls().value(0), "call");
    QCOMPARE(calls().size(), 1);
}

void TestSetupUsbValues::failedReadCountsAsZero()
{
    open();
    hardware().words[0x9C004A9C] = 0x1F;
    enterUphy("uphyDisconnectBtn");
    QCOMPARE(shownValue(), QString("1f"));
    hardware().fails = true;
    clickAt(*page, "readBtn");
    QCOMPARE(shownValue(), QString("0"));
    clickAt(*page, "uphySwingBtn");
    QCOMPARE(said().last(), QString("refreshUphy 0"));
}

void TestSetupUsbValues::swingAsShown_data()
{
    QTest::addColumn<unsigned int>("code");
    QTest::addColumn<QString>("shown");
    const QString before = "5";
    QTest::newRow("+0") << 0x40u << "0";
    QTest::newRow("+1") << 0x41u << "1";
    QTest::newRow("+31") << 0x5Fu << "31";
    QTest::newRow("-0") << 0x60u << "-0";
    QTest::newRow("-1") << 0x61u << "-1";
    QTest::newRow("-31") << 0x7Fu << "-31";
    QTest::newRow("not set leaves the label") << 0x00u << before;
    QTest::newRow("0x20 leaves the label") << 0x20u << before;
    QTest::newRow("0x3f leaves the label") << 0x3Fu << before;
    QTest::newRow("0x80 leaves the label") << 0x80u << before;
}

void TestSetupUsbValues::swingAsShown()
{
    QFETCH(unsigned int, code);
    open();
    hardware().words[0x9C000190] = 0x45;
    enterUphy("uphySwingBtn");
    QCOMPARE(shownValue(), QString("5"));
    hardware().words[0x9C000190] = code;
    clickAt(*page, "readBtn");
    QTEST(shownValue(), "shown");
    QCOMPARE(said().last(), QString("refreshUphy %1").arg(code));
}

void TestSetupUsbValues::disconnectAsShown_data()
{
    QTest::addColumn<unsigned int>("word");
    QTest::addColumn<QString>("shown");
    QTest::newRow("0") << 0u << "0";
    QTest::newRow("lower case") << 0xABu << "ab";
    QTest::newRow("whole word") << 0x12345678u << "12345678";
    QTest::newRow("highest bit") << 0xFFFFFFFFu << "ffffffff";
}

void TestSetupUsbValues::disconnectAsShown()
{
    QFETCH(unsigned int, word);
    open();
    hardware().words[0x9C004A9C] = word;
    enterUphy("uphyDisconnectBtn");
    QTEST(shownValue(), "shown");
    clickAt(*page, "readBtn");
    QVERIFY(!said().join(' ').contains("refreshUphy"));
}

void TestSetupUsbValues::steps_data()
{
    QTest::addColumn<QString>("parameter");
    QTest::addColumn<unsigned int>("word");
    QTest::addColumn<QString>("up");
    QTest::addColumn<int>("upValue");
    QTest::addColumn<QString>("down");
    const QString disconnect = "uphyDisconnectBtn";
    const QString swing = "uphySwingBtn";
    QTest::newRow("disconnect 0x1e") << disconnect << 0x1Eu << "1f" << 0x1F << "1d";
    QTest::newRow("disconnect 0x3f") << disconnect << 0x3Fu << "3f" << 0x3F << "3e";
    QTest::newRow("disconnect 0x20") << disconnect << 0x20u << "21" << 0x21 << "20";
    QTest::newRow("swing +0") << swing << 0x40u << "1" << 0x41 << "-0";
    QTest::newRow("swing +30") << swing << 0x5Eu << "31" << 0x5F << "29";
    QTest::newRow("swing +31") << swing << 0x5Fu << "31" << 0x5F << "30";
    QTest::newRow("swing -0") << swing << 0x60u << "0" << 0x40 << "-1";
    QTest::newRow("swing -1") << swing << 0x61u << "-0" << 0x60 << "-2";
    QTest::newRow("swing -31") << swing << 0x7Fu << "-30" << 0x7E << "-31";
    QTest::newRow("swing not set") << swing << 0x00u << "-0" << 0x60 << "0";
}

void TestSetupUsbValues::steps()
{
    QFETCH(QString, parameter);
    QFETCH(unsigned int, word);
    QFETCH(int, upValue);
    open();
    hardware().words = {{0x9C000190, word}, {0x9C004A9C, word}};
    enterUphy(parameter.toLatin1().constData());
    clickAt(*page, "uphyAddBtn");
    QTEST(shownValue(), "up");
    QStringList expected{QString("uphyAddClicked %1").arg(upValue)};
    if (parameter == "uphySwingBtn")
        expected.prepend(QString("refreshUphy %1").arg(upValue));
    QCOMPARE(said(), expected);

    clickAt(*page, "readBtn");
    forget();
    clickAt(*page, "uphyDecBtn");
    QTEST(shownValue(), "down");
    QVERIFY(!said().join(' ').contains("Clicked"));
}

void TestSetupUsbValues::stepsWriteNothing()
{
    open();
    enterUphy("uphySwingBtn");
    for (const char *button : {"uphyAddBtn", "uphyDecBtn", "uphyAddBtn"})
        clickAt(*page, button);
    QCOMPARE(calls(), QStringList());
}

void TestSetupUsbValues::swingWrite_data()
{
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("written");
    QTest::newRow("port 0") << 0 << "0x7f7f2246";
    QTest::newRow("port 1") << 1 << "0x7f7f4533";
    QTest::newRow("port 2") << 2 << "0x7f7f2233"; // the fixed bits hide its code
}

void TestSetupUsbValues::swingWrite()
{
    QFETCH(int, port);
    QFETCH(QString, written);
    open(port);
    // The code that the page holds when the register has changed behind its back.
    hardware().words[0x9C000190] = 0x00444546;
    enterUphy("uphySwingBtn");
    hardware().words[0x9C000190] = 0x00112233;
    clickAt(*page, "writeBtn");
    QCOMPARE(calls(),
             (QStringList{R"(registers.read("0x9c000000+0x190"))",
                          QString(R"(registers.write("0x9c000000+0x190", "%1"))").arg(written)}));
    QCOMPARE(said().first(), QString("readBtnClicked"));
}

void TestSetupUsbValues::disconnectWriteOpensTheWayFirst_data()
{
    QTest::addColumn<int>("port");
    QTest::addColumn<QStringList>("writes");
    QTest::newRow("port 0") << 0
                            << QStringList{R"(registers.write("0x9c004000+0xa8c", "0x1"))",
                                           R"(registers.write("0x9c004000+0xa90", "0x7"))",
                                           R"(registers.write("0x9c000000+0x88", "0x0"))",
                                           R"(registers.write("0x9c000000+0xa0", "0x4100c"))",
                                           R"(registers.write("0x9c004000+0xa9c", "0xabcdef3f"))"};
    QTest::newRow("port 1") << 1
                            << QStringList{R"(registers.write("0x9c004000+0xb0c", "0x1"))",
                                           R"(registers.write("0x9c004000+0xb10", "0x7"))",
                                           R"(registers.write("0x9c000000+0x88", "0x0"))",
                                           R"(registers.write("0x9c000000+0xa0", "0x8100c"))",
                                           R"(registers.write("0x9c004000+0xb1c", "0xabcdef3f"))"};
    QTest::newRow("port 2") << 2
                            << QStringList{R"(registers.write("0x9c004000+0xb8c", "0x1"))",
                                           R"(registers.write("0x9c004000+0xb90", "0x7"))",
                                           R"(registers.write("0x9c000000+0x88", "0x0"))",
                                           R"(registers.write("0x9c000000+0xa0", "0x10100c"))",
                                           R"(registers.write("0x9c004000+0xb9c", "0xabcdef3f"))"};
}

void TestSetupUsbValues::disconnectWriteOpensTheWayFirst()
{
    QFETCH(int, port);
    open(port);
    hardware().words = {
        {0x9C004A9C, 0xABCDEF3F}, {0x9C004B1C, 0xABCDEF3F}, {0x9C004B9C, 0xABCDEF3F}};
    enterUphy("uphyDisconnectBtn");
    clickAt(*page, "writeBtn");
    QTEST(calls(), "writes");
    QCOMPARE(said().last(), QString("open iic debug. %1").arg(port));
}

void TestSetupUsbValues::steppedValueIsWritten()
{
    open();
    hardware().words[0x9C000190] = 0x00000061;
    enterUphy("uphySwingBtn");
    clickAt(*page, "uphyAddBtn");
    clickAt(*page, "uphyAddBtn");
    clickAt(*page, "writeBtn");
    QCOMPARE(calls().last(), QString(R"(registers.write("0x9c000000+0x190", "0x7f7f0040"))"));
    clickAt(*page, "readBtn");
    QCOMPARE(shownValue(), QString("0"));
}

// "Device Mode" chooses port 0 behind the mode that is being worked in.
void TestSetupUsbValues::writeReadsTheWidgetsAnewInUphyModeToo()
{
    open(1);
    hardware().words = {{0x9C000190, 0x00444546}, {0x9C004A9C, 0x3F}};
    enterUphy("uphySwingBtn");
    clickAt(*page, "deviceMode");
    forget();
    clickAt(*page, "writeBtn");
    QCOMPARE(calls().last(), QString(R"(registers.write("0x9c000000+0x190", "0x7f7f4545"))"));

    child<QRadioButton>(*page, "uphyDisconnectBtn")->setChecked(true); // without its click
    forget();
    clickAt(*page, "writeBtn");
    QCOMPARE(calls().last(), QString(R"(registers.write("0x9c004000+0xa9c", "0x45"))"));
}

TESTMODE_TEST_MAIN(TestSetupUsbValues)
#include "test_setupusbvalues.moc"
