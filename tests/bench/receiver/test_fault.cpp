#include "bench/receiver/fault.h"
#include "tests/support/unittest.h"

#include <QFile>
#include <QJsonDocument>

using bench::Fault;

// Faults as JSON, and the closed lists of names that scripts use.
class TestFault : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void namesAreClosedLists();
    void theGuideNamesThemAllAndItsExamplesAreFaults();
    void readsEveryKey();
    void leavesOutWhatIsUsual();
    void writesWhatItReads_data();
    void writesWhatItReads();
    void refusesWithTheKeysName_data();
    void refusesWithTheKeysName();
};

namespace {

QJsonObject objectOf(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

void TestFault::namesAreClosedLists()
{
    QCOMPARE(Fault::kindNames().join(' '),
             QStringLiteral("silence reset baud garbage flow-byte status checksum acknowledge nack "
                            "no-write repeat drop double flip late swap"));
    QCOMPARE(bench::stepNames().join(' '),
             QStringLiteral("command sync read-16 read-32 write-16 write-32 configuration "
                            "load-stage-1 stage-1-greeting stage-1-announce stage-1-confirm "
                            "stage-1-switch line-check stage-1-ready stage-1-first stage-1-second "
                            "load-stage-2 jump handshake logging power-key flash-id parameters "
                            "image-start download packet packet-repeat image-end image-sum "
                            "disconnect finish watchdog"));
    QCOMPARE(bench::phaseNames().join(' '),
             QStringLiteral("off application reset boot-rom boot-rom-commands stage-1 "
                            "stage-1-download-rate stage-2-handshake stage-2-sync stage-2-ready "
                            "stage-2-writing finished watchdog silent"));
    const QStringList steps = bench::stepNames();
    for (const QString &name : steps)
        QCOMPARE(bench::stepName(*bench::stepFromName(name)), name);
    QVERIFY(!bench::stepFromName(QStringLiteral("no step")));
}

void TestFault::theGuideNamesThemAllAndItsExamplesAreFaults()
{
    QFile guide(QFINDTESTDATA("../../../docs/receiver.md"));
    QVERIFY(guide.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(guide.readAll());
    for (const QString &name : Fault::kindNames() + bench::stepNames() + bench::phaseNames())
        QVERIFY2(text.contains('`' + name + '`'), qPrintable(name));

    int examples = 0;
    const QStringList lines = text.split('\n');
    for (const QString &line : lines) {
        if (!line.startsWith(QStringLiteral("{\"kind\"")))
            continue;
        QString error;
        QVERIFY2(Fault::fromJson(objectOf(line.toUtf8()), &error), qPrintable(error + line));
        ++examples;
    }
    QCOMPARE(examples, 4);
}

void TestFault::readsEveryKey()
{
    QString error;
    const auto fault = Fault::fromJson(
        objectOf(R"({"kind":"flip","step":"packet","count":2,"index":17,"image":3,"packet":4,
                     "value":129,"direction":"to-host","times":"always","probability":0.25})"),
        &error);
    QVERIFY2(fault.has_value(), qPrintable(error));
    QCOMPARE(fault->kind, Fault::Kind::Flip);
    QCOMPARE(fault->step, std::make_optional(bench::ReceiverStep::Packet));
    QCOMPARE(fault->count, 2);
    QCOMPARE(fault->index, 17);
    QCOMPARE(fault->image, 3);
    QCOMPARE(fault->packet, 4);
    QCOMPARE(fault->value, std::make_optional(129U));
    QCOMPARE(fault->direction, Fault::Direction::ToHost);
    QCOMPARE(fault->times, 0);
    QCOMPARE(fault->probability, 0.25);
}

void TestFault::leavesOutWhatIsUsual()
{
    QString error;
    const auto fault = Fault::fromJson(objectOf(R"({"kind":"silence"})"), &error);
    QVERIFY2(fault.has_value(), qPrintable(error));
    QVERIFY(!fault->step);
    QVERIFY(!fault->value);
    QCOMPARE(fault->index, -1);
    QCOMPARE(fault->times, 1);
    QCOMPARE(fault->probability, 1.0);
    QCOMPARE(fault->resumeMilliseconds, 0);
}

void TestFault::writesWhatItReads_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("the least") << QByteArray(R"({"kind":"silence","times":1})");
    QTest::newRow("a status") << QByteArray(
        R"({"kind":"status","step":"read-16","count":3,"index":1,"value":4096,)"
        R"("times":2})");
    QTest::newRow("a packet") << QByteArray(
        R"({"kind":"nack","image":2,"packet":7,"value":3065,"times":"always"})");
    QTest::newRow("a byte") << QByteArray(
        R"({"kind":"drop","direction":"to-host","times":1,"probability":0.5})");
    QTest::newRow("a large sum") << QByteArray(
        R"({"kind":"checksum","step":"image-sum","value":4294967295,"times":1})");
    QTest::newRow("flow control") << QByteArray(
        R"({"kind":"flow-byte","value":19,"resume_ms":20,"times":1})");
}

void TestFault::writesWhatItReads()
{
    QFETCH(QByteArray, json);
    QString error;
    const auto fault = Fault::fromJson(objectOf(json), &error);
    QVERIFY2(fault.has_value(), qPrintable(error));
    QCOMPARE(fault->toJson(), objectOf(json));
}

void TestFault::refusesWithTheKeysName_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const char *json, const char *error) {
        QTest::newRow(name) << QByteArray(json) << QString::fromLatin1(error);
    };
    const QString kinds = Fault::kindNames().join(QStringLiteral(", "));
    row("no kind", "{}", qPrintable("fault key \"kind\": must be one of " + kinds));
    row("another kind", R"({"kind":"fire"})",
        qPrintable("fault key \"kind\": must be one of " + kinds));
    row("kind no text", R"({"kind":1})", qPrintable("fault key \"kind\": must be one of " + kinds));
    row("unknown key", R"({"kind":"silence","colour":1})", "fault key \"colour\": is not known");
    row("unknown step", R"({"kind":"silence","step":"dance"})",
        qPrintable("fault key \"step\": must be one of "
                   + bench::stepNames().join(QStringLiteral(", "))));
    row("count 0", R"({"kind":"silence","count":0})",
        "fault key \"count\": must be a whole number from 1 to 1000000000");
    row("count no number", R"({"kind":"silence","count":"1"})",
        "fault key \"count\": must be a whole number from 1 to 1000000000");
    row("half an index", R"({"kind":"silence","index":1.5})",
        "fault key \"index\": must be a whole number from 0 to 1000000000");
    row("index below 0", R"({"kind":"silence","index":-1})",
        "fault key \"index\": must be a whole number from 0 to 1000000000");
    row("image 0", R"({"kind":"nack","image":0})",
        "fault key \"image\": must be a whole number from 1 to 1000000000");
    row("packet 0", R"({"kind":"nack","packet":0})",
        "fault key \"packet\": must be a whole number from 1 to 1000000000");
    row("value not taken", R"({"kind":"silence","value":1})",
        "fault key \"value\": a fault of kind silence takes none");
    row("status too large", R"({"kind":"status","value":65536})",
        "fault key \"value\": must be a whole number from 0 to 65535");
    row("byte too large", R"({"kind":"acknowledge","value":256})",
        "fault key \"value\": must be a whole number from 0 to 255");
    row("mask without a bit", R"({"kind":"flip","value":0})",
        "fault key \"value\": must be a whole number from 1 to 255");
    row("between XON and XOFF", R"({"kind":"flow-byte","value":18})",
        "fault key \"value\": must be 17 or 19");
    row("resume of an XON", R"({"kind":"flow-byte","value":17,"resume_ms":5})",
        "fault key \"resume_ms\": is for an XOFF byte");
    row("resume of another kind", R"({"kind":"reset","resume_ms":5})",
        "fault key \"resume_ms\": is for an XOFF byte");
    row("direction of an answer", R"({"kind":"status","direction":"to-host"})",
        "fault key \"direction\": is for faults of a byte");
    row("unknown direction", R"({"kind":"drop","direction":"up"})",
        "fault key \"direction\": must be one of to-receiver, to-host");
    row("times 0", R"({"kind":"drop","times":0})",
        "fault key \"times\": must be a whole number from 1 to 1000000000");
    row("times in words", R"({"kind":"drop","times":"often"})",
        "fault key \"times\": must be a whole number from 1 to 1000000000");
    row("more than certain", R"({"kind":"drop","probability":1.01})",
        "fault key \"probability\": must be a number from 0 to 1");
}

void TestFault::refusesWithTheKeysName()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    QString said;
    QVERIFY(!Fault::fromJson(objectOf(json), &said));
    QCOMPARE(said, error);
}

TESTMODE_TEST_MAIN(TestFault)
#include "test_fault.moc"
