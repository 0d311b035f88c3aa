#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/receivermethods.h"
#include "bench/monitor/receiverpaths.h"
#include "bench/receiver/receiver.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"
#include "tests/bench/receiver/rawhost.h"

#include <QCryptographicHash>
#include <QTimer>

using bench::unit;
using tests::json;
using tests::Pending;

// The simulated receiver through the calls and in the unit's document.
class TestReceiverMethods : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void stateTellsWhereTheDialogueStands();
    void resetPulsesOrHoldsTheLine();
    void setChangesWhatIsGiven();
    void setRefuses_data();
    void setRefuses();
    void settingsAreInTheDocument();

    void faultsAreSetListedAndCleared();
    void faultThatStruckIsCounted();
    void faultsRefuse_data();
    void faultsRefuse();
    void refusedFaultsLeaveThoseBefore();
    void faultsAreInTheDocument();
    void documentRefusesFaults_data();
    void documentRefusesFaults();

    void dialogueIsALineOfWordsAFrame();
    void dialogueTellsWhatIsGone();
    void longDialogueComesInPieces();
    void flashIsReadWithItsSum();
    void flashRefuses_data();
    void flashRefuses();
    void mapTellsWhoWroteWhat();
    void mapAndContentTellWhatDiffersFromAPackage();
    void flashIsSavedErasedAndLoaded();
    void flashFilesThatDoNotServeAreRefused();

    void waitAnswersAtOnceInThePhase();
    void waitAnswersWhenThePhaseComes();
    void waitSeesAPhaseThatIsOverAtOnce();
    void waitEndsWithTimeout();
    void waitForAPhaseThatIsNone();

    void eventsTellPhasesAndAnomalies();
    void eventsTellAllThatHappensOnTheLine();
    void withoutAReceiverAllFail();

private:
    QJsonObject result(const QString &method, const QByteArray &params = "{}")
    {
        return tests::resultOf(dispatcher.get(), method, params);
    }
    QString error(const QString &method, const QByteArray &params = "{}")
    {
        return tests::errorOf(dispatcher.get(), method, params);
    }
    void resetReceiver()
    {
        receiver->setReset(true);
        receiver->setReset(false);
    }

    std::unique_ptr<bench::Receiver> receiver;
    std::unique_ptr<bench::UnitDocument> document;
    std::unique_ptr<bench::Dispatcher> dispatcher;
};

void TestReceiverMethods::init()
{
    UnitTest::init();
    receiver = std::make_unique<bench::Receiver>();
    QString trouble;
    QVERIFY2(!receiver->open(&trouble).isEmpty(), qPrintable(trouble));
    QTRY_COMPARE(receiver->state().phase, QString("application"));
    document = std::make_unique<bench::UnitDocument>(bench::pathsOf(&unit()));
    bench::addReceiverPaths(document.get(), receiver.get());
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::addReceiverMethods(dispatcher.get(), document.get(), receiver.get());
}

void TestReceiverMethods::cleanup()
{
    dispatcher.reset();
    document.reset();
    receiver.reset();
    UnitTest::cleanup();
}

void TestReceiverMethods::stateTellsWhereTheDialogueStands()
{
    QJsonObject state = result("receiver.state");
    QCOMPARE(state.keys(),
             QStringList({"anomalies", "baud", "bytes_in", "bytes_out", "host_baud",
                          "image_bytes_per_second", "images", "packets", "phase", "phases",
                          "resets", "step", "watchdog_resets"}));
    QCOMPARE(state.value("phase"), QJsonValue("application"));
    QCOMPARE(state.value("resets"), QJsonValue(0));
    resetReceiver();
    state = result("receiver.state");
    QCOMPARE(state.value("phase"), QJsonValue("boot-rom"));
    QCOMPARE(state.value("resets"), QJsonValue(1));
    const QJsonObject phase = state.value("phases").toArray().last().toObject();
    QCOMPARE(phase.keys(), QStringList({"began", "milliseconds", "phase"}));
    QCOMPARE(phase.value("phase"), QJsonValue("boot-rom"));
}

void TestReceiverMethods::resetPulsesOrHoldsTheLine()
{
    QCOMPARE(result("receiver.reset"), QJsonObject());
    QCOMPARE(receiver->state().phase, QString("boot-rom"));
    QCOMPARE(receiver->state().resets, 1);
    result("receiver.reset", "{'asserted':true}");
    QCOMPARE(receiver->state().phase, QString("reset"));
    result("receiver.reset", "{'asserted':false}");
    QCOMPARE(receiver->state().phase, QString("boot-rom"));
    QCOMPARE(receiver->state().resets, 2);
}

void TestReceiverMethods::setChangesWhatIsGiven()
{
    QCOMPARE(result("receiver.set",
                    "{'line_rate':false,'download_rate':115200,'hw_code':17,'hw_subcode':65535,"
                    "'flash_id':[1,2,65535],'watchdog_ms':0}"),
             QJsonObject());
    bench::ReceiverSettings settings = receiver->settings();
    QCOMPARE(settings.keepLineRate, false);
    QCOMPARE(settings.downloadRate, 115200);
    QCOMPARE(settings.hwCode, quint16(17));
    QCOMPARE(settings.hwSubcode, quint16(65535));
    QCOMPARE(settings.flashId[2], quint16(65535));
    QCOMPARE(settings.watchdogTime, 0);
    QCOMPARE(settings.powered, true);

    result("receiver.set", "{'powered':false}");
    settings = receiver->settings();
    QCOMPARE(settings.powered, false);
    QCOMPARE(settings.hwCode, quint16(17));
}

void TestReceiverMethods::setRefuses_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("wrong type") << QByteArray("{'line_rate':1}")
                                << "Argument: line_rate is a number, wanted is type boolean";
    QTest::newRow("too large")
        << QByteArray("{'powered':false,'hw_code':65536}")
        << "Argument: receiver.hw_code: wanted is a whole number from 0 to 65535";
    QTest::newRow("negative")
        << QByteArray("{'powered':false,'download_rate':-1}")
        << "Argument: receiver.download_rate: wanted is a whole number from 0";
    QTest::newRow("two words")
        << QByteArray("{'powered':false,'flash_id':[1,2]}")
        << "Argument: receiver.flash_id: wanted is a list of three words of 16 bits";
    QTest::newRow("words in text")
        << QByteArray("{'powered':false,'flash_id':[1,2,'3']}")
        << "Argument: receiver.flash_id: wanted is a list of three words of 16 bits";
    QTest::newRow("unknown")
        << QByteArray("{'powered':false,'colour':1}")
        << "Argument: colour is no parameter of receiver.set; they are: powered, reset_on_sync, "
           "line_rate, download_rate, hw_code, hw_subcode, flash_id, watchdog_ms";
}

void TestReceiverMethods::setRefuses()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(error("receiver.set", params), message);
    QCOMPARE(receiver->settings().powered, true);
}

void TestReceiverMethods::settingsAreInTheDocument()
{
    const QJsonObject branch = document->value("receiver")->toObject();
    QCOMPARE(branch,
             json("{'powered':true,'reset_on_sync':false,'line_rate':true,'download_rate':921600,'"
                  "hw_code':11328,"
                  "'hw_subcode':35330,'flash_id':[87,64,22],'watchdog_ms':10000,'seed':0,"
                  "'faults':[]}"));
    QCOMPARE(document->setValue("receiver", json("{'hw_code':5,'powered':false}")).message,
             QString());
    QCOMPARE(receiver->settings().hwCode, quint16(5));
    QCOMPARE(document->value("receiver.powered"), QJsonValue(false));
}

void TestReceiverMethods::faultsAreSetListedAndCleared()
{
    const QJsonObject answer =
        result("receiver.faults",
               "{'set':[{'kind':'drop','step':'packet','packet':3},{'kind':'silence'}],'seed':7}");
    QCOMPARE(answer.value("seed"), QJsonValue(7));
    const QJsonArray faults = answer.value("faults").toArray();
    QCOMPARE(faults.size(), 2);
    QCOMPARE(faults.at(0).toObject(),
             json("{'fault':{'kind':'drop','step':'packet','packet':3,'direction':'to-receiver',"
                  "'times':1},'done':0,'deeds':[],'moments':[]}"));
    QCOMPARE(result("receiver.faults"), answer);
    QCOMPARE(result("receiver.faults", "{'clear':true}"), json("{'seed':7,'faults':[]}"));
    QVERIFY(receiver->faultReports().isEmpty());
}

void TestReceiverMethods::faultThatStruckIsCounted()
{
    result("receiver.faults", "{'set':[{'kind':'garbage','value':3,'times':'always'}]}");
    resetReceiver();
    const auto done = [this] {
        const QJsonArray faults = result("receiver.faults").value("faults").toArray();
        return faults.at(0).toObject().value("done").toInt();
    };
    QTRY_COMPARE(done(), 1);
    const QJsonObject report = result("receiver.faults").value("faults").toArray().at(0).toObject();
    QCOMPARE(report.value("deeds").toArray().size(), 1);
    // Setting them anew begins the count anew.
    result("receiver.faults", "{'set':[{'kind':'garbage'}]}");
    QCOMPARE(done(), 0);
}

void TestReceiverMethods::faultsRefuse_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("beginning");
    QTest::newRow("no object") << QByteArray("{'set':[{'kind':'drop'},5]}")
                               << "Argument: receiver.faults.1: wanted is an object";
    QTest::newRow("unknown key") << QByteArray("{'set':[{'kind':'drop','when':1}]}")
                                 << "Argument: receiver.faults.0: fault key \"when\"";
    QTest::newRow("unknown kind") << QByteArray("{'set':[{'kind':'melt'}]}")
                                  << "Argument: receiver.faults.0: fault key \"kind\"";
    QTest::newRow("no list") << QByteArray("{'set':{'kind':'drop'}}")
                             << "Argument: set is an object, wanted is type list";
    QTest::newRow("set and clear")
        << QByteArray("{'set':[],'clear':true}") << "Argument: one of set and clear is wanted";
    QTest::newRow("seed") << QByteArray("{'set':[],'seed':-1}")
                          << "Argument: seed is -1, wanted is 0 to 2147483647";
    QTest::newRow("clear") << QByteArray("{'clear':'yes'}")
                           << "Argument: clear is a text, wanted is type boolean";
    QTest::newRow("unknown argument")
        << QByteArray("{'x':1}")
        << "Argument: x is no parameter of receiver.faults; they are: set, clear, seed";
}

void TestReceiverMethods::faultsRefuse()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, beginning);
    const QString message = error("receiver.faults", params);
    QVERIFY2(message.startsWith(beginning), qPrintable(message));
}

void TestReceiverMethods::refusedFaultsLeaveThoseBefore()
{
    result("receiver.faults", "{'set':[{'kind':'silence'}],'seed':3}");
    const QJsonObject before = result("receiver.faults");
    error("receiver.faults", "{'set':[{'kind':'drop'},{'kind':'melt'}],'seed':4}");
    QCOMPARE(result("receiver.faults"), before);
}

void TestReceiverMethods::faultsAreInTheDocument()
{
    const QJsonObject given =
        json("{'receiver':{'seed':9,'faults':[{'kind':'flip','step':'sync','value':4,"
             "'times':'always','probability':0.25}]}}");
    QCOMPARE(document->setValue("", given).message, QString());
    const QJsonObject fault = receiver->faultReports().at(0).fault.toJson();
    QCOMPARE(fault.value("probability"), QJsonValue(0.25));
    QCOMPARE(*document->value("receiver.faults"), QJsonValue(QJsonArray{fault}));
    QCOMPARE(*document->value("receiver.seed"), QJsonValue(9));

    // The whole document, put back, is the same.
    const QJsonValue whole = *document->value("");
    result("receiver.faults", "{'clear':true,'seed':0}");
    QVERIFY(*document->value("") != whole);
    document->setValue("", whole);
    QCOMPARE(*document->value(""), whole);
}

void TestReceiverMethods::documentRefusesFaults_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("beginning");
    QTest::newRow("no list") << QByteArray("{'faults':5}")
                             << "receiver.faults: wanted is a list of faults";
    QTest::newRow("unknown key") << QByteArray("{'faults':[{'kind':'drop','x':1}]}")
                                 << "receiver.faults.0: fault key \"x\"";
    QTest::newRow("seed") << QByteArray("{'seed':1.5}")
                          << "receiver.seed: wanted is a whole number from 0";
    QTest::newRow("unknown setting")
        << QByteArray("{'colour':1}") << "receiver.colour: the unit has no such key";
}

void TestReceiverMethods::documentRefusesFaults()
{
    QFETCH(QByteArray, faults);
    QFETCH(QString, beginning);
    const QString message = document->setValue("receiver", json(faults)).message;
    QVERIFY2(message.startsWith(beginning), qPrintable(message));
}

void TestReceiverMethods::dialogueIsALineOfWordsAFrame()
{
    QFile port(receiver->path());
    resetReceiver();
    const QJsonObject answer = result("receiver.dialogue");
    const QJsonArray lines = answer.value("lines").toArray();
    QVERIFY(!lines.isEmpty());
    QVERIFY2(lines.at(0).toString().contains("event"), qPrintable(lines.at(0).toString()));
    QCOMPARE(answer.value("next"), QJsonValue(lines.size()));
    QCOMPARE(answer.value("more"), QJsonValue(false));
    QCOMPARE(
        result("receiver.dialogue", QJsonDocument(QJsonObject{{"since", lines.size()}}).toJson()),
        QJsonObject(
            {{"lines", QJsonArray()}, {"gone", 0}, {"next", lines.size()}, {"more", false}}));
}

void TestReceiverMethods::dialogueTellsWhatIsGone()
{
    for (int i = 0; i < 10001; ++i) // two lines each
        resetReceiver();
    QCOMPARE(result("receiver.dialogue").value("gone"), QJsonValue(2));
    QCOMPARE(result("receiver.dialogue", "{'since':2}").value("gone"), QJsonValue(0));
}

void TestReceiverMethods::longDialogueComesInPieces()
{
    constexpr int resets = 6000; // two lines each, of some 50 bytes
    for (int i = 0; i < resets; ++i)
        resetReceiver();
    QVector<int> sizes;
    QJsonArray lines;
    int next = 0;
    bool more = true;
    while (more && sizes.size() < 5) {
        const QJsonObject answer =
            result("receiver.dialogue", "{'since':" + QByteArray::number(next) + "}");
        const QJsonArray piece = answer.value("lines").toArray();
        sizes << QJsonDocument(piece).toJson(QJsonDocument::Compact).size();
        for (const QJsonValue &line : piece)
            lines.append(line);
        next = answer.value("next").toInt();
        more = answer.value("more").toBool();
    }
    QCOMPARE(sizes.size(), 2);
    QVERIFY2(sizes.at(0) > 500 * 1024 && sizes.at(0) < 1024 * 1024,
             qPrintable(QString::number(sizes.at(0))));
    QCOMPARE(next, 2 * resets);
    QCOMPARE(lines.size(), 2 * resets);
    for (int i = 0; i < lines.size(); ++i)
        QVERIFY(lines.at(i).toString().startsWith(QString::number(i + 1) + ' '));
}

void TestReceiverMethods::flashIsReadWithItsSum()
{
    const QString sum =
        QCryptographicHash::hash(QByteArray(4, '\xFF'), QCryptographicHash::Sha256).toHex();
    QCOMPARE(result("receiver.flash", "{'address':'0x08000000','length':4}"),
             QJsonObject({{"base64", "/////w=="}, {"sha256", sum}}));
    QCOMPARE(result("receiver.flash", "{'address':134217728,'length':4,'content':false}"),
             QJsonObject({{"sha256", sum}}));
    const QString whole =
        QCryptographicHash::hash(QByteArray(4 * 1024 * 1024, '\xFF'), QCryptographicHash::Sha256)
            .toHex();
    QCOMPARE(result("receiver.flash", "{'address':134217728,'length':4194304,'content':false}")
                 .value("sha256"),
             QJsonValue(whole));
}

void TestReceiverMethods::mapTellsWhoWroteWhat()
{
    result("receiver.set", "{'line_rate':false}");
    tests::RawHost line(receiver->path());
    receiver->pulseReset();
    QVERIFY(line.connectToAgent());
    QVERIFY(line.writeImage(0x08003000, tests::pattern(5000, 1)));
    QVERIFY(line.writeImage(0x08004000, tests::pattern(4096, 2)));
    QCOMPARE(result("receiver.flash.map"),
             json("{'images':[],'sectors':["
                  "{'address':134230016,'image':1,'times':1,'erased':false,'differs':false},"
                  "{'address':134234112,'image':2,'times':2,'erased':false,'differs':false}]}"));
    receiver->pulseReset();
    QCOMPARE(result("receiver.flash.map").value("sectors").toArray().at(1),
             QJsonValue(json("{'address':134234112,'image':0,'times':0,'erased':false,"
                             "'differs':false}")));
}

void TestReceiverMethods::mapAndContentTellWhatDiffersFromAPackage()
{
    const QTemporaryDir folder;
    QFile table(folder.filePath("partition_table.bin"));
    QVERIFY(table.open(QIODevice::WriteOnly));
    table.write("\x01\x02\xFF\x04");
    table.close();
    QByteArray whole(4 * 1024 * 1024, '\xFF');
    whole.replace(0, 2, "\x01\x03");
    QVERIFY(receiver->setFlash(whole));
    const QByteArray package = ",'package':'" + folder.path().toUtf8() + "'";
    const QJsonObject map =
        result("receiver.flash.map", "{'package':'" + folder.path().toUtf8() + "'}");
    QCOMPARE(map.value("sectors"),
             QJsonValue(QJsonArray{json("{'address':134217728,'image':0,'times':0,'erased':false,"
                                        "'differs':true}")}));
    QCOMPARE(map.value("images").toArray().at(1),
             QJsonValue(json("{'file':'partition_table.bin','address':134217728,'bytes':4,"
                             "'equal':false}")));
    const QJsonObject content =
        result("receiver.flash", "{'address':'0x08000001','length':15" + package + "}");
    QCOMPARE(content.value("differences"),
             QJsonValue(QJsonArray{json("{'address':134217729,'flash':3,'package':2}"),
                                   json("{'address':134217731,'flash':255,'package':4}")}));
}

void TestReceiverMethods::flashIsSavedErasedAndLoaded()
{
    const QTemporaryDir folder;
    const QByteArray file = "{'file':'" + folder.filePath("flash.bin").toUtf8() + "'}";
    const QByteArray whole = tests::pattern(4 * 1024 * 1024, 3);
    QVERIFY(receiver->setFlash(whole));
    result("receiver.flash.save", file);
    QSignalSpy written(receiver.get(), &bench::Receiver::flashWritten);
    result("receiver.flash.erase");
    QCOMPARE(receiver->wholeFlash(), QByteArray(4 * 1024 * 1024, '\xFF'));
    result("receiver.flash.load", file);
    QCOMPARE(receiver->wholeFlash(), whole);
    QCOMPARE(written, QList<QVariantList>({{134217728U, 4194304U, 0}, {134217728U, 4194304U, 0}}));
}

void TestReceiverMethods::flashFilesThatDoNotServeAreRefused()
{
    const QTemporaryDir folder;
    QFile small(folder.filePath("small.bin"));
    QVERIFY(small.open(QIODevice::WriteOnly));
    small.write("small");
    small.close();
    const QByteArray before = receiver->wholeFlash();
    QCOMPARE(error("receiver.flash.load", "{'file':'" + small.fileName().toUtf8() + "'}"),
             QString("Argument: %1 is no image of the whole flash, which has 4194304 bytes")
                 .arg(small.fileName()));
    QVERIFY(error("receiver.flash.load", "{'file':'/nowhere/flash.bin'}")
                .startsWith("File: cannot read /nowhere/flash.bin: "));
    QVERIFY(error("receiver.flash.save", "{'file':'/nowhere/flash.bin'}")
                .startsWith("File: cannot write /nowhere/flash.bin: "));
    QCOMPARE(receiver->wholeFlash(), before);
}

void TestReceiverMethods::flashRefuses_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("below") << QByteArray("{'address':'0x07FFFFFF','length':4}")
                           << "Argument: the range leaves the flash, which has 4 MiB at 0x08000000";
    QTest::newRow("beyond")
        << QByteArray("{'address':'0x083FFFFF','length':2}")
        << "Argument: the range leaves the flash, which has 4 MiB at 0x08000000";
    QTest::newRow("too much content")
        << QByteArray("{'address':'0x08000000','length':524289}")
        << "Limit: an answer holds 524288 bytes of flash; content=false gives the SHA-256 of more";
    QTest::newRow("too long") << QByteArray("{'address':'0x08000000','length':4194305}")
                              << "Argument: length is 4194305, wanted is 0 to 4194304";
    QTest::newRow("no address") << QByteArray("{'length':4}") << "Argument: address is missing";
    QTest::newRow("address in words") << QByteArray("{'address':'flash','length':4}")
                                      << "Argument: address is a text, wanted is type address";
    QTest::newRow("unknown")
        << QByteArray("{'address':0,'length':4,'x':1}")
        << "Argument: x is no parameter of receiver.flash; they are: address, length, content, "
           "package";
}

void TestReceiverMethods::flashRefuses()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(error("receiver.flash", params), message);
}

void TestReceiverMethods::waitAnswersAtOnceInThePhase()
{
    const Pending wait(dispatcher.get(), "receiver.wait", "{'phase':'application','timeout_ms':0}");
    QVERIFY(wait.isAnswered());
    QCOMPARE(wait.wait(), json("{'result':{'phase':'application'}}"));
}

void TestReceiverMethods::waitAnswersWhenThePhaseComes()
{
    const Pending wait(dispatcher.get(), "receiver.wait", "{'phase':'boot-rom','timeout_ms':5000}");
    QVERIFY(!wait.isAnswered());
    QTimer::singleShot(50, this, [this] { resetReceiver(); });
    QCOMPARE(wait.wait(), json("{'result':{'phase':'boot-rom'}}"));
}

void TestReceiverMethods::waitSeesAPhaseThatIsOverAtOnce()
{
    const Pending wait(dispatcher.get(), "receiver.wait", "{'phase':'reset','timeout_ms':5000}");
    resetReceiver();
    QCOMPARE(result("receiver.state").value("phase"), QJsonValue("boot-rom"));
    QCOMPARE(wait.wait(), json("{'result':{'phase':'reset'}}"));
}

void TestReceiverMethods::waitEndsWithTimeout()
{
    QCOMPARE(error("receiver.wait", "{'phase':'finished','timeout_ms':40}"),
             QString("Timeout: the receiver is not in finished but in application after 40 ms"));
}

void TestReceiverMethods::waitForAPhaseThatIsNone()
{
    QCOMPARE(error("receiver.wait", "{'phase':'lunch','timeout_ms':40}"),
             QString("NotFound: no phase lunch; there are: off, application, reset, boot-rom, "
                     "boot-rom-commands, stage-1, stage-1-download-rate, stage-2-handshake, "
                     "stage-2-sync, stage-2-ready, stage-2-writing, finished, watchdog, silent"));
}

void TestReceiverMethods::eventsTellPhasesAndAnomalies()
{
    QStringList seen;
    connect(dispatcher.get(), &bench::Dispatcher::eventHappened, dispatcher.get(),
            [&seen](const QString &name, const QJsonObject &params) {
                seen << name + ' ' + params.value("phase").toString()
                        + params.value("text").toString();
            });
    resetReceiver();
    emit receiver->anomalyFound("a byte too much");
    QTRY_VERIFY(seen.contains("receiver.phase boot-rom"));
    QTRY_VERIFY(seen.contains("receiver.anomaly a byte too much"));
}

// A host synchronises, loads the agents and writes two packets: nobody has to ask for any of it.
void TestReceiverMethods::eventsTellAllThatHappensOnTheLine()
{
    QMap<QString, QJsonArray> seen;
    connect(dispatcher.get(), &bench::Dispatcher::eventHappened, dispatcher.get(),
            [&seen](const QString &name, const QJsonObject &params) { seen[name].append(params); });
    result("receiver.set", "{'line_rate':false}");
    result("receiver.faults",
           "{'set':[{'kind':'late','step':'packet','packet':2,'index':0,'value':1}]}");
    tests::RawHost host(receiver->path());
    resetReceiver();
    QVERIFY(host.connectToAgent());
    QVERIFY(host.writeImage(0x08003000, tests::pattern(5000, 1)));
    QTRY_COMPARE_WITH_TIMEOUT(seen["receiver.image"].size(), 2, 20000);

    QJsonArray images = seen["receiver.image"];
    QJsonObject complete = images.last().toObject();
    QVERIFY(complete.take("microseconds").toDouble() > 0);
    QCOMPARE(images.first().toObject(),
             json("{'image':1,'address':134230016,'length':8192,'packets':0,'complete':false,"
                  "'microseconds':0}"));
    QCOMPARE(complete,
             json("{'image':1,'address':134230016,'length':8192,'packets':2,'complete':true}"));
    QCOMPARE(seen["receiver.written"],
             QJsonArray({json("{'address':134230016,'length':4096,'image':1}"),
                         json("{'address':134234112,'length':4096,'image':1}")}));
    QCOMPARE(seen["receiver.baud"].last().toObject(), json("{'baud':921600,'host_baud':921600}"));

    QCOMPARE(seen["receiver.fault"].size(), 1);
    QJsonObject fault = seen["receiver.fault"].first().toObject();
    QVERIFY(fault.take("ms").toDouble() > 0);
    QVERIFY(fault.take("deed").toString().startsWith("packet 2 (image 1, packet 2): "));
    QCOMPARE(fault, json("{'number':0,'done':1}"));

    QTRY_COMPARE_WITH_TIMEOUT(seen["receiver.frame"].size(), receiver->dialogue().size(), 20000);
    const QJsonArray frames = seen["receiver.frame"];
    QCOMPARE(frames, result("receiver.dialogue", "{'entries':true}").value("entries").toArray());
    QJsonObject packet;
    for (const QJsonValue &frame : frames) {
        if (frame.toObject().value("length") == 4096)
            packet = frame.toObject();
    }
    QCOMPARE(packet.keys(),
             QStringList({"baud", "bytes", "direction", "length", "meaning", "ms", "n", "step"}));
    QCOMPARE(packet.value("direction"), QJsonValue("to-receiver"));
    QCOMPARE(packet.value("step"), QJsonValue("packet"));
    QCOMPARE(packet.value("bytes").toString().size(), 64 * 3 - 1);

    result("receiver.set", "{'powered':false}");
    receiver->setFlash(QByteArray(4 * 1024 * 1024, '\0'));
    QTRY_COMPARE(seen["receiver.written"].last().toObject(),
                 json("{'address':134217728,'length':4194304,'image':0}"));
}

void TestReceiverMethods::withoutAReceiverAllFail()
{
    bench::Dispatcher other;
    bench::UnitDocument plain(bench::pathsOf(&unit()));
    bench::addReceiverMethods(&other, &plain, nullptr);
    const QString message = "Unavailable: a real device stands in the receiver's place";
    QCOMPARE(tests::errorOf(&other, "receiver.state"), message);
    QCOMPARE(tests::errorOf(&other, "receiver.reset"), message);
    QCOMPARE(tests::errorOf(&other, "receiver.set"), message);
    QCOMPARE(tests::errorOf(&other, "receiver.faults"), message);
    QCOMPARE(tests::errorOf(&other, "receiver.dialogue"), message);
    QCOMPARE(tests::errorOf(&other, "receiver.flash", "{'address':0,'length':1}"), message);
    QCOMPARE(tests::errorOf(&other, "receiver.wait", "{'phase':'off','timeout_ms':1}"), message);
}

TESTMODE_TEST_MAIN(TestReceiverMethods)
#include "test_receivermethods.moc"
