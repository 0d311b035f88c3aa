#include "exchanges.h"
#include "packages.h"
#include "tests/support/unittest.h"
#include "trial.h"

#include "bench/receiver/chip.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using bench::DialogueLine;
using tests::FaultCase;
using tests::Observation;
using tests::Outcome;
using tests::Verdict;

// What the campaign tries, and that its judge would notice.
class TestCampaign : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void exchangesAreThoseOfAGoodUpdate();
    void everyCellComesFirst();
    void randomTrialsFollowFromSeedAndNumber();
    void packagesDifferInEveryByte();
    void verdict_data();
    void verdict();
    void bothLinesBringTheSameOutcome_data();
    void bothLinesBringTheSameOutcome();
};

namespace {

// Of one step, over a whole update.
struct Counted
{
    int bytesIn = 0;
    int bytesOut = 0;
    int statuses = 0;

    bool operator==(const Counted &other) const
    {
        return bytesIn == other.bytesIn && bytesOut == other.bytesOut && statuses == other.statuses;
    }
};

QByteArray jsonOf(const FaultCase &trial)
{
    QByteArray text;
    for (const bench::Fault &fault : trial.faults)
        text += QJsonDocument(fault.toJson()).toJson();
    return text;
}

// A good update of the first package, after which one thing is changed.
Observation goodUpdate()
{
    Observation seen;
    seen.results = 1;
    seen.success = true;
    seen.milliseconds = 2000;
    seen.budget = 20000;
    seen.faultsDone = 1;
    seen.flash = tests::flashWith(tests::campaignPackage(0));
    seen.flashBefore = tests::flashWith(tests::campaignPackage(1));
    return seen;
}

constexpr int kApplication = 0x13000; // in the flash

} // namespace

Q_DECLARE_METATYPE(Outcome)
Q_DECLARE_METATYPE(Observation)

void TestCampaign::exchangesAreThoseOfAGoodUpdate()
{
    tests::Rig rig(false);
    QCOMPARE(tests::outcomeName(rig.run(FaultCase()).outcome), QStringLiteral("untouched"));
    QMap<QString, Counted> spoken;
    const QVector<DialogueLine> lines = rig.chip().dialogue.lines(0);
    for (const DialogueLine &line : lines) {
        Counted &counted = spoken[line.step];
        (line.direction == DialogueLine::ToHost ? counted.bytesOut : counted.bytesIn) +=
            line.length;
        counted.statuses += line.meaning.startsWith(QLatin1String("status ")) ? 1 : 0;
    }

    QMap<QString, Counted> listed;
    const QVector<tests::Exchange> all = tests::exchanges();
    for (const tests::Exchange &exchange : all) {
        Counted &counted = listed[bench::stepName(exchange.step)];
        counted.bytesIn += exchange.bytesIn;
        counted.bytesOut += exchange.bytesOut;
        counted.statuses += exchange.statuses;
    }
    listed.remove(QStringLiteral("packet-repeat")); // of no good update
    // 17 packets; the list has the first, second, middle and last ones only.
    QCOMPARE(listed.take(QStringLiteral("packet")).bytesIn, 12 * 4096);
    // Two updates: the one that was asked for, and the one that proves that all is well.
    QCOMPARE(spoken.take(QStringLiteral("packet")).bytesIn, 2 * 17 * 4096);
    for (auto step = listed.begin(); step != listed.end(); ++step) {
        const Counted twice = {2 * step->bytesIn, 2 * step->bytesOut, 2 * step->statuses};
        QVERIFY2(spoken.value(step.key()) == twice, qPrintable(step.key()));
    }
}

void TestCampaign::everyCellComesFirst()
{
    const QVector<FaultCase> cases = tests::enumeratedCases();
    QSet<QString> cells;
    for (const FaultCase &trial : cases)
        cells << trial.kind + QLatin1Char('/') + trial.phase;
    QSet<QString> ofFirstRound;
    for (int i = 0; i < cells.size(); ++i)
        ofFirstRound << cases.at(i).kind + QLatin1Char('/') + cases.at(i).phase;
    QCOMPARE(ofFirstRound, cells);
    // Faults at a place strike in all 31 phases, those of bytes wherever there are bytes.
    for (const char *kind : {"silence", "reset", "baud", "garbage", "flow-byte"}) {
        for (const QString &phase : tests::phases())
            QVERIFY2(cells.contains(QLatin1String(kind) + QLatin1Char('/') + phase),
                     qPrintable(phase));
    }
    QCOMPARE(tests::phases().size(), 31);
    QVERIFY(!cells.contains(QStringLiteral("drop to-receiver/image-end")));
    QVERIFY(!cells.contains(QStringLiteral("drop to-host/image-start")));
    const auto onTerminal = std::count_if(cases.begin(), cases.end(),
                                          [](const FaultCase &trial) { return trial.onTerminal; });
    QCOMPARE(static_cast<int>(onTerminal), (cases.size() + 12) / 20);
}

void TestCampaign::randomTrialsFollowFromSeedAndNumber()
{
    int different = 0;
    for (int number = 0; number < 100; ++number) {
        const FaultCase trial = tests::randomCase(number, 1);
        QCOMPARE(jsonOf(tests::randomCase(number, 1)), jsonOf(trial));
        QCOMPARE(tests::randomCase(number, 1).seed, trial.seed);
        different += jsonOf(tests::randomCase(number, 2)) == jsonOf(trial) ? 0 : 1;
        for (const bench::Fault &fault : trial.faults) {
            QString error;
            QVERIFY2(bench::Fault::fromJson(fault.toJson(), &error), qPrintable(error));
        }
    }
    QVERIFY(different > 95);
}

void TestCampaign::packagesDifferInEveryByte()
{
    const QVector<tests::FlashImage> one = tests::flashImages(tests::campaignPackage(0));
    const QVector<tests::FlashImage> other = tests::flashImages(tests::campaignPackage(1));
    const int lengths[] = {20480, 16383, 24577, 3096}; // without what fills the last packet up
    for (int image = 0; image < 4; ++image) {
        QCOMPARE(one.at(image).offset, other.at(image).offset);
        QCOMPARE(one.at(image).bytes.size(), other.at(image).bytes.size());
        for (int i = 0; i < lengths[image]; ++i)
            QVERIFY(one.at(image).bytes.at(i) != other.at(image).bytes.at(i));
    }
}

void TestCampaign::verdict_data()
{
    QTest::addColumn<Observation>("seen");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, Outcome outcome, const char *reason, auto change) {
        Observation seen = goodUpdate();
        change(&seen);
        QTest::newRow(name) << seen << outcome << QString::fromLatin1(reason);
    };
    row("success", Outcome::Recovered, "", [](Observation *) {});
    row("failure", Outcome::Failed, "", [](Observation *seen) { seen->success = false; });
    row("success without a fault", Outcome::Untouched, "",
        [](Observation *seen) { seen->faultsDone = 0; });
    row("failure without a fault", Outcome::Wrong, "failed without a fault", [](Observation *seen) {
        seen->success = false;
        seen->faultsDone = 0;
    });
    row("no result", Outcome::Wrong, "0 results", [](Observation *seen) { seen->results = 0; });
    row("two results", Outcome::Wrong, "2 results", [](Observation *seen) { seen->results = 2; });
    row("at the deadline", Outcome::Recovered, "",
        [](Observation *seen) { seen->milliseconds = 20000; });
    row("late", Outcome::Wrong, "took 20001 ms of 20000 ms",
        [](Observation *seen) { seen->milliseconds = 20001; });
    row("beside the images", Outcome::Wrong, "something was written beside the images",
        [](Observation *seen) { seen->flash[0x100000] = 'x'; });
    row("beside the images, as the line said", Outcome::WrongFlash, "written to another address",
        [](Observation *seen) {
            seen->flash[0x100000] = 'x';
            seen->addressMeddledWith = true;
        });
    row("beside the images, and a failure", Outcome::Failed, "", [](Observation *seen) {
        seen->flash[0x100000] = 'x';
        seen->addressMeddledWith = true;
        seen->success = false;
    });
    row("drawn for ever", Outcome::Endless, "", [](Observation *seen) {
        seen->endless = true;
        seen->drawnForEver = true;
        seen->success = false;
        seen->milliseconds = 900001;
    });
    row("stopped for ever", Outcome::Endless, "", [](Observation *seen) {
        seen->endless = true;
        seen->senderStopped = true;
        seen->success = false;
    });
    row("does not end", Outcome::Wrong, "does not end", [](Observation *seen) {
        seen->endless = true;
        seen->success = false;
    });
    row("another order", Outcome::WrongFlash, "not visible to a byte sum", [](Observation *seen) {
        std::reverse(seen->flash.begin() + kApplication, seen->flash.begin() + kApplication + 9);
    });
    row("another byte", Outcome::Wrong, "success, though the sums differ",
        [](Observation *seen) { seen->flash[kApplication] = '\xEE'; });
    row("another byte behind another answer", Outcome::WrongFlash,
        "another answer in place of the sum's", [](Observation *seen) {
            seen->flash[kApplication] = '\xEE';
            seen->answersMeddledWith = true;
        });
    const auto leave = [](Observation *seen, int sectors) {
        const int bytes = sectors * 4096;
        seen->flash.replace(kApplication, bytes, seen->flashBefore.mid(kApplication, bytes));
    };
    row("not written", Outcome::WrongFlash, "acknowledged and not written",
        [leave](Observation *seen) {
            leave(seen, 1);
            seen->packetsLost = 1;
        });
    row("more is not written", Outcome::Wrong, "success, though the sums differ",
        [leave](Observation *seen) {
            leave(seen, 2);
            seen->packetsLost = 1;
        });
    row("the older package", Outcome::Wrong, "success, though the sums differ",
        [](Observation *seen) { seen->flash = seen->flashBefore; });
    row("failure with any flash", Outcome::Failed, "", [](Observation *seen) {
        seen->success = false;
        seen->flash[kApplication] = '\xEE';
    });
}

void TestCampaign::verdict()
{
    QFETCH(Observation, seen);
    const Verdict verdict = tests::judge(seen, tests::campaignPackage(0));
    QTEST(verdict.reason, "reason");
    QTEST(verdict.outcome, "outcome");
}

void TestCampaign::bothLinesBringTheSameOutcome_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("outcome");
    const auto row = [](const char *name, const char *faults, const char *outcome) {
        QTest::newRow(name) << '[' + QByteArray(faults) + ']' << QString::fromLatin1(outcome);
    };
    row("silence", R"({"kind":"silence","step":"handshake"})", "failed");
    row("silence at the end", R"({"kind":"silence","step":"finish"})", "recovered");
    row("noise before an image", R"({"kind":"garbage","step":"image-start","image":2,"value":600})",
        "recovered");
    row("as many bytes as a read leaves",
        R"({"kind":"garbage","step":"packet","image":3,"packet":2,"value":36})", "failed");
    row("a byte lost", R"({"kind":"drop","step":"packet","image":1,"packet":3,"index":2048})",
        "failed");
    row("an answer late, but not too late",
        R"({"kind":"late","step":"packet","image":1,"index":1,"value":250,"direction":"to-host"})",
        "recovered");
    row("an answer too late",
        R"({"kind":"late","step":"packet","image":1,"index":1,"value":700,"direction":"to-host"})",
        "failed");
    row("refused three times",
        R"({"kind":"nack","step":"packet","image":3,"packet":7,"value":3064,"times":3})",
        "recovered");
    row("refused four times",
        R"({"kind":"nack","step":"packet","image":3,"packet":7,"value":3064,"times":4})", "failed");
    row("drawn for ever",
        R"({"kind":"nack","step":"packet","image":2,"packet":1,"value":7,"times":"always"})",
        "endless");
    row("stopped for ever", R"({"kind":"flow-byte","step":"image-start","image":1})", "endless");
    row("stopped for a while", R"({"kind":"flow-byte","step":"load-stage-2","resume_ms":700})",
        "recovered");
    row("not written", R"({"kind":"no-write","step":"packet","image":2,"packet":2})",
        "wrong-flash");
    row("another order", R"({"kind":"swap","step":"packet","image":4,"packet":1,"index":7})",
        "wrong-flash");
    row("another address", R"({"kind":"flip","step":"download","image":4,"index":2,"value":1})",
        "wrong-flash");
    // The byte that says that all packets are written comes twice, and is taken for the sum's
    // answer.
    row("a byte changed, and an answer twice",
        R"({"kind":"flip","step":"packet","image":4,"packet":1,"index":7},)"
        R"({"kind":"repeat","step":"image-end","image":4})",
        "wrong-flash");
    row("no such packet", R"({"kind":"drop","step":"packet","image":4,"packet":2})", "untouched");
}

void TestCampaign::bothLinesBringTheSameOutcome()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, outcome);
    FaultCase trial;
    const QJsonArray list = QJsonDocument::fromJson(faults).array();
    for (const QJsonValue &fault : list) {
        QString error;
        const auto read = bench::Fault::fromJson(fault.toObject(), &error);
        QVERIFY2(read, qPrintable(error));
        trial.faults << *read;
    }
    QVERIFY(!trial.faults.isEmpty());
    for (const bool onTerminal : {false, true}) {
        tests::Rig rig(onTerminal);
        const Verdict verdict = rig.run(trial);
        QVERIFY2(verdict.outcome != Outcome::Wrong, qPrintable(verdict.reason));
        QCOMPARE(tests::outcomeName(verdict.outcome), outcome);
    }
}

TESTMODE_TEST_MAIN(TestCampaign)
#include "test_campaign.moc"
