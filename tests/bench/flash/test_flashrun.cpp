#include "flashprogram.h"

#include <QJsonArray>

using namespace flashprogram;

namespace {

const QStringList kImages = {"bootloader.bin", "partition_table.bin", "gnss_demo.bin",
                             "gnss_config.bin"};

// Each reply comes late, but not too late: there is time to tell the bench to end.
const QByteArray kSlowPackets = R"({"kind": "late", "direction": "to-host", "step": "packet",
                                    "index": 1, "value": 200, "times": "always"})";

} // namespace

// --flash as its user meets it: a receiver updated, and told how it went.
class TestFlashRun : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void goodUpdateEndsWithZero();
    void jsonTellsThePhasesInOrder();
    void progressNeverFallsAndEndsAtAll();
    void wholeTraceIsInTheLog();
    void failedStepIsToldInWords();
    void nextAttemptBeginsAtTheReset();
    void boxOfThePageIsAnsweredAndTold();
    void updateThatIsWritingIsFinishedWhenToldToEnd();
    void silentReceiverIsLeftWhenToldToEnd();
    void updateGoesOnThoughNobodyReads();
    void wrongWordsAreOneLineAndAStatus_data();
    void wrongWordsAreOneLineAndAStatus();

private:
    QString path(const QString &name) const { return place->path(name); }
    Outcome flash(const QStringList &more = {}) { return place->run(more); }
    QString unitWith(const QByteArray &faults);

    QScopedPointer<Workplace> place;
};

void TestFlashRun::init()
{
    place.reset(new Workplace);
}

// A file for --unit with faults of the receiver.
QString TestFlashRun::unitWith(const QByteArray &faults)
{
    makeFile(path("unit.json"),
             "{\"receiver\": {\"line_rate\": false, \"faults\": [" + faults + "]}}");
    return path("unit.json");
}

void TestFlashRun::goodUpdateEndsWithZero()
{
    const Outcome outcome = flash();
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY2(text.contains("the receiver's flash equals the files, byte for byte\n"),
             outcome.output.constData());
    QVERIFY2(QRegularExpression(" s  succeeded( in attempt \\d)?\n$").match(text).hasMatch(),
             outcome.output.constData());
    QVERIFY2(!text.contains('\033') && !text.contains('\r'), outcome.output.constData());
}

void TestFlashRun::jsonTellsThePhasesInOrder()
{
    const Outcome outcome = flash({"--format", "json"});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
    QStringList phases;
    for (const QJsonObject &event : with("kind", "phase", outcome.lastAttempt()))
        phases << event.value("phase").toString();
    QCOMPARE(phases,
             QStringList({"open", "reset", "sync", "identify", "watchdog", "load-stage-1",
                          "greet-stage-1", "check-line", "load-stage-2", "start-stage-2",
                          "prepare-stage-2", "write", "write", "write", "write", "end"}));
    QCOMPARE(outcome.events().first().value("kind").toString(), QString("start"));
    QCOMPARE(outcome.events().first().value("log").toString(), path("run.log"));
    QCOMPARE(outcome.events().last().value("kind").toString(), QString("result"));
    QCOMPARE(outcome.events().last().value("ok").toBool(), true);
    const QJsonObject flash = outcome.events("flash").value(0);
    QCOMPARE(flash.value("equal").toBool(), true);
    QCOMPARE(flash.value("images").toArray().size(), 4);
}

void TestFlashRun::progressNeverFallsAndEndsAtAll()
{
    const QList<QJsonObject> progress =
        with("kind", "progress", flash({"--format", "json"}).lastAttempt());
    QStringList images;
    int bytes = 0;
    for (const QJsonObject &event : progress) {
        QVERIFY(event.value("bytes").toInt() > bytes);
        bytes = event.value("bytes").toInt();
        QCOMPARE(event.value("total").toInt(), 4097 + 100 + 4096 + 1);
        images << event.value("image").toString();
    }
    QCOMPARE(bytes, 4097 + 100 + 4096 + 1);
    QCOMPARE(progress.last().value("percent").toInt(), 100);
    images.removeDuplicates();
    QCOMPARE(images, kImages);
}

void TestFlashRun::wholeTraceIsInTheLog()
{
    QCOMPARE(flash().status, 0);
    const QByteArray log = contentOf(path("run.log"));
    for (const char *line : {"hdl_brom_start pass\n", "hdl_connect success\n",
                             "hdl_da_download (bootloader.bin) packet 2/2 1\n",
                             "hdl_download success\n", "-- update completely.\n"})
        QVERIFY2(log.contains(line), line);
}

void TestFlashRun::failedStepIsToldInWords()
{
    const QString unit =
        unitWith(R"({"kind": "nack", "value": 3061, "image": 3, "packet": 1, "times": "always"})");
    const Outcome outcome = flash({"--unit", unit, "--attempts", "3"});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 1);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY2(text.contains("packet 1 of gnss_demo.bin was refused with code 3061 and is sent "
                           "again\n"),
             outcome.output.constData());
    QVERIFY2(text.contains("FAILED: packet 1 of 1 of gnss_demo.bin was not taken; it said: "
                           "refused with code 3061, 4 times\n"),
             outcome.output.constData());
    QVERIFY2(text.contains(" s  NOT flashed in 3 attempts; capsule "), outcome.output.constData());
}

void TestFlashRun::nextAttemptBeginsAtTheReset()
{
    const QString unit = unitWith(R"({"kind": "checksum", "step": "load-stage-1", "times": 1})");
    const Outcome outcome = flash({"--unit", unit, "--format", "json"});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
    const int attempts = outcome.events("attempt").size();
    QVERIFY(attempts >= 2);
    QCOMPARE(outcome.events("failure").size(), attempts - 1);
    QCOMPARE(with("phase", "load-stage-1", outcome.events("failure")).size(), 1);
    QCOMPARE(with("phase", "reset", outcome.events("phase")).size(), attempts);
    QCOMPARE(outcome.events("result").size(), 1);
    QCOMPARE(outcome.events("result").first().value("attempts").toInt(), attempts);
}

void TestFlashRun::boxOfThePageIsAnsweredAndTold()
{
    QVERIFY(QFile::resize(path("package/gnss_demo.bin"), 1LL << 30)); // more than any flash holds
    const Outcome outcome = flash();
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 1);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY2(text.contains("the page says: Not open app_file! (a file of the package cannot be "
                           "read)\n"),
             outcome.output.constData());
    QVERIFY2(text.contains("FAILED: the page cannot read the package\n"),
             outcome.output.constData());
    QVERIFY2(text.contains(" s  NOT flashed; capsule "), outcome.output.constData());
    QVERIFY(!text.contains("opening the port"));
}

void TestFlashRun::updateThatIsWritingIsFinishedWhenToldToEnd()
{
    QProcess process;
    process.start(kBench, place->words({"--unit", unitWith(kSlowPackets), "--format", "json"}));
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains("progress"),
                             30000);
    process.terminate();
    Outcome outcome = Workplace::endOf(&process);
    outcome.output.prepend(output);
    QCOMPARE(outcome.errors, QByteArray());
    const int attempts = outcome.events("attempt").size();
    QCOMPARE(outcome.events("stop").size(), 1);
    QCOMPARE(outcome.events("stop").first().value("text").toString(),
             QString("told to end: the update is finished first"));
    QCOMPARE(with("kind", "phase", outcome.lastAttempt()).last().value("phase").toString(),
             QString("end"));
    QCOMPARE(outcome.events("result").first().value("attempts").toInt(), attempts);
    QCOMPARE(outcome.events("result").first().value("ok").toBool(), outcome.status == 0);
}

void TestFlashRun::silentReceiverIsLeftWhenToldToEnd()
{
    makeFile(path("unit.json"), R"({"receiver": {"powered": false}})");
    QProcess process;
    process.start(
        kBench, place->words({"--unit", path("unit.json"), "--format", "json", "--attempts", "3"}));
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains("sync"), 30000);
    process.terminate();
    Outcome outcome = Workplace::endOf(&process);
    outcome.output.prepend(output);
    QCOMPARE(outcome.events("attempt").size(), 1);
    QCOMPARE(outcome.events("stop").first().value("text").toString(),
             QString("told to end: the update is left"));
    QCOMPARE(outcome.events("result").first().value("ok").toBool(), false);
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 1);
}

void TestFlashRun::updateGoesOnThoughNobodyReads()
{
    QProcess process;
    process.start(kBench, place->words({"--format", "json"}));
    QVERIFY(process.waitForReadyRead(30000));
    process.closeReadChannel(QProcess::StandardOutput);
    QCOMPARE(Workplace::endOf(&process).status, 0);
    QVERIFY(contentOf(path("run.log")).contains("hdl_download success\n"));
}

void TestFlashRun::wrongWordsAreOneLineAndAStatus_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("line"); // %1: the test's folder

    QTest::newRow("format") << QStringList{"--flash", "--format", "xml"} << 2
                            << "--format is xml; wanted is text or json";
    for (const char *count : {"0", "-1", "101", "2x", "many"}) {
        QTest::newRow(count)
            << QStringList{"--flash", "--attempts", count} << 2
            << QString("--attempts is %1; wanted is a whole number from 1 to 100").arg(count);
    }
    for (const char *option : {"--attempts", "--format", "--log"}) {
        QTest::newRow(option) << QStringList{"--monitor", "%1/socket", option, "x"} << 2
                              << "--attempts, --format and --log need --flash";
    }
    QTest::newRow("with a tour") << QStringList{"--flash", "--tour", "%1/tour"} << 2
                                 << "--flash and --tour exclude each other; choose one";
    QTest::newRow("several by hand") << QStringList{"--uart", "/dev/a", "--uart", "/dev/b"} << 2
                                     << "--uart is given twice; only --flash takes several";
    QTest::newRow("the same twice")
        << QStringList{"--flash", "--uart", "/dev/a", "--uart", "/dev/a"} << 2
        << "--uart names /dev/a twice; name each device once";
    QTest::newRow("several on one reset line")
        << QStringList{"--flash", "--uart", "/dev/a", "--uart", "/dev/b", "--reset", "gpio:0:3"}
        << 2 << "--reset names one GPIO line for several receivers; name one --uart";
    QTest::newRow("several on one socket")
        << QStringList{"--flash", "--monitor", "%1/socket", "--uart", "/dev/a", "--uart", "/dev/b"}
        << 2 << "--monitor is for one bench; name one --uart";
    QTest::newRow("log is a folder")
        << QStringList{"--flash", "--log", "%1"} << 3 << "--log: %1 is no file; name another";
    QTest::newRow("log below a file")
        << QStringList{"--flash", "--log", "%1/package/gnss_demo.bin/log"} << 3
        << "--log: %1/package/gnss_demo.bin/log cannot be written (Not a directory); name "
           "another file";
    QTest::newRow("log is the system's")
        << QStringList{"--flash", "--log", "/proc/log"} << 3
        << "--log: /proc/log is the system's; name a file of your own";
    QTest::newRow("no package") << QStringList{
        "--flash", "--package",
        "%1/none"} << 3 << "--package: %1/none is no folder; name a folder with an update package";
    QTest::newRow("no device")
        << QStringList{"--flash", "--uart", "%1/none"} << 3
        << "--uart: %1/none is not there; plug the adapter in, or name another device";
}

void TestFlashRun::wrongWordsAreOneLineAndAStatus()
{
    QFETCH(QStringList, words);
    QFETCH(QString, line);
    const QString folder = place->folder.path();
    QProcess process;
    process.start(kBench, words.replaceInStrings("%1", folder));
    const Outcome outcome = Workplace::endOf(&process);
    QTEST(outcome.status, "status");
    QCOMPARE(QString::fromUtf8(outcome.errors),
             "testmode-bench: " + line.replace("%1", folder) + "\n");
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{"package"});
}

QTEST_GUILESS_MAIN(TestFlashRun)
#include "test_flashrun.moc"
