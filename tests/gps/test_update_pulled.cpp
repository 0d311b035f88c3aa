#include "tests/support/unittest.h"
#include "updateunit.h"

#include <random>

using bench::Fault;
using bench::ReceiverStep;
using tests::UpdateUnit;

namespace {

// Longer than any silence takes to end an update, and than the longest update.
constexpr int kLongestMilliseconds = 200000;

// From the environment, so that the same program makes the long runs.
int numberFrom(const char *variable, int otherwise)
{
    bool given = false;
    const int number = qEnvironmentVariableIntValue(variable, &given);
    return given ? number : otherwise;
}

} // namespace

Q_DECLARE_METATYPE(bench::ReceiverStep)

// The line goes under an update: wherever it is, the update ends, and on the healed line the next
// one succeeds in the same process.
class TestUpdatePulled : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void failsNoLaterThanWithASilentReceiver_data();
    void failsNoLaterThanWithASilentReceiver();
    void stoppedSenderIsReleasedByTheEndOfTheLine();
    void randomMoments();

private:
    void start(UpdateUnit &unit, const Fault &fault);
    void awaitFailure(UpdateUnit &unit);
    void updateAgain(UpdateUnit &unit);
};

// Returns when the fault has struck.
void TestUpdatePulled::start(UpdateUnit &unit, const Fault &fault)
{
    unit.receiver.setFaults({fault});
    unit.press("pushButton_3");
    QTRY_COMPARE_WITH_TIMEOUT(unit.receiver.faultReports().first().done, 1, kLongestMilliseconds);
}

void TestUpdatePulled::awaitFailure(UpdateUnit &unit)
{
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kLongestMilliseconds);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: failed"));
    QCOMPARE(unit.icon(), QColor("red"));
}

void TestUpdatePulled::updateAgain(UpdateUnit &unit)
{
    unit.receiver.clearFaults();
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kLongestMilliseconds);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(UpdateUnit::allImages()));
}

void TestUpdatePulled::failsNoLaterThanWithASilentReceiver_data()
{
    QTest::addColumn<ReceiverStep>("step");
    for (const ReceiverStep step :
         {ReceiverStep::Sync, ReceiverStep::Read16, ReceiverStep::Write16, ReceiverStep::LoadStage1,
          ReceiverStep::Stage1Greeting, ReceiverStep::LineCheck, ReceiverStep::LoadStage2,
          ReceiverStep::Handshake, ReceiverStep::Parameters, ReceiverStep::Download,
          ReceiverStep::Packet, ReceiverStep::ImageEnd, ReceiverStep::ImageSum})
        QTest::newRow(qPrintable(bench::stepName(step))) << step;
}

void TestUpdatePulled::failsNoLaterThanWithASilentReceiver()
{
    QFETCH(ReceiverStep, step);
    Fault silence;
    silence.step = step;
    qint64 took[2] = {};
    for (const bool pulled : {false, true}) {
        UpdateUnit unit;
        unit.openUpdatePage();
        start(unit, silence);
        const qint64 before = unit.clock.milliseconds();
        trace().clear();
        if (pulled)
            unit.pullLine();
        awaitFailure(unit);
        took[pulled ? 1 : 0] = unit.clock.milliseconds() - before;
        QVERIFY2(trace().lines().size() < 5000,
                 qPrintable(QString::number(trace().lines().size())));
        if (pulled) {
            unit.healLine();
            updateAgain(unit);
        }
    }
    QVERIFY2(took[1] <= took[0],
             qPrintable(QStringLiteral("%1 ms instead of %2").arg(took[1]).arg(took[0])));
}

// It writes without a time-out, and nobody would let it go on any more.
void TestUpdatePulled::stoppedSenderIsReleasedByTheEndOfTheLine()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    Fault stop;
    stop.kind = Fault::Kind::FlowByte;
    stop.step = ReceiverStep::LoadStage2;
    stop.index = 2000;
    start(unit, stop);
    QTest::qWait(20000);
    QVERIFY(unit.updateRuns());
    const qint64 before = unit.clock.milliseconds();
    unit.pullLine();
    awaitFailure(unit);
    QVERIFY(unit.clock.milliseconds() - before < 15000);
    unit.healLine();
    updateAgain(unit);
}

// Also while a packet is on its way, between two of them, and in what is no exchange. PULLS and
// SEED in the environment make it a longer run, or the same again.
void TestUpdatePulled::randomMoments()
{
    const int pulls = numberFrom("PULLS", 6);
    const auto seed =
        static_cast<quint32>(numberFrom("SEED", static_cast<int>(std::random_device()() & 0xFFFF)));
    qInfo("SEED=%u", seed);
    std::mt19937 dice(seed);
    UpdateUnit unit;
    unit.keepLineRate();
    unit.openUpdatePage();
    const qint64 begun = unit.clock.milliseconds();
    updateAgain(unit);
    const auto whole = static_cast<quint32>(unit.clock.milliseconds() - begun);

    int failed = 0;
    for (int i = 0; i < pulls; ++i) {
        QVERIFY(unit.receiver.setFlash(UpdateUnit::flashWith({})));
        const auto moment = static_cast<int>(dice() % whole);
        unit.press("pushButton_3");
        QTest::qWait(moment);
        const bool writing = unit.updateRuns();
        unit.pullLine();
        QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kLongestMilliseconds);
        const bool succeeded = unit.lines().last() == QLatin1String("/dev/ttyS4: succed");
        const bool equal = unit.flash() == UpdateUnit::flashWith(UpdateUnit::allImages());
        QVERIFY2(!succeeded || equal,
                 qPrintable(QStringLiteral("pull %1 after %2 ms: torn, and reported as a success")
                                .arg(i)
                                .arg(moment)));
        QVERIFY2(succeeded || writing,
                 qPrintable(QStringLiteral("pull %1 after %2 ms").arg(i).arg(moment)));
        failed += succeeded ? 0 : 1;
        unit.healLine();
        updateAgain(unit);
        trace().clear();
    }
    qInfo("%d pulls, %d updates failed, no torn flash reported as a success", pulls, failed);
}

TESTMODE_TEST_MAIN(TestUpdatePulled)
#include "test_update_pulled.moc"
