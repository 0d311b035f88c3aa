#include "link.h"

#include "tests/support/clock/virtualclock.h"
#include "tests/support/unittest.h"

#include <QSignalSpy>

using tests::Dialogue;
using tests::Link;

// A chip that falls silent, at every step of an update: the update ends after exactly the
// dialogue's time-outs, says that it failed, and takes its leave of the line.
class TestSilentChip : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void updateEndsAndTakesItsLeave_data();
    void updateEndsAndTakesItsLeave();
    void silenceFromTheBeginningTakes106Seconds();
};

namespace {

// What is in a step's variable before its answer: a transport that hears nothing traces that.
QString valueBefore(const QString &step)
{
    const QVector<QPair<QString, const char *>> values = {
        {"5f", "sync 2"},
        {"f5", "sync 3"},
        {"af", "sync 4"},
        {"ff", "register .|identify|watchdog|stage .|greeting [13]|line check|jump|parameters"},
        {"ffff",
         "(register .|identify|watchdog|stage .|jump|parameters) status|watchdog value"
         "|stage . checksum|greeting 2|baud switch"},
        {"2a00", "register 4 value"}, // the same register's as the first
        {"0000",
         "register . value|(register .|watchdog|stage .) end|flash id"
         "|(greeting .|line check|proceed .) status|proceed ."},
        {"c0", "handshake 2"},
        {"0c", "handshake 3"},
        {"3f", "handshake 4"},
        {"f3", "handshake end"},
        {"69", "power key"},
    };
    for (const auto &[value, steps] : values) {
        if (QRegularExpression(QStringLiteral("^(%1)$").arg(steps)).match(step).hasMatch())
            return value;
    }
    return "00";
}

} // namespace

void TestSilentChip::updateEndsAndTakesItsLeave_data()
{
    QTest::addColumn<QString>("step");
    const QStringList steps = Dialogue::read(tests::fixture("good_dialogue.txt")).answeredSteps();
    for (const QString &step : steps)
        QTest::newRow(qPrintable(step)) << step;
}

void TestSilentChip::updateEndsAndTakesItsLeave()
{
    QFETCH(QString, step);
    downloadfile = {"\xB0", QByteArray(4096, '\x50'), QByteArray(4096, '\xA0') + '\xA1',
                    "\xC0\xC1\xC2"};
    const tests::VirtualClock clock;
    Link link(Dialogue::read(tests::fixture("good_dialogue.txt")));
    link.chip.goSilentAt(step);
    link.chip.takesTime = true;
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    QSignalSpy reset(&link.worker, &ugrade_thread::signals_reset_success);
    link.worker.start();
    QVERIFY(link.worker.wait());

    // Only what follows the last image is not asked about.
    const bool written = step == "disconnect" || step == "finish";
    QVERIFY2(QRegularExpression("^ended before frame \\d+ \\(" + step + "\\)$")
                 .match(link.chip.verdict())
                 .hasMatch(),
             qPrintable(link.chip.verdict()));
    QCOMPARE(link.chip.unansweredValues().first(), valueBefore(step));
    QCOMPARE(link.chip.unansweredValues().last(), QString("00"));
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", written}));
    QVERIFY(link.chip.sent().endsWith(tests::bytesOf("A5 D9 00")));
    QCOMPARE(link.chip.lineEvents().last(), QString("close"));
    QCOMPARE(reset.isEmpty(), step.startsWith("sync"));

    // Beside the silence: the reset, a rest after each failed sync, two around the switch of the
    // rate, and one after each packet.
    qint64 unanswered = 0;
    for (const quint32 polls : link.chip.unansweredPolls())
        unanswered += polls;
    const auto times = [this](const char *text) { return trace().lines().filter(text).size(); };
    QCOMPARE(qint64(clock.milliseconds()),
             unanswered + 100 + 2000 * times("->(error)")
                 + 200 * link.chip.lineEvents().contains("baud 921600")
                 + 3 * times("hdl_wirte_packet success"));
}

// Four attempts of five seconds, each with one more byte and a rest of two seconds; then the
// registers, the status after them and the leave-taking, of three seconds a read.
void TestSilentChip::silenceFromTheBeginningTakes106Seconds()
{
    const tests::VirtualClock clock;
    Link link(Dialogue::read(tests::fixture("good_dialogue.txt")));
    link.chip.goSilentAt("sync 1");
    link.chip.takesTime = true;
    link.worker.start();
    QVERIFY(link.worker.wait());
    QCOMPARE(clock.milliseconds(), 100 + 4 * (5000 + 5 + 2000) + (5 * 4 + 1 + 3 + 2) * 3000);
    QVERIFY(link.chip.sent().startsWith(QByteArray(1000, '\xA0') + '\x0A' + '\xA0'));
    QCOMPARE(trace().lines().filter("hdl_brom_start 0x0A ->(error) 0x00, retry").size(), 4);
    QVERIFY(trace().lines().contains("hdl_connect fail"));
}

TESTMODE_TEST_MAIN(TestSilentChip)
#include "test_silent_chip.moc"
