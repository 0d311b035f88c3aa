#include "tests/support/unittest.h"

#include "bench/serial/serialdevice.h"

#include <QFile>

#include <csignal>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// What can be in the way of a serial device, shown on a pseudo-terminal.
class TestSerialDevice : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void freeDeviceIsClaimed();
    void claimedDeviceIsBusyForTheNext();
    void exclusiveDeviceIsBusy();
    void lockFileOfALivingProcessCounts();
    void lockFileOfADeadProcessDoesNot();
    void deniedDeviceNamesTheCure();
    void pseudoTerminalsAreTold();

private:
    QString busy() const { return path + " is in use by another program; end that one"; }
    QString claim() const { return claimAs(::geteuid()); }
    QString claimAs(uid_t user) const;
    QString lockFile() const { return "/run/lock/LCK.." + path.section('/', -1); }
    void writeLock(pid_t holder) const;

    int master = -1;
    int slave = -1;
    QString path;
};

void TestSerialDevice::init()
{
    UnitTest::init();
    master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    path = QString::fromLocal8Bit(::ptsname(master));
    slave = ::open(qPrintable(path), O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(slave >= 0);
}

void TestSerialDevice::cleanup()
{
    QFile::remove(lockFile());
    ::close(slave);
    ::close(master);
    UnitTest::cleanup();
}

// In a process of its own, whose end frees the device.
QString TestSerialDevice::claimAs(uid_t user) const
{
    int channel[2];
    if (::pipe(channel) != 0)
        return "no pipe";
    const pid_t child = ::fork();
    if (child == 0) {
        const bool changed = user == ::geteuid() || ::setuid(user) == 0;
        const std::string said =
            changed ? bench::claimSerialDevice(path.toStdString()) : "cannot change the user";
        const ssize_t written = ::write(channel[1], said.data(), said.size());
        ::_exit(written == static_cast<ssize_t>(said.size()) ? 0 : 1);
    }
    ::close(channel[1]);
    char buffer[512];
    const ssize_t count = ::read(channel[0], buffer, sizeof buffer);
    ::close(channel[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0 ? QString::fromUtf8(buffer, static_cast<int>(count)) : "child failed";
}

void TestSerialDevice::writeLock(pid_t holder) const
{
    QFile file(lockFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::number(holder).rightJustified(10) + "\n");
}

void TestSerialDevice::freeDeviceIsClaimed()
{
    QCOMPARE(claim(), QString());
}

void TestSerialDevice::claimedDeviceIsBusyForTheNext()
{
    QCOMPARE(::flock(slave, LOCK_EX | LOCK_NB), 0);
    QCOMPARE(claim(), busy());
}

void TestSerialDevice::exclusiveDeviceIsBusy()
{
    QCOMPARE(::ioctl(slave, TIOCEXCL), 0);
    QCOMPARE(claim(), busy());
}

void TestSerialDevice::lockFileOfALivingProcessCounts()
{
    writeLock(::getpid());
    QCOMPARE(claim(),
             QString("%1 is in use by process %2; end that one").arg(path).arg(::getpid()));
}

void TestSerialDevice::lockFileOfADeadProcessDoesNot()
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    writeLock(child);
    QCOMPARE(claim(), QString());
}

void TestSerialDevice::deniedDeviceNamesTheCure()
{
    constexpr uid_t kNobody = 65534;
    QCOMPARE(::fchmod(slave, 0), 0);
    QCOMPARE(claimAs(::geteuid() == 0 ? kNobody : ::geteuid()),
             path + " may not be opened; join the device's group (often dialout)");
}

void TestSerialDevice::pseudoTerminalsAreTold()
{
    QVERIFY(bench::isPseudoTerminal(path.toStdString()));
    QVERIFY(!bench::isPseudoTerminal("/dev/null"));
    QVERIFY(!bench::isPseudoTerminal("/dev/ptmx"));
    QVERIFY(!bench::isPseudoTerminal("/dev/nothing"));
    QVERIFY(!bench::isPseudoTerminal("/proc/self/exe"));
}

TESTMODE_TEST_MAIN(TestSerialDevice)
#include "test_serialdevice.moc"
