#include "flashprogram.h"

#include "bench/receiver/receiver.h"

#include <QJsonArray>

#include <csignal>
#include <memory>
#include <vector>

using namespace flashprogram;

namespace {

// Receivers on lines of their own, as on as many adapters. No reset line leads to them: they take
// the beginning of a synchronisation for a reset.
struct Receivers
{
    explicit Receivers(int count)
    {
        for (int i = 0; i < count; ++i) {
            all.push_back(std::make_unique<bench::Receiver>());
            bench::ReceiverSettings settings = all.back()->settings();
            settings.keepLineRate = false;
            settings.resetOnSync = true;
            all.back()->setSettings(settings);
            lines << all.back()->open();
        }
    }

    // One that hears nothing, as without supply.
    void silence(int index)
    {
        bench::ReceiverSettings settings = all.at(index)->settings();
        settings.powered = false;
        all.at(index)->setSettings(settings);
    }

    QStringList words() const
    {
        QStringList list;
        for (const QString &line : lines)
            list << "--uart" << line;
        return list;
    }

    std::vector<std::unique_ptr<bench::Receiver>> all;
    QStringList lines;
};

} // namespace

// Several receivers updated at once by one command.
class TestSideBySide : public QObject
{
    Q_OBJECT

private slots:
    void init() { place.reset(new Workplace); }

    void allAreFlashed();
    void plainLinesNameTheirReceiver();
    void oneThatFailsLeavesTheOthersAlone();
    void benchThatDiesIsAFailureOfItsLine();
    void requestToStopEndsAll();
    void killedProgramLeavesNoBench();
    void commonStatusIsTheStatus();
    void documentListsWhatIsTold();

private:
    // Runs until each of the receivers' benches waits for the boot ROM.
    void startSilent(QProcess *process, const Receivers &receivers);

    QScopedPointer<Workplace> place;
    QByteArray output; // of startSilent()
};

void TestSideBySide::startSilent(QProcess *process, const Receivers &receivers)
{
    process->start(kBench, place->words(receivers.words() + QStringList{"--format", "json"}));
    output.clear();
    QTRY_COMPARE_WITH_TIMEOUT(
        with("phase", "sync", eventsIn(output += process->readAllStandardOutput())).size(),
        receivers.lines.size(), 30000);
}

void TestSideBySide::allAreFlashed()
{
    const Receivers receivers(3);
    const Outcome outcome = place->run(receivers.words() + QStringList{"--format", "json"});
    QCOMPARE(outcome.errors, QByteArray());
    QVERIFY2(outcome.status == 0, outcome.output.constData());
    for (int i = 0; i < 3; ++i) {
        const QList<QJsonObject> own = with("uart", receivers.lines.at(i), outcome.events());
        QCOMPARE(with("kind", "start", own).size(), 1);
        QCOMPARE(own.last().value("kind").toString(), QString("result"));
        QCOMPARE(own.last().value("ok").toBool(), true);
        const QString number = receivers.lines.at(i).section('/', -1);
        QCOMPARE(own.last().value("log").toString(), place->path("run-" + number + ".log"));
        QVERIFY(contentOf(place->path("run-" + number + ".log")).contains("hdl_download success"));
        QCOMPARE(receivers.all.at(i)->flash(0x08030000, 4097), imageOf(4097));
        QCOMPARE(receivers.all.at(i)->flash(0x083FF000, 1), imageOf(1));
    }
    const QJsonObject summary = outcome.events().last();
    QCOMPARE(summary.value("kind").toString(), QString("summary"));
    QCOMPARE(summary.value("good").toInt(), 3);
    QCOMPARE(summary.value("of").toInt(), 3);
}

void TestSideBySide::plainLinesNameTheirReceiver()
{
    const Receivers receivers(2);
    const Outcome outcome = place->run(receivers.words());
    QCOMPARE(outcome.status, 0);
    for (const QString &line : receivers.lines) {
        const QRegularExpression good("^" + line + " +\\d+\\.\\d s  succeeded( in attempt \\d)?$",
                                      QRegularExpression::MultilineOption);
        QVERIFY2(good.match(outcome.output).hasMatch(), outcome.output.constData());
    }
    QVERIFY2(outcome.output.endsWith(" s  2 of 2 receivers succeeded\n"),
             outcome.output.constData());
    QVERIFY2(!outcome.output.contains('\033'), outcome.output.constData());
}

void TestSideBySide::oneThatFailsLeavesTheOthersAlone()
{
    const Receivers receivers(2);
    bench::Fault fault;
    fault.kind = bench::Fault::Kind::Checksum;
    fault.step = bench::ReceiverStep::LoadStage1;
    fault.times = 0; // always
    receivers.all.at(1)->setFaults({fault});
    const Outcome outcome = place->run(receivers.words());
    QCOMPARE(outcome.status, 1);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY2(text.contains(" s  1 of 2 receivers succeeded\n          NOT " + receivers.lines.at(1)
                           + ": FAILED: "),
             outcome.output.constData());
    QCOMPARE(receivers.all.at(0)->flash(0x08030000, 4097), imageOf(4097));
}

void TestSideBySide::benchThatDiesIsAFailureOfItsLine()
{
    Receivers receivers(2);
    receivers.silence(1);
    QProcess process;
    process.start(kBench, place->words(receivers.words() + QStringList{"--format", "json"}));
    const QByteArray word = "--uart=" + receivers.lines.at(1).toLocal8Bit();
    output.clear();
    QTRY_VERIFY_WITH_TIMEOUT(
        !with("uart", receivers.lines.at(1),
              with("phase", "sync", eventsIn(output += process.readAllStandardOutput())))
             .isEmpty(),
        30000);
    const QStringList found = processesWith(word);
    QVERIFY(!found.isEmpty());
    for (const QString &number : found)
        ::kill(number.toInt(), SIGKILL);
    Outcome outcome = Workplace::endOf(&process);
    outcome.output.prepend(output);
    QCOMPARE(outcome.status, 1);
    const QJsonArray ends = outcome.events().last().value("receivers").toArray();
    QCOMPARE(ends.at(0)["ok"].toBool(), true);
    QCOMPARE(ends.at(1)["ok"].toBool(), false);
    QCOMPARE(ends.at(1)["text"].toString(), QString("its bench has gone"));
    QTRY_COMPARE(processesWith(word), QStringList());
}

void TestSideBySide::requestToStopEndsAll()
{
    Receivers receivers(2);
    receivers.silence(0);
    receivers.silence(1);
    QProcess process;
    startSilent(&process, receivers);
    process.terminate();
    const Outcome outcome = Workplace::endOf(&process);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.events("stop").size(), 2);
    QCOMPARE(outcome.events("result").size(), 2);
    QCOMPARE(outcome.events().last().value("good").toInt(), 0);
    QTRY_COMPARE(processesWith(place->folder.path().toLocal8Bit()), QStringList());
}

void TestSideBySide::killedProgramLeavesNoBench()
{
    Receivers receivers(2);
    receivers.silence(0);
    receivers.silence(1);
    QProcess process;
    startSilent(&process, receivers);
    process.kill();
    QVERIFY(process.waitForFinished());
    QTRY_COMPARE_WITH_TIMEOUT(processesWith(place->folder.path().toLocal8Bit()), QStringList(),
                              kLongestRun);
}

void TestSideBySide::commonStatusIsTheStatus()
{
    const Outcome outcome =
        place->run({"--uart", place->path("none0"), "--uart", place->path("none1")});
    QCOMPARE(outcome.status, 3);
    for (const char *name : {"none0", "none1"})
        QVERIFY2(outcome.output.contains("--uart: " + place->path(name).toUtf8()
                                         + " is not there; plug the adapter in, or name another "
                                           "device\n"),
                 outcome.output.constData());
    QVERIFY(!QFile::exists(place->path("run-none0.log")));
}

// Every kind and every key of it stands in its row of docs/flash.md.
void TestSideBySide::documentListsWhatIsTold()
{
    const Receivers receivers(2);
    const auto fault = [](const char *text) {
        QString error;
        return *bench::Fault::fromJson(QJsonDocument::fromJson(text).object(), &error);
    };
    receivers.all.at(0)->setFaults({fault(R"({"kind": "nack", "image": 1, "packet": 1})")});
    receivers.all.at(1)->setFaults({fault(R"({"kind": "checksum", "step": "image-sum"})")});
    const QStringList json = {"--format", "json"};
    const QList<QJsonObject> told =
        place->run(receivers.words() + json).events() + place->run(json).events();

    const QByteArray document = contentOf(TESTMODE_SOURCE_DIR "/docs/flash.md");
    const QStringList ofAll = {"kind", "uart", "ms"};
    QSet<QString> kinds;
    for (const QJsonObject &event : told) {
        const QString kind = event.value("kind").toString();
        kinds << kind;
        const int row = document.indexOf("\n| `" + kind.toUtf8() + "` |");
        QVERIFY2(row >= 0, qPrintable(kind));
        const QByteArray words = document.mid(row, document.indexOf('\n', row + 1) - row);
        for (const QString &key : event.keys())
            QVERIFY2(ofAll.contains(key) || words.contains('`' + key.toUtf8() + '`'),
                     qPrintable(kind + '.' + key));
    }
    QCOMPARE(kinds,
             QSet<QString>({"start", "attempt", "phase", "progress", "refused", "operator",
                            "failure", "flash", "result", "summary"}));
}

QTEST_GUILESS_MAIN(TestSideBySide)
#include "test_sidebyside.moc"
