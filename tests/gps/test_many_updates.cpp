#include "tests/support/unittest.h"
#include "updateunit.h"

#include "bench/unit/journal.h"
#include "gps/firmwarepackage.h"

#include <QFile>

#ifdef __SANITIZE_ADDRESS__
// The sanitizer's own; its header does not come with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#include <unistd.h>
#endif

using tests::UpdateUnit;

namespace {

constexpr int kLongestMilliseconds = 60000;
constexpr qint64 kMostGrowth = 2 * 1024 * 1024;

// What the process holds. The address sanitizer keeps what is freed for a while: there only what is
// in use tells.
qint64 heldBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#else
    ::malloc_trim(0); // what is free is not held against the plug-in
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/statm");
    return statm.readAll().split(' ').at(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
#endif
}

} // namespace

// Many updates in one process leave its memory as it is.
class TestManyUpdates : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void memoryStays();
};

// UPDATES in the environment makes it a longer run; the memory is that after the 50th.
void TestManyUpdates::memoryStays()
{
    bool given = false;
    const int asked = qEnvironmentVariableIntValue("UPDATES", &given);
    const int updates = given ? asked : 60;
    UpdateUnit unit;
    unit.openUpdatePage();
    downloadfile = {"boot", "partition", "application", "configuration"};
    const int settled = qMin(50, updates / 2);
    qint64 atFirst = 0;
    for (int i = 1; i <= updates; ++i) {
        unit.press("pushButton_3");
        QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kLongestMilliseconds);
        QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
        // What the simulated unit has noted is not the plug-in's.
        trace().clear();
        bench::journal().clear();
        unit.receiver.clearRecord();
        if (i == settled)
            atFirst = heldBytes();
    }
    const qint64 growth = heldBytes() - atFirst;
    qInfo("%d updates: %lld KiB after update %d, %+lld KiB since", updates,
          static_cast<long long>(atFirst / 1024), settled, static_cast<long long>(growth / 1024));
    QVERIFY2(growth < kMostGrowth, qPrintable(QString::number(growth)));
}

TESTMODE_TEST_MAIN(TestManyUpdates)
#include "test_many_updates.moc"
