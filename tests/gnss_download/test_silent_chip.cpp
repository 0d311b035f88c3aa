#include "link.h"

#include "tests/support/unittest.h"

#include <QSignalSpy>

using tests::Dialogue;
using tests::Link;

// A chip that falls silent, at every step of an update: the update ends, says
// that it failed, and takes its leave of the line. The first row takes the
// sync's own 28 seconds.
class TestSilentChip : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void updateEndsAndTakesItsLeave_data();
    void updateEndsAndTakesItsLeave();
};

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
    Link link(Dialogue::read(tests::fixture("good_dialogue.txt")));
    link.chip.goSilentAt(step);
    link.chip.restMicroseconds = 200;
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    QSignalSpy reset(&link.worker, &ugrade_thread::signals_reset_success);
    QElapsedTimer clock;
    clock.start();
    link.worker.start();
    QVERIFY(link.worker.wait(60000));

    // Only what follows the last image is not asked about.
    const bool written = step == "disconnect" || step == "finish";
    QVERIFY2(QRegularExpression("^ended before frame \\d+ \\(" + step + "\\)$")
                 .match(link.chip.verdict())
                 .hasMatch(),
             qPrintable(link.chip.verdict()));
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", written}));
    QVERIFY(link.chip.sent().endsWith(tests::bytesOf("A5 D9 00")));
    QCOMPARE(link.chip.lineEvents().last(), QString("close"));
    QCOMPARE(reset.isEmpty(), step.startsWith("sync"));
    if (step == "sync 1") {
        // Four attempts of five seconds, each with a rest of two.
        QVERIFY(clock.elapsed() >= 4 * (5000 + 1995) && clock.elapsed() < 4 * (5000 + 4000));
        QCOMPARE(trace().lines().filter("hdl_brom_start 0x0A ->(error) 0x00, retry").size(), 4);
        QVERIFY(trace().lines().contains("hdl_connect fail"));
    }
}

TESTMODE_TEST_MAIN(TestSilentChip)
#include "test_silent_chip.moc"
