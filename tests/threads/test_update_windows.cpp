#include "tests/gps/updateunit.h"
#include "tests/support/unittest.h"

#include "gps/firmwarepackage.h"

#include <QPushButton>

#include <atomic>
#include <random>

using tests::UpdateUnit;
using tests::VirtualClock;

namespace {

constexpr int kLongestMilliseconds = 60000;
constexpr int kTestAndReceiver = 2; // threads, while no update runs
const char kSucceeded[] = "/dev/ttyS4: succed";

// From the environment, so that the same program makes the long runs.
int numberFrom(const char *variable, int otherwise)
{
    bool given = false;
    const int number = qEnvironmentVariableIntValue(variable, &given);
    return given ? number : otherwise;
}

// Presses a button as soon as it can be pressed, so many times.
class Presser : public QObject
{
public:
    Presser(QPushButton *pressed, int times) : button(pressed), left(times)
    {
        button->installEventFilter(this);
        press();
    }

    bool isDone() const { return left == 0; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::EnabledChange && button->isEnabled() && left > 0)
            press();
        return QObject::eventFilter(watched, event);
    }

private:
    void press()
    {
        --left;
        button->click();
    }

    QPushButton *button;
    int left;
};

} // namespace

// Windows go and updates follow each other while worker and transport are in the midst of their
// work, in threads that nothing holds up meanwhile.
class TestUpdateWindows : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void windowGoesAtRandomMoments();
    void updatesFollowAtOnce();

private:
    void loseWindow(UpdateUnit &unit, int atLine, bool byFramework);
};

// Returns when the window has gone that the update was started in: at its `atLine`-th trace.
void TestUpdateWindows::loseWindow(UpdateUnit &unit, int atLine, bool byFramework)
{
    std::atomic<int> line{0};
    QObject here; // of the GUI thread
    bool gone = false;
    const auto destroy = [&] {
        if (byFramework)
            unit.destroyWindow();
        else
            delete unit.part<QWidget>("pushButton_3")->window();
        gone = true;
    };
    // In the thread that traces, which goes on meanwhile.
    const auto count = [&] {
        if (++line == atLine)
            QMetaObject::invokeMethod(&here, destroy, Qt::QueuedConnection);
    };
    const auto connection =
        connect(&trace(), &bench::TraceLog::added, &here, count, Qt::DirectConnection);
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(gone, kLongestMilliseconds);
    disconnect(connection);
}

// WINDOWS and SEED in the environment make it a longer run, or the same again.
void TestUpdateWindows::windowGoesAtRandomMoments()
{
    const int windows = numberFrom("WINDOWS", 8);
    const auto seed =
        static_cast<quint32>(numberFrom("SEED", static_cast<int>(std::random_device()() & 0xFFFF)));
    qInfo("SEED=%u", seed);
    std::mt19937 dice(seed);
    UpdateUnit unit;
    unit.openUpdatePage();
    downloadfile = {"boot", "partition", "application", "configuration"};
    trace().clear();
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kLongestMilliseconds);
    const int lines = trace().lines().size();
    QVERIFY(lines > 300);

    for (int i = 0; i < windows; ++i) {
        QVERIFY(unit.receiver.setFlash(UpdateUnit::flashWith({})));
        loseWindow(unit, 1 + static_cast<int>(dice() % static_cast<quint32>(lines - 20)),
                   i % 2 == 0);
        unit.createWindow();
        unit.press("key_gps_update");
        // Nobody waits for the worker, and it finishes what it began.
        QTRY_COMPARE_WITH_TIMEOUT(VirtualClock::threads(), kTestAndReceiver, kLongestMilliseconds);
        QCOMPARE(unit.receiver.state().images.size(), 4);
        QVERIFY(unit.receiver.state().anomalies.isEmpty());
        trace().clear();
        unit.receiver.clearRecord();
    }
}

void TestUpdateWindows::updatesFollowAtOnce()
{
    const int updates = numberFrom("UPDATES", 6);
    UpdateUnit unit;
    unit.openUpdatePage();
    downloadfile = {"boot", "partition", "application", "configuration"};
    const Presser presser(unit.part<QPushButton>("pushButton_3"), updates);
    QTRY_VERIFY_WITH_TIMEOUT(presser.isDone() && !unit.updateRuns(),
                             updates * kLongestMilliseconds);
    QCOMPARE(unit.lines().count(QLatin1String(kSucceeded)), updates);
    QCOMPARE(VirtualClock::threads(), kTestAndReceiver);
}

TESTMODE_TEST_MAIN(TestUpdateWindows)
#include "test_update_windows.moc"
