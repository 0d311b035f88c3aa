#include "tests/bench/flash/flashprogram.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <csignal>

#include <unistd.h>

using namespace flashprogram;

namespace {

const QByteArray kRefused = R"({"kind": "nack", "value": 3061, "image": 3, "packet": 1,
                                "times": "always"})";
const QByteArray kSlowPackets = R"({"kind": "late", "direction": "to-host", "step": "packet",
                                    "index": 1, "value": 200, "times": "always"})";

// The whole proof is 20 repetitions of each kind: TESTMODE_REPLAYS=20.
int replays()
{
    return qMax(1, qEnvironmentVariableIntValue("TESTMODE_REPLAYS"));
}

// SQLite, and no class of the bench's.
class Database
{
public:
    explicit Database(const QString &file)
    {
        database = QSqlDatabase::addDatabase("QSQLITE", file);
        database.setDatabaseName(file);
        if (!database.open())
            qFatal("%s", qPrintable(database.lastError().text()));
    }
    ~Database()
    {
        const QString name = database.connectionName();
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }

    QVariantList column(const QString &statement)
    {
        QSqlQuery query(database);
        if (!query.exec(statement))
            qFatal("%s", qPrintable(query.lastError().text()));
        QVariantList values;
        while (query.next())
            values << query.value(0);
        return values;
    }
    QVariant value(const QString &statement) { return column(statement).value(0); }
    int count(const QString &table) { return value("SELECT count(*) FROM " + table).toInt(); }

private:
    QSqlDatabase database;
};

QString statusOf(const QString &capsule)
{
    return Database(capsule)
        .value("SELECT verdict FROM verdict WHERE subject = 'exit status'")
        .toString();
}

} // namespace

// --capture and --replay as their user meets them.
class TestCapsule : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void goodUpdateIsInIt();
    void goodUpdateIsRepeated();
    void killedBenchLeavesWhatCameBefore();
    void failureLeavesOneByItself();
    void successLeavesNone();
    void fullDiskIsToldAndWhatCameBeforeCanBeRead();
    void whatCannotBeUsedIsOneLineAndAStatus_data();
    void whatCannotBeUsedIsOneLineAndAStatus();
    void capsuleMakesRoomForANewOne();
    void failureIsRepeated_data();
    void failureIsRepeated();
    void plantedDifferenceIsNamed_data();
    void plantedDifferenceIsNamed();

private:
    QString path(const QString &name) const { return place->path(name); }
    QStringList words(const QByteArray &faults, const QStringList &more) const;
    Outcome flash(const QByteArray &faults, const QStringList &more) const;
    Outcome bench(const QStringList &words) const;
    QString capture(const QByteArray &fault);

    QScopedPointer<Workplace> place;
};

void TestCapsule::init()
{
    place.reset(new Workplace);
    QVERIFY(QDir(place->folder.path()).mkdir("state"));
    qputenv("XDG_STATE_HOME", path("state").toLocal8Bit());
}

QStringList TestCapsule::words(const QByteArray &faults, const QStringList &more) const
{
    makeFile(path("unit.json"),
             "{\"receiver\": {\"line_rate\": false, \"seed\": 7, \"faults\": [" + faults + "]}}");
    return QStringList{"--flash", "--full-speed",  "--package", path("package"),
                       "--log",   path("run.log"), "--unit",    path("unit.json")}
    + more;
}

Outcome TestCapsule::flash(const QByteArray &faults, const QStringList &more) const
{
    return bench(words(faults, more));
}

Outcome TestCapsule::bench(const QStringList &words) const
{
    QProcess process;
    process.start(kBench, words);
    return Workplace::endOf(&process);
}

void TestCapsule::goodUpdateIsInIt()
{
    const QString file = path("good.capsule");
    QCOMPARE(place->run({"--capture", file}).status, 0);
    QCOMPARE(QDir(place->folder.path()).entryList({"good.capsule*"}), QStringList("good.capsule"));
    Database capsule(file);
    QCOMPARE(capsule.value("PRAGMA user_version").toInt(), 1);
    QCOMPARE(capsule.value("SELECT value FROM meta WHERE key = 'receiver'").toString(),
             QString("simulated"));
    QVERIFY(capsule.value("SELECT value FROM meta WHERE key = 'arguments'")
                .toString()
                .contains("--full-speed"));
    for (const char *name : {"bootloader.bin", "partition_table.bin", "gnss_demo.bin",
                             "gnss_config.bin", "flash_download.cfg"}) {
        const QString statement = QString("SELECT bytes FROM package WHERE name = '%1'").arg(name);
        QCOMPARE(capsule.value(statement).toByteArray(),
                 contentOf(path(QString("package/") + name)));
    }
    QVERIFY(capsule.value("SELECT value FROM unit WHERE path = ''").toString().contains("gnss"));
    const QVariantList calls = capsule.column("SELECT call FROM input ORDER BY n");
    QVERIFY(calls.contains("window.home") && calls.contains("unit.set")
            && calls.contains("ui.click") && !calls.contains("ui.wait"));
    // A packet whole, and the receiver's last word.
    QCOMPARE(capsule.value("SELECT max(length(bytes)) FROM frame WHERE step = 'packet'").toInt(),
             4096);
    QCOMPARE(capsule.value("SELECT step FROM frame ORDER BY n DESC").toString(), QString("finish"));
    QVERIFY(capsule.column("SELECT line FROM trace").contains("hdl_download success"));
    QVERIFY(capsule.column("SELECT call FROM journal").contains("setGPSResetGPIO"));
    QVERIFY(capsule.column("SELECT name FROM event").contains("receiver.phase"));
    QCOMPARE(capsule.value("SELECT why FROM picture").toString(), QString("end"));
    QVERIFY(capsule.value("SELECT png FROM picture").toByteArray().startsWith("\x89PNG"));
    QCOMPARE(
        capsule.value("SELECT bytes FROM flash WHERE address = 0x083FF000").toByteArray().left(1),
        imageOf(1));
    QCOMPARE(capsule.value("SELECT verdict FROM verdict WHERE subject = 'exit status'").toString(),
             QString("0"));
}

void TestCapsule::goodUpdateIsRepeated()
{
    const QString file = path("good.capsule");
    QCOMPARE(place->run({"--capture", file}).status, 0);
    const Outcome again = bench({"--replay", file});
    QCOMPARE(again.errors, QByteArray());
    QVERIFY2(again.output.contains("update 1: "), again.output.constData());
    QVERIFY2(again.output.endsWith("the same verdict\n"), again.output.constData());
    QCOMPARE(again.status, 0);
}

void TestCapsule::killedBenchLeavesWhatCameBefore()
{
    const QString file = path("killed.capsule");
    QProcess process;
    process.start(kBench, words(kSlowPackets, {"--capture", file, "--format", "json"}));
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains("progress"),
                             60000);
    QTest::qWait(500); // more than what may be lost
    process.kill();    // the program inside goes with it
    QVERIFY(process.waitForFinished());
    QTRY_VERIFY(processesWith(file.toLocal8Bit()).isEmpty());
    {
        Database capsule(file);
        QCOMPARE(capsule.value("PRAGMA integrity_check").toString(), QString("ok"));
        QCOMPARE(capsule.count("package"), 5);
        QVERIFY(capsule.column("SELECT meaning FROM frame").contains("packet written"));
        QVERIFY(
            capsule.count("trace WHERE line LIKE 'hdl_da_download (bootloader.bin) packet 1/2 %'")
            == 1);
        QCOMPARE(capsule.count("verdict"), 0);
    }
    const Outcome again = bench({"--replay", file});
    QVERIFY2(again.output.contains("as far as the capsule goes"), again.output.constData());
    QCOMPARE(again.status, 0);
}

void TestCapsule::failureLeavesOneByItself()
{
    const Outcome outcome = flash(kRefused, {});
    QCOMPARE(outcome.status, 1);
    const QStringList left = QDir(path("state/testmode-bench/capsules")).entryList(QDir::Files);
    QCOMPARE(left.size(), 1);
    const QString last = QString::fromUtf8(outcome.output).trimmed().section('\n', -1);
    QVERIFY2(last.endsWith("NOT flashed; capsule " + path("state/testmode-bench/capsules/")
                           + left.first()),
             outcome.output.constData());
    Database capsule(path("state/testmode-bench/capsules/") + left.first());
    QVERIFY(capsule.count("frame") > 0);
    QVERIFY(capsule.column("SELECT deed FROM fault WHERE deed IS NOT NULL").size() > 0);
}

void TestCapsule::successLeavesNone()
{
    QCOMPARE(place->run().status, 0);
    QCOMPARE(QDir(path("state/testmode-bench/capsules")).entryList(QDir::Files), QStringList());
}

// On a disk of 150 kB.
void TestCapsule::fullDiskIsToldAndWhatCameBeforeCanBeRead()
{
    QVERIFY(QDir(place->folder.path()).mkdir("disk"));
    const QString file = path("disk/full.capsule");
    const QString copy = path("copy.capsule");
    QProcess process;
    const QString command = "\"$@\"; status=$?; cp " + file + " " + copy + "; exit $status";
    process.start("bwrap",
                  QStringList{"--dev-bind", "/", "/", "--size", "150000", "--tmpfs", path("disk"),
                              "sh", "-c", command, "sh", kBench}
                      + place->words({"--capture", file}));
    const Outcome outcome = Workplace::endOf(&process);
    QVERIFY2(outcome.errors.startsWith("testmode-bench: --capture: " + file.toLocal8Bit()
                                       + " takes no more ("),
             outcome.errors.constData());
    QVERIFY2(outcome.errors.endsWith("what was captured before can be read; make room, or name a "
                                     "file elsewhere\n"),
             outcome.errors.constData());
    QCOMPARE(outcome.errors.count('\n'), 1);
    QVERIFY2(outcome.output.contains("the receiver's flash equals the files, byte for byte\n"),
             outcome.output.constData());
    QCOMPARE(outcome.status, 3);
    Database capsule(copy);
    QCOMPARE(capsule.value("PRAGMA integrity_check").toString(), QString("ok"));
    QCOMPARE(capsule.count("package"), 5);
}

void TestCapsule::whatCannotBeUsedIsOneLineAndAStatus_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("line");

    const auto row = [](const char *name, const QStringList &words, int status, const char *line) {
        QTest::newRow(name) << words << status << QByteArray(line);
    };
    row("no such capsule", {"--replay", "FOLDER/none"}, 3,
        "--replay: FOLDER/none is no file; name a capsule");
    row("no capsule", {"--replay", "FOLDER/text"}, 3,
        "--replay: FOLDER/text is no capsule; name a file that --capture has written");
    row("of a later format", {"--replay", "FOLDER/later"}, 3,
        "--replay: FOLDER/later is a capsule of format 2, and this bench reads up to 1; use the "
        "bench that wrote it, or a later one");
    row("damaged", {"--replay", "FOLDER/damaged"}, 3,
        "--replay: FOLDER/damaged is damaged (no such table: meta); name another capsule");
    row("another's file", {"--flash", "--capture", "FOLDER/text"}, 3,
        "--capture: FOLDER/text is there and no capsule; name another file");
    row("no folder", {"--flash", "--capture", "FOLDER/none/file"}, 3,
        "--capture: FOLDER/none is no folder; make it, or name another");
    row("the system's", {"--flash", "--capture", "/proc/file"}, 3,
        "--capture: /proc is the system's; name a folder of your own");
    row("replay of another package", {"--replay", "FOLDER/text", "--package", "FOLDER"}, 2,
        "--replay takes all that a run needs from its capsule; leave the other options out");
}

void TestCapsule::whatCannotBeUsedIsOneLineAndAStatus()
{
    makeFile(path("text"),
             "a text that is long enough to have the head of a database, which has "
             "one hundred bytes and is wanted");
    {
        Database later(path("later"));
        later.column("PRAGMA application_id = 1414349680"); // "TMCp"
        later.column("PRAGMA user_version = 2");
        later.column("CREATE TABLE meta (key TEXT)");
        Database damaged(path("damaged"));
        damaged.column("PRAGMA application_id = 1414349680");
        damaged.column("PRAGMA user_version = 1");
        damaged.column("CREATE TABLE other (key TEXT)");
    }
    QFETCH(QStringList, words);
    QFETCH(QByteArray, line);
    for (QString &word : words)
        word.replace("FOLDER", place->folder.path());
    line.replace("FOLDER", place->folder.path().toLocal8Bit());
    const Outcome outcome = bench(words);
    QCOMPARE(outcome.errors, "testmode-bench: " + line + '\n');
    QCOMPARE(outcome.output, QByteArray());
    QTEST(outcome.status, "status");
}

void TestCapsule::capsuleMakesRoomForANewOne()
{
    const QString file = path("twice.capsule");
    QCOMPARE(flash(kRefused, {"--capture", file}).status, 1);
    QCOMPARE(place->run({"--capture", file}).status, 0);
    Database capsule(file);
    QCOMPARE(capsule.value("SELECT verdict FROM verdict WHERE subject = 'exit status'").toString(),
             QString("0"));
}

// Captures an update under this fault.
QString TestCapsule::capture(const QByteArray &fault)
{
    const QString file = path("failed.capsule");
    const Outcome outcome = flash(fault, {"--capture", file});
    if (outcome.status != 0 && outcome.status != 1)
        qFatal("%s", outcome.errors.constData());
    return file;
}

void TestCapsule::failureIsRepeated_data()
{
    QTest::addColumn<QByteArray>("fault");

    const auto row = [](const char *fault, bool always = false) {
        const QByteArray kind = QByteArray(fault).split('"').value(3);
        if (always || qEnvironmentVariableIsSet("TESTMODE_REPLAYS"))
            QTest::newRow(kind) << QByteArray(fault);
    };
    row(R"({"kind": "silence", "step": "packet", "image": 2, "packet": 1})");
    row(R"({"kind": "reset", "step": "packet", "image": 2, "packet": 1})");
    row(R"({"kind": "baud", "step": "packet", "image": 2, "packet": 1})");
    row(R"({"kind": "garbage", "value": 3, "step": "packet", "image": 2, "packet": 1})");
    row(R"({"kind": "flow-byte", "step": "packet", "image": 2, "packet": 1,
            "resume_ms": 300})");
    row(R"({"kind": "status", "step": "load-stage-1"})", true);
    row(R"({"kind": "checksum", "step": "load-stage-1"})");
    row(R"({"kind": "acknowledge", "step": "image-sum", "image": 1})");
    row(R"({"kind": "nack", "value": 3061, "image": 3, "packet": 1, "times": "always"})", true);
    row(R"({"kind": "no-write", "image": 1, "packet": 2})", true);
    row(R"({"kind": "repeat", "step": "download", "image": 2})");
    row(R"({"kind": "drop", "step": "packet", "image": 1, "packet": 2, "index": 100})", true);
    row(R"({"kind": "double", "step": "packet", "image": 1, "packet": 2, "index": 100})");
    row(R"({"kind": "flip", "step": "packet", "image": 1, "packet": 2, "index": 100})");
    row(R"({"kind": "late", "step": "packet", "image": 1, "packet": 2, "index": 0,
            "direction": "to-host", "value": 200})");
    row(R"({"kind": "swap", "step": "packet", "image": 1, "packet": 2, "index": 100})");
}

void TestCapsule::failureIsRepeated()
{
    QFETCH(QByteArray, fault);
    const QString file = capture(fault);
    {
        Database capsule(file);
        QVERIFY(!capsule.column("SELECT deed FROM fault WHERE deed IS NOT NULL").isEmpty());
    }
    for (int time = 0; time < replays(); ++time) {
        const Outcome again = bench({"--replay", file});
        QVERIFY2(again.status == 0, again.output + again.errors);
        QVERIFY2(again.output.endsWith("the same verdict\n"), again.output.constData());
    }
}

void TestCapsule::plantedDifferenceIsNamed_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("told");

    QTest::newRow("a frame")
        << "UPDATE frame SET meaning = 'planted' WHERE meaning = 'sums equal' AND n = (SELECT "
           "min(n) FROM frame WHERE meaning = 'sums equal')"
        << 0
        << QByteArray("\n  was   to-host 921600 baud image-sum: planted [5a]\n"
                      "  is    to-host 921600 baud image-sum: sums equal [5a]\n");
    QTest::newRow("a byte far back in a packet")
        << "UPDATE frame SET bytes = cast(substr(bytes, 1, 3000) || x'00' || substr(bytes, 3002) "
           "AS BLOB) WHERE n = (SELECT min(n) FROM frame WHERE length(bytes) = 4096)"
        << 0 << QByteArray(" from byte 3000: 00 ");
    QTest::newRow("an entry of the journal")
        << "UPDATE journal SET arguments = '[8]' WHERE call = 'findUpdateFile'" << 0
        << QByteArray("\n  was   McuManager.findUpdateFile[8]\n"
                      "  is    McuManager.findUpdateFile[7]\n");
    QTest::newRow("a fault that was not there")
        << "UPDATE unit SET value = replace(value, '\"faults\":[]', '\"faults\":[{\"kind\":"
           "\"status\",\"step\":\"load-stage-1\"}]') WHERE path = ''"
        << 1
        << QByteArray("another verdict: update 1\n  was   succeeded\n"
                      "  is    failed: ");
    QTest::newRow("another flash")
        << "UPDATE verdict SET verdict = 'SHA-256 00' WHERE subject = 'flash'" << 1
        << QByteArray("another verdict: flash\n  was   SHA-256 00\n  is    SHA-256 ");
    QTest::newRow("a button that is not there")
        << "UPDATE input SET arguments = '{\"object\":\"key_planted\"}' WHERE call = 'ui.click' "
           "AND n = (SELECT min(n) FROM input WHERE call = 'ui.click')"
        << 1 << QByteArray("first difference: input ");
}

void TestCapsule::plantedDifferenceIsNamed()
{
    QString file;
    QTRY_COMPARE_WITH_TIMEOUT(statusOf(file = capture("")), QString("0"), 60000);
    {
        QFETCH(QString, change);
        Database(file).column(change);
    }
    const Outcome again = bench({"--replay", file});
    QFETCH(QByteArray, told);
    QVERIFY2(again.output.contains(told), again.output.constData());
    QVERIFY2(again.output.contains("\n  both  ") || !told.startsWith("\n"),
             again.output.constData());
    QTEST(again.status, "status");
}

QTEST_GUILESS_MAIN(TestCapsule)
#include "test_capsule.moc"
