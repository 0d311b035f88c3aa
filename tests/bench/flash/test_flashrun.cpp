#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString kBench = QStringLiteral(TESTMODE_BENCH);

// A run that ends well takes about a second at full speed.
constexpr int kLongestRun = 60000; // milliseconds

const QStringList kImages = {"bootloader.bin", "partition_table.bin", "gnss_demo.bin",
                             "gnss_config.bin"};

// A package of one packet an image, so that a run is short.
const QMap<QString, int> kSizes = {{"bootloader.bin", 4097},
                                   {"partition_table.bin", 100},
                                   {"gnss_demo.bin", 4096},
                                   {"gnss_config.bin", 1}};

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;

    QList<QJsonObject> events() const
    {
        QList<QJsonObject> list;
        for (const QByteArray &line : output.trimmed().split('\n'))
            list << QJsonDocument::fromJson(line).object();
        return list;
    }
    QList<QJsonObject> events(const QString &kind) const
    {
        QList<QJsonObject> list;
        for (const QJsonObject &event : events()) {
            if (event.value("kind") == kind)
                list << event;
        }
        return list;
    }
};

void makeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
    void secondAttemptBeginsAtTheReset();

private:
    QString path(const QString &name) const { return folder->filePath(name); }
    QStringList words(const QStringList &more = {}) const;
    Outcome flash(const QStringList &more = {});
    QString unitWith(const QByteArray &faults);

    QScopedPointer<QTemporaryDir> folder;
};

void TestFlashRun::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
    QVERIFY(QDir(folder->path()).mkdir("package"));
    makeFile(path("package/flash_download.cfg"), "any");
    for (auto size = kSizes.begin(); size != kSizes.end(); ++size)
        makeFile(path("package/" + size.key()), QByteArray(size.value(), 'x'));
}

QStringList TestFlashRun::words(const QStringList &more) const
{
    return QStringList{"--flash",       "--full-speed", "--package",
                       path("package"), "--log",        path("log")}
    + more;
}

Outcome TestFlashRun::flash(const QStringList &more)
{
    QProcess process;
    process.start(kBench, words(more));
    Outcome outcome;
    if (process.waitForFinished(kLongestRun) && process.exitStatus() == QProcess::NormalExit)
        outcome.status = process.exitCode();
    outcome.output = process.readAllStandardOutput();
    outcome.errors = process.readAllStandardError();
    return outcome;
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
    QVERIFY2(text.endsWith(" s  succeeded\n"), outcome.output.constData());
    QVERIFY2(!text.contains('\033') && !text.contains('\r'), outcome.output.constData());
}

void TestFlashRun::jsonTellsThePhasesInOrder()
{
    const Outcome outcome = flash({"--format", "json"});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
    QStringList phases;
    for (const QJsonObject &event : outcome.events("phase"))
        phases << event.value("phase").toString();
    QCOMPARE(
        phases,
        QStringList({"package", "open", "reset", "sync", "identify", "watchdog", "load-stage-1",
                     "greet-stage-1", "check-line", "load-stage-2", "start-stage-2",
                     "prepare-stage-2", "write", "write", "write", "write", "end"}));
    QCOMPARE(outcome.events().first().value("kind").toString(), QString("start"));
    QCOMPARE(outcome.events().first().value("log").toString(), path("log"));
    QCOMPARE(outcome.events().last().value("kind").toString(), QString("result"));
    QCOMPARE(outcome.events().last().value("ok").toBool(), true);
    const QJsonObject flash = outcome.events("flash").value(0);
    QCOMPARE(flash.value("equal").toBool(), true);
    QCOMPARE(flash.value("images").toArray().size(), 4);
}

void TestFlashRun::progressNeverFallsAndEndsAtAll()
{
    const QList<QJsonObject> progress = flash({"--format", "json"}).events("progress");
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
    const QByteArray log = contentOf(path("log"));
    for (const char *line : {"hdl_brom_start pass\n", "hdl_connect success\n",
                             "hdl_da_download (bootloader.bin) packet 2/2 1\n",
                             "hdl_download success\n", "-- update completely.\n"})
        QVERIFY2(log.contains(line), line);
}

void TestFlashRun::failedStepIsToldInWords()
{
    const QString unit =
        unitWith(R"({"kind": "nack", "value": 3061, "image": 3, "packet": 1, "times": 4})");
    const Outcome outcome = flash({"--unit", unit});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 1);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY2(text.contains("packet 1 of gnss_demo.bin was refused with code 3061 and is sent "
                           "again\n"),
             outcome.output.constData());
    QVERIFY2(text.contains("FAILED: packet 1 of 1 of gnss_demo.bin was not taken; it said: "
                           "refused with code 3061, 4 times\n"),
             outcome.output.constData());
    QVERIFY2(text.endsWith(" s  NOT flashed\n"), outcome.output.constData());
}

void TestFlashRun::secondAttemptBeginsAtTheReset()
{
    const QString unit = unitWith(R"({"kind": "checksum", "step": "load-stage-1", "times": 1})");
    const Outcome outcome = flash({"--unit", unit, "--attempts", "2", "--format", "json"});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.events("attempt").size(), 2);
    QCOMPARE(outcome.events("failure").size(), 1);
    QCOMPARE(outcome.events("failure").first().value("phase").toString(), QString("load-stage-1"));
    int resets = 0;
    for (const QJsonObject &event : outcome.events("phase"))
        resets += event.value("phase") == "reset" ? 1 : 0;
    QCOMPARE(resets, 2);
    QCOMPARE(outcome.events("result").size(), 1);
    QCOMPARE(outcome.events("result").first().value("attempts").toInt(), 2);
}

QTEST_GUILESS_MAIN(TestFlashRun)
#include "test_flashrun.moc"
