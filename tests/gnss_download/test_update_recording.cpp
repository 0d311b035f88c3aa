#include "link.h"

#include "tests/support/clock/clockedtest.h"
#include "tests/support/recorder.h"

#include <QFile>

using tests::Dialogue;
using tests::Link;

// What the worker does in a whole good update, in one sequence: what it asks of the transport, what
// it asks of the unit, what it traces and logs, what it tells the page.
class TestUpdateRecording : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void goodUpdateIsAsRecorded();
    void recordingIsAsLongAsAnUpdate();
};

namespace {

// Addresses differ from run to run.
QStringList withoutAddresses(QStringList lines)
{
    static const QRegularExpression address(QStringLiteral("\\b0x[0-9a-f]{6,}\\b"));
    for (QString &line : lines) {
        if (line.startsWith(QLatin1String("[DBG]")))
            line.replace(address, QStringLiteral("0x*"));
    }
    return lines;
}

QStringList recording()
{
    QFile file(tests::fixture("good_update.txt"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no recording");
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    return lines.filter(QRegularExpression("^(?!# )"));
}

} // namespace

void TestUpdateRecording::goodUpdateIsAsRecorded()
{
    downloadfile = {"\xB0", QByteArray(4096, '\x50'), QByteArray(4096, '\xA0') + '\xA1',
                    "\xC0\xC1\xC2"};
    tests::Recorder recorder(trace());
    Link link(Dialogue::read(tests::fixture("good_dialogue.txt")));
    const QStringList signalNames = tests::signalsOf(ugrade_thread::staticMetaObject);
    for (const QString &signal : signalNames)
        recorder.watchSignal(&link.worker, qPrintable("2" + signal));
    link.worker.start();
    QVERIFY(link.worker.wait());
    QCOMPARE(link.chip.verdict(), QString());
    // the reset, the two rests around the switch of the rate, one rest a packet
    QCOMPARE(milliseconds(), 100 + 2 * 100 + 5 * 3);

    const QStringList done = withoutAddresses(recorder.entries());
    const QStringList wanted = recording();
    for (int i = 0; i < qMin(done.size(), wanted.size()); ++i)
        QVERIFY2(
            done.at(i) == wanted.at(i),
            qPrintable(QString("entry %1: %2\nrecorded: %3").arg(i).arg(done.at(i), wanted.at(i))));
    QCOMPARE(done.size(), wanted.size());
}

// One that was cut short would pass for any update.
void TestUpdateRecording::recordingIsAsLongAsAnUpdate()
{
    QCOMPARE(recording().last(), QString("signal signals_success(/dev/ttyS4, true)"));
    QCOMPARE(recording().filter("hdl_wirte_packet success").size(), 5);
}

TESTMODE_TEST_MAIN(TestUpdateRecording)
#include "test_update_recording.moc"
