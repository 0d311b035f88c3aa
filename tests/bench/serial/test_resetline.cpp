#include "recordedcalls.h"
#include "tests/support/unittest.h"

#include "bench/serial/resetline.h"

#include <QTemporaryFile>

#include <fcntl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using bench::parseResetWiring;
using bench::ResetLine;
using bench::ResetWiring;
using tests::RecordedCalls;

// The receiver's reset input on a modem line or a GPIO line, before a recorded kernel; what
// has no such line is a real pseudo-terminal.
class TestResetLine : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readsWords_data();
    void readsWords();
    void otherWordsAreNone_data();
    void otherWordsAreNone();

    void modemLineIsDriven_data();
    void modemLineIsDriven();
    void lineStaysWhileThePortIsOpenedAndClosed_data();
    void lineStaysWhileThePortIsOpenedAndClosed();
    void lastCloseOfThePortDropsNothing();
    void adapterThatIsBackIsDrivenAgain();
    void adapterThatIsGoneIsTold();

    void gpioLineIsDriven_data();
    void gpioLineIsDriven();

    void isHandedOnOnce();

    void portWithoutModemLinesIsTold_data();
    void portWithoutModemLinesIsTold();
    void modemLineThatFailsIsTold();
    void gpioErrorsNameTheCure_data();
    void gpioErrorsNameTheCure();
    void deniedChipNamesTheCure();

private:
    std::unique_ptr<ResetLine> openLine(const char *word)
    {
        auto line = ResetLine::open(*parseResetWiring(word), port.toStdString(), &error);
        if (!line)
            qWarning("%s", error.c_str());
        return line;
    }
    // The same as the program inside of the private root has it.
    std::unique_ptr<ResetLine> inheritLine(const char *word)
    {
        if (const auto line = openLine(word))
            line->bequeath();
        return ResetLine::inherited(*parseResetWiring(word), port.toStdString());
    }
    QString errorOf(const std::string &word)
    {
        error.clear();
        const auto line = ResetLine::open(*parseResetWiring(word), port.toStdString(), &error);
        return line ? QStringLiteral("none") : QString::fromStdString(error);
    }

    int master = -1;
    QString port;
    std::string error;
};

void TestResetLine::init()
{
    UnitTest::init();
    master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    port = QString::fromLocal8Bit(::ptsname(master));
}

void TestResetLine::cleanup()
{
    ::close(master);
    UnitTest::cleanup();
}

void TestResetLine::readsWords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("inverted");
    QTest::addColumn<QString>("chip");
    QTest::addColumn<int>("line");
    const int rts = int(ResetWiring::Kind::Rts);
    const int dtr = int(ResetWiring::Kind::Dtr);
    const int gpio = int(ResetWiring::Kind::Gpio);
    QTest::newRow("rts") << "rts" << rts << false << "" << 0;
    QTest::newRow("dtr") << "dtr" << dtr << false << "" << 0;
    QTest::newRow("!rts") << "!rts" << rts << true << "" << 0;
    QTest::newRow("!dtr") << "!dtr" << dtr << true << "" << 0;
    QTest::newRow("number") << "gpio:0:3" << gpio << false << "/dev/gpiochip0" << 3;
    QTest::newRow("name") << "gpio:gpiochip12:0" << gpio << false << "/dev/gpiochip12" << 0;
    QTest::newRow("path") << "!gpio:/dev/gpio/by:id:31" << gpio << true << "/dev/gpio/by:id" << 31;
}

void TestResetLine::readsWords()
{
    QFETCH(QString, word);
    const auto wiring = parseResetWiring(word.toStdString());
    QVERIFY(wiring);
    QTEST(int(wiring->kind), "kind");
    QTEST(wiring->inverted, "inverted");
    QTEST(QString::fromStdString(wiring->chip), "chip");
    QTEST(int(wiring->lineNumber), "line");
}

void TestResetLine::otherWordsAreNone_data()
{
    QTest::addColumn<QString>("word");
    for (const char *word : {"", "!", "RTS", "cts", "rts!", "!!rts", "rts ", "gpio",
                             "gpio:", "gpio:0", "gpio:0:", "gpio::3", "gpio:0:-1", "gpio:0:x",
                             "gpio:0:3 ", "gpio:0:4294967296", "dtr:0:3"})
        QTest::addRow("'%s'", word) << word;
}

void TestResetLine::otherWordsAreNone()
{
    QFETCH(QString, word);
    QVERIFY(!parseResetWiring(word.toStdString()));
}

void TestResetLine::modemLineIsDriven_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QStringList>("calls"); // open, asserted, let go
    QTest::newRow("rts") << "rts" << QStringList{"RTS cleared", "RTS set", "RTS cleared"};
    QTest::newRow("dtr") << "dtr" << QStringList{"DTR cleared", "DTR set", "DTR cleared"};
    QTest::newRow("!rts") << "!rts" << QStringList{"RTS set", "RTS cleared", "RTS set"};
    QTest::newRow("!dtr") << "!dtr" << QStringList{"DTR set", "DTR cleared", "DTR set"};
}

void TestResetLine::modemLineIsDriven()
{
    QFETCH(QString, word);
    QFETCH(QStringList, calls);
    const RecordedCalls kernel;
    const auto line = openLine(qPrintable(word));
    QVERIFY(line);
    QCOMPARE(kernel.calls(), calls.mid(0, 1));
    QVERIFY(line->set(true));
    QCOMPARE(kernel.calls(), calls.mid(0, 2));
    QVERIFY(line->set(false));
    QCOMPARE(kernel.calls(), calls);
}

void TestResetLine::lineStaysWhileThePortIsOpenedAndClosed_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<bool>("asserted");
    QTest::newRow("rts, let go") << "rts" << false;
    QTest::newRow("rts, asserted") << "rts" << true;
    QTest::newRow("!dtr, let go") << "!dtr" << false;
    QTest::newRow("!dtr, asserted") << "!dtr" << true;
}

void TestResetLine::lineStaysWhileThePortIsOpenedAndClosed()
{
    QFETCH(QString, word);
    QFETCH(bool, asserted);
    RecordedCalls kernel;
    const auto line = inheritLine(qPrintable(word));
    QVERIFY(line && line->set(asserted));
    const bool isRts = word == "rts";
    const bool level = isRts == asserted;
    const auto stands = [&] { return (isRts ? kernel.rts() : kernel.dtr()) == level; };
    for (int opening = 0; opening < 3; ++opening) {
        kernel.clear();
        kernel.raiseModemLines();
        const int other = ::open(qPrintable(port), O_RDWR | O_NOCTTY | O_CLOEXEC);
        QVERIFY(other >= 0);
        QTRY_VERIFY(!kernel.calls().isEmpty() && stands());
        ::close(other);
        QVERIFY(stands());
    }
}

void TestResetLine::lastCloseOfThePortDropsNothing()
{
    const int before = ::open(qPrintable(port), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    QCOMPARE(::tcgetattr(before, &settings), 0);
    settings.c_cflag |= HUPCL;
    QCOMPARE(::tcsetattr(before, TCSANOW, &settings), 0);
    const RecordedCalls kernel;
    QVERIFY(openLine("rts"));
    QCOMPARE(::tcgetattr(before, &settings), 0);
    QVERIFY((settings.c_cflag & HUPCL) == 0);
    ::close(before);
}

void TestResetLine::adapterThatIsBackIsDrivenAgain()
{
    RecordedCalls kernel;
    const auto line = inheritLine("rts");
    QVERIFY(line);
    kernel.clear();
    kernel.failNext(EIO);
    QVERIFY(line->set(true));
    QVERIFY(kernel.rts());
    QVERIFY(kernel.calls().contains("RTS set"));
}

void TestResetLine::adapterThatIsGoneIsTold()
{
    RecordedCalls kernel;
    const auto line = inheritLine("rts");
    QVERIFY(line);
    kernel.failNext(EIO);
    ::close(master); // and with it the port's name
    master = -1;
    QVERIFY(!line->set(true));
}

void TestResetLine::gpioLineIsDriven_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("reset while high")
        << "gpio:%1:3"
        << QStringList{"gpio 3 output low as \"testmode-bench reset\"", "gpio high", "gpio low"};
    QTest::newRow("reset while low")
        << "!gpio:%1:7"
        << QStringList{"gpio 7 output high as \"testmode-bench reset\"", "gpio low", "gpio high"};
}

void TestResetLine::gpioLineIsDriven()
{
    QFETCH(QString, word);
    QFETCH(QStringList, calls);
    QTemporaryFile chip;
    QVERIFY(chip.open());
    const RecordedCalls kernel;
    const auto line = inheritLine(qPrintable(word.arg(chip.fileName())));
    QVERIFY(line);
    QCOMPARE(kernel.calls(), calls.mid(0, 1)); // at its level from the first moment on
    QVERIFY(line->set(true));
    QVERIFY(line->set(false));
    QCOMPARE(kernel.calls(), calls);
}

// Through exec: neither closed there, nor left to the programs that are started further on.
void TestResetLine::isHandedOnOnce()
{
    const RecordedCalls kernel;
    const auto wiring = *parseResetWiring("rts");
    QVERIFY(!ResetLine::inherited(wiring, port.toStdString()));
    const auto line = openLine("rts");
    line->bequeath();
    const int descriptor = qEnvironmentVariableIntValue("HEADUNIT_RESET_LINE");
    QCOMPARE(::fcntl(descriptor, F_GETFD), 0);
    const auto heir = ResetLine::inherited(wiring, port.toStdString());
    QVERIFY(heir);
    QCOMPARE(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    QVERIFY(!qEnvironmentVariableIsSet("HEADUNIT_RESET_LINE"));
    QVERIFY(!ResetLine::inherited(wiring, port.toStdString()));
}

void TestResetLine::portWithoutModemLinesIsTold_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("name");
    QTest::newRow("rts") << "rts"
                         << "RTS";
    QTest::newRow("!dtr") << "!dtr"
                          << "DTR";
}

void TestResetLine::portWithoutModemLinesIsTold()
{
    QFETCH(QString, word);
    QFETCH(QString, name);
    QCOMPARE(errorOf(word.toStdString()),
             QString("%1 has no modem lines, so no %2; name a GPIO line (gpio:CHIP:LINE), or leave "
                     "--reset out and pull the line by hand")
                 .arg(port, name));
}

void TestResetLine::modemLineThatFailsIsTold()
{
    RecordedCalls kernel;
    kernel.failNext(EIO);
    QCOMPARE(errorOf("rts"),
             port
                 + ": RTS cannot be driven (Input/output error); see to the adapter, or name "
                   "another line");
    ::close(master);
    master = -1;
    QVERIFY2(errorOf("rts").startsWith(port + " cannot be opened ("), error.c_str());
}

void TestResetLine::gpioErrorsNameTheCure_data()
{
    QTest::addColumn<QString>("chip"); // empty: a file that stands for one
    QTest::addColumn<int>("failure");
    QTest::addColumn<QString>("holder"); // of the line; null: nobody
    QTest::addColumn<int>("lines");
    QTest::addColumn<QString>("message"); // %1: the chip
    const QString busy = "%1, line 3 is in use by %2; end that one, or name another line";
    QTest::newRow("not there") << "/dev/gpiochip4711" << 0 << QString() << 8
                               << "%1 is not there; name a chip that `ls /dev/gpiochip*` shows";
    QTest::newRow("no chip") << "" << ENOTTY << QString() << 8
                             << "%1 is no GPIO chip; name one that `ls /dev/gpiochip*` shows";
    QTest::newRow("no such line") << "" << 0 << QString() << 3 << "%1 has no line 3; it has 0 to 2";
    QTest::newRow("busy") << "" << 0 << "power key" << 8 << busy.arg("%1", "\"power key\"");
    QTest::newRow("busy, by nobody knows whom")
        << "" << 0 << "" << 8 << busy.arg("%1", "another program");
}

void TestResetLine::gpioErrorsNameTheCure()
{
    QFETCH(QString, chip);
    QFETCH(int, failure);
    QFETCH(QString, holder);
    QFETCH(int, lines);
    QFETCH(QString, message);
    QTemporaryFile file;
    QVERIFY(file.open());
    if (chip.isEmpty())
        chip = file.fileName();
    RecordedCalls kernel;
    kernel.failNext(failure);
    kernel.setHolder(holder);
    kernel.setGpioLines(unsigned(lines));
    QCOMPARE(errorOf("gpio:" + chip.toStdString() + ":3"), message.arg(chip));
    QCOMPARE(kernel.calls(), QStringList());
}

// In a process of its own that is no superuser.
void TestResetLine::deniedChipNamesTheCure()
{
    constexpr uid_t kNobody = 65534;
    QTemporaryFile chip;
    QVERIFY(chip.open());
    QVERIFY(chip.setPermissions(QFile::Permissions()));
    const QString name = chip.fileName();
    int channel[2];
    QCOMPARE(::pipe(channel), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const bool changed = ::geteuid() != 0 || ::setuid(kNobody) == 0;
        const QByteArray said = changed ? errorOf("gpio:" + name.toStdString() + ":3").toUtf8()
                                        : QByteArray("cannot change the user");
        ::_exit(::write(channel[1], said.constData(), size_t(said.size())) == said.size() ? 0 : 1);
    }
    ::close(channel[1]);
    char said[512] = {};
    QVERIFY(::read(channel[0], said, sizeof said - 1) > 0);
    ::close(channel[0]);
    ::waitpid(child, nullptr, 0);
    QCOMPARE(QString::fromUtf8(said),
             name + " may not be opened; join the device's group (often gpio)");
}

TESTMODE_TEST_MAIN(TestResetLine)
#include "test_resetline.moc"
