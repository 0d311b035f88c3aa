#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/logmethods.h"
#include "bench/monitor/unitmethods.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"
#include "bench/unit/usbstate.h"
#include "gpsservice/gpsservice.h"

#include <QSignalSpy>

using bench::journal;
using bench::unit;
using tests::json;

// The unit, its files, its memory and its logs through the calls.
class TestUnitMethods : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void getReadsAValueOrTheWhole();
    void setWritesAValueOrABranch();
    void getAndSetRefuse_data();
    void getAndSetRefuse();

    void emitTellsTheState();
    void emitOfAnUnknownSignal();

    void journalComesInOrder();
    void shellCommandsAreInTheJournalWhole();
    void journalGoesOnWhereItEnded();
    void longJournalComesInPieces();
    void journalTellsWhatIsGone();
    void traceComesWhole();
    void traceGoesOnWhereItEnded();
    void longTraceComesInPieces();
    void traceTellsWhatIsGone();

    void fileIsWrittenReadAndRemoved();
    void fileOfBytes();
    void deviceFileIsRead();
    void filesRefuse_data();
    void filesRefuse();
    void longFileIsRefused();

    void memoryIsWrittenAndRead();
    void memoryRefuses_data();
    void memoryRefuses();
    void memoryThatIsNotThere();

    void eventsTellWhatHappens();
    void changesComeWithTheirValue();
    void callsAreToldBeforeTheyRun();
    void callIsToldWhenItIsOver();
    void shellCommandIsToldWithItsStatus();

private:
    QJsonObject result(const QString &method, const QByteArray &params = "{}")
    {
        return tests::resultOf(dispatcher.get(), method, params);
    }
    // Events from now on, a line each without their time; as long as the dispatcher.
    const QStringList &listen();

    QString error(const QString &method, const QByteArray &params = "{}")
    {
        return tests::errorOf(dispatcher.get(), method, params);
    }

    bench::UnitDocument document{bench::pathsOf(&unit())};
    std::unique_ptr<bench::Dispatcher> dispatcher;
};

void TestUnitMethods::init()
{
    UnitTest::init();
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::addUnitMethods(dispatcher.get(), &document);
    bench::addJournalMethods(dispatcher.get());
    bench::addTraceMethods(dispatcher.get(), &trace());
    bench::addFileMethods(dispatcher.get());
    bench::addMemoryMethods(dispatcher.get());
}

void TestUnitMethods::cleanup()
{
    dispatcher.reset();
    UnitTest::cleanup();
}

void TestUnitMethods::getReadsAValueOrTheWhole()
{
    QCOMPARE(result("unit.get", "{'path':'gnss.module_kind'}"), json("{'value':1}"));
    QCOMPARE(result("unit.get", "{'path':'usb.0'}"),
             json("{'value':{'disk':false,'path':'','charging_mode':2}}"));
    QCOMPARE(result("unit.get"), QJsonObject({{"value", *document.value("")}}));
    QCOMPARE(result("unit.get", "{'path':''}"), result("unit.get"));
}

void TestUnitMethods::setWritesAValueOrABranch()
{
    QCOMPARE(result("unit.set", "{'path':'gnss.module_kind','value':2}"), QJsonObject());
    QCOMPARE(unit().gnss.moduleKind, 2);
    result("unit.set", "{'path':'usb.1','value':{'disk':true,'path':'/media/usb1'}}");
    QVERIFY(unit().usb.ports[1].disk);
    QCOMPARE(unit().usb.ports[1].path, QString("/media/usb1"));
}

void TestUnitMethods::getAndSetRefuse_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("get unknown") << "unit.get" << QByteArray("{'path':'gnss.colour'}")
                                 << "NotFound: the unit has no gnss.colour";
    QTest::newRow("set unknown") << "unit.set" << QByteArray("{'path':'gnss.colour','value':1}")
                                 << "NotFound: gnss.colour: the unit has no such key";
    QTest::newRow("set unknown inside")
        << "unit.set" << QByteArray("{'path':'gnss','value':{'colour':1}}")
        << "NotFound: gnss.colour: the unit has no such key";
    QTest::newRow("set wrong type")
        << "unit.set" << QByteArray("{'path':'gnss.module_kind','value':'two'}")
        << "Argument: gnss.module_kind: wanted is a whole number from 0";
}

void TestUnitMethods::getAndSetRefuse()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(error(method, params), message);
}

void TestUnitMethods::emitTellsTheState()
{
    gpsservice::GpsService *service = gpsservice::GpsService::instance();
    QSignalSpy version(service, &gpsservice::GpsService::gpsFirmwareVersion);
    QSignalSpy kind(service, &gpsservice::GpsService::modualApatationCompelete);
    unit().change()->gnss.info.speed = 12.5;
    unit().change()->gnss.version = "SIM 7";
    unit().change()->gnss.moduleKind = 4;

    QVector<double> speeds;
    connect(service, &gpsservice::GpsService::krnmInfoRefresh, dispatcher.get(),
            [&speeds](const krnmINFO &info) { speeds << info.speed; });
    QCOMPARE(result("unit.emit", "{'signal':'gnss.status'}"), QJsonObject());
    QCOMPARE(speeds, QVector<double>{12.5});
    result("unit.emit", "{'signal':'gnss.version'}");
    QCOMPARE(version, QList<QVariantList>{{"SIM 7"}});
    result("unit.emit", "{'signal':'gnss.module_kind'}");
    QCOMPARE(kind, QList<QVariantList>{{4}});
}

void TestUnitMethods::emitOfAnUnknownSignal()
{
    QCOMPARE(error("unit.emit", "{'signal':'gnss.fix'}"),
             QString("NotFound: no signal gnss.fix; there are: gnss.status, gnss.version, "
                     "gnss.module_kind"));
}

void TestUnitMethods::journalComesInOrder()
{
    journal().call("McuService", "setResetSystem", {1});
    journal().call("framework", "restart", {"Reboot", true});
    const QJsonObject answer = result("unit.journal");
    const QJsonArray entries = answer.value("entries").toArray();
    QCOMPARE(entries.size(), 2);
    QJsonObject first = entries.at(0).toObject();
    QVERIFY(first.take("ms").isDouble());
    QCOMPARE(first, json("{'n':1,'service':'McuService','call':'setResetSystem','args':[1]}"));
    QCOMPARE(entries.at(1).toObject().value("args"), QJsonValue(QJsonArray{"Reboot", true}));
    QCOMPARE(answer.value("next"), QJsonValue(2));
    QCOMPARE(answer.value("more"), QJsonValue(false));
}

void TestUnitMethods::shellCommandsAreInTheJournalWhole()
{
    QCOMPARE(std::system("test a = b\n"), 256);
    const QJsonObject entry = result("unit.journal").value("entries").toArray().at(0).toObject();
    QCOMPARE(entry.value("service"), QJsonValue("shell"));
    QCOMPARE(entry.value("call"), QJsonValue("test a = b\n"));
    QCOMPARE(entry.value("args"), QJsonValue(QJsonArray{1}));
}

void TestUnitMethods::journalGoesOnWhereItEnded()
{
    journal().call("A", "first");
    const QJsonValue next = result("unit.journal").value("next");
    QCOMPARE(next, QJsonValue(1));
    QCOMPARE(result("unit.journal", "{'since':1}"),
             json("{'entries':[],'gone':0,'next':1,'more':false}"));
    journal().call("A", "second");
    const QJsonArray entries = result("unit.journal", "{'since':1}").value("entries").toArray();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.at(0).toObject().value("call"), QJsonValue("second"));
}

void TestUnitMethods::longJournalComesInPieces()
{
    for (int i = 0; i < 5; ++i)
        journal().call("A", QString(200 * 1024, 'x'));
    QJsonObject answer = result("unit.journal");
    QCOMPARE(answer.value("entries").toArray().size(), 2);
    QCOMPARE(answer.value("more"), QJsonValue(true));
    answer = result("unit.journal", "{'since':4}");
    QCOMPARE(answer.value("entries").toArray().size(), 1);
    QCOMPARE(answer.value("more"), QJsonValue(false));
}

void TestUnitMethods::journalTellsWhatIsGone()
{
    for (int i = 0; i < 20005; ++i)
        journal().call("A", "b");
    QJsonObject answer = result("unit.journal", "{'since':2}");
    QCOMPARE(answer.value("gone"), QJsonValue(3));
    QCOMPARE(answer.value("entries").toArray().first().toObject().value("n"), QJsonValue(6));
    answer = result("unit.journal", "{'since':5}");
    QCOMPARE(answer.value("gone"), QJsonValue(0));
}

void TestUnitMethods::traceComesWhole()
{
    qDebug().noquote() << "[DBG] 7 void page::slot() 12 -- Größe 中";
    qDebug().noquote() << "second";
    QCOMPARE(result("trace.read"),
             json("{'lines':['[DBG] 7 void page::slot() 12 -- Größe 中','second'],'next':2,"
                  "'gone':0,'more':false}"));
}

void TestUnitMethods::traceGoesOnWhereItEnded()
{
    qDebug().noquote() << "first";
    QCOMPARE(result("trace.read", "{'since':1}"),
             json("{'lines':[],'gone':0,'next':1,'more':false}"));
    qDebug().noquote() << "second";
    QCOMPARE(result("trace.read", "{'since':1}"),
             json("{'lines':['second'],'gone':0,'next':2,'more':false}"));
}

void TestUnitMethods::longTraceComesInPieces()
{
    for (int i = 0; i < 3; ++i)
        qDebug().noquote() << QString(100 * 1024, 'x');
    const QJsonObject answer = result("trace.read");
    QCOMPARE(answer.value("lines").toArray().size(), 1);
    QCOMPARE(answer.value("next"), QJsonValue(1));
    QCOMPARE(answer.value("more"), QJsonValue(true));
}

void TestUnitMethods::traceTellsWhatIsGone()
{
    for (int number = 1; number <= 20005; ++number)
        qDebug().noquote() << number;
    QCOMPARE(trace().lines().size(), 20000);
    QJsonObject answer = result("trace.read", "{'since':2}");
    QCOMPARE(answer.value("gone"), QJsonValue(3));
    QCOMPARE(answer.value("lines").toArray().first(), QJsonValue("6"));
    QCOMPARE(answer.value("next"), QJsonValue(5 + answer.value("lines").toArray().size()));
    answer = result("trace.read", "{'since':20004}");
    QCOMPARE(answer, json("{'lines':['20005'],'gone':0,'next':20005,'more':false}"));
}

void TestUnitMethods::fileIsWrittenReadAndRemoved()
{
    QCOMPARE(result("unit.file.write", "{'path':'/var/ipt.log','text':'Größe\\n'}"),
             json("{'bytes':8}"));
    QCOMPARE(result("unit.file.read", "{'path':'/var/ipt.log'}"),
             json("{'text':'Größe\\n','base64':'R3LDtsOfZQo='}"));
    // A shorter text leaves nothing of the longer one.
    result("unit.file.write", "{'path':'/var/ipt.log','text':'a'}");
    QCOMPARE(result("unit.file.read", "{'path':'/var/ipt.log'}").value("text"), QJsonValue("a"));
    QCOMPARE(result("unit.file.remove", "{'path':'/var/ipt.log'}"), QJsonObject());
    QVERIFY(!QFile::exists("/var/ipt.log"));
}

void TestUnitMethods::fileOfBytes()
{
    QCOMPARE(result("unit.file.write", "{'path':'/var/bytes','base64':'AP/+gA=='}"),
             json("{'bytes':4}"));
    // What is no UTF-8 comes as base64 only.
    QCOMPARE(result("unit.file.read", "{'path':'/var/bytes'}"), json("{'base64':'AP/+gA=='}"));
    result("unit.file.remove", "{'path':'/var/bytes'}");
}

void TestUnitMethods::deviceFileIsRead()
{
    QCOMPARE(
        result("unit.file.read", "{'path':'/sys/module/usbcore/parameters/usb_logo_test_start'}")
            .value("text"),
        QJsonValue("0\n"));
}

void TestUnitMethods::filesRefuse_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("read missing") << "unit.file.read" << QByteArray("{'path':'/var/none'}")
                                  << "NotFound: no file /var/none";
    QTest::newRow("remove missing") << "unit.file.remove" << QByteArray("{'path':'/var/none'}")
                                    << "NotFound: no file /var/none";
    QTest::newRow("read a folder") << "unit.file.read" << QByteArray("{'path':'/var'}")
                                   << "File: cannot open /var: file to open is a directory";
    QTest::newRow("write below nothing")
        << "unit.file.write" << QByteArray("{'path':'/none/a','text':''}")
        << "File: cannot open /none/a: No such file or directory";
    QTest::newRow("write outside of the unit")
        << "unit.file.write" << QByteArray("{'path':'/etc/motd.new','text':''}")
        << "File: cannot open /etc/motd.new: Read-only file system";
    QTest::newRow("remove outside of the unit")
        << "unit.file.remove" << QByteArray("{'path':'/etc/passwd'}")
        << "File: cannot remove /etc/passwd: Read-only file system";
    QTest::newRow("no content") << "unit.file.write" << QByteArray("{'path':'/var/a'}")
                                << "Argument: one of text and base64 is wanted";
    QTest::newRow("two contents") << "unit.file.write"
                                  << QByteArray("{'path':'/var/a','text':'a','base64':'YQ=='}")
                                  << "Argument: one of text and base64 is wanted";
    QTest::newRow("no base64") << "unit.file.write"
                               << QByteArray("{'path':'/var/a','base64':'a*b'}")
                               << "Argument: base64 is none";
    for (const char *method : {"unit.file.read", "unit.file.remove"})
        QTest::addRow("%s relative", method) << method << QByteArray("{'path':'ipt.log'}")
                                             << "Argument: path is ipt.log, which is not absolute";
    QTest::newRow("write relative")
        << "unit.file.write" << QByteArray("{'path':'ipt.log','text':'a'}")
        << "Argument: path is ipt.log, which is not absolute";
}

void TestUnitMethods::filesRefuse()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(error(method, params), message);
}

void TestUnitMethods::longFileIsRefused()
{
    QFile file("/var/long");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(512 * 1024, 'x'));
    file.flush();
    QCOMPARE(result("unit.file.read", "{'path':'/var/long'}").value("text").toString().size(),
             512 * 1024);
    file.write("x");
    file.close();
    QCOMPARE(error("unit.file.read", "{'path':'/var/long'}"),
             QString("Limit: /var/long is longer than 524288 bytes"));
}

void TestUnitMethods::memoryIsWrittenAndRead()
{
    QCOMPARE(result("unit.memory.write", "{'address':'0x9C000010','value':'0x80000001'}"),
             QJsonObject());
    QCOMPARE(result("unit.memory.read", "{'address':2617245712}"),
             json("{'value':2147483649,'hex':'0x80000001'}"));
    QFile memory("/dev/mem");
    QVERIFY(memory.open(QIODevice::ReadOnly) && memory.seek(0x9C000010));
    QCOMPARE(memory.read(4), QByteArray("\x01\x00\x00\x80", 4));
    result("unit.memory.write", "{'address':2617245712,'value':0}");
    QCOMPARE(result("unit.memory.read", "{'address':'0x9C000010'}").value("value"), QJsonValue(0));
}

void TestUnitMethods::memoryRefuses_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    const auto both = [](const char *name, const char *address, const char *message) {
        QTest::addRow("read %s", name) << "unit.memory.read"
                                       << "{'address':" + QByteArray(address) + "}" << message;
        QTest::addRow("write %s", name)
            << "unit.memory.write"
            << "{'value':1,'address':" + QByteArray(address) + "}" << message;
    };
    both("between words", "'0x9C000011'", "Argument: address is not a multiple of 4");
    both("last word that is none", "'0xFFFFFFFC'",
         "Argument: address lies beyond the memory, which has 2617270272 bytes");
    both("negative", "-4", "Argument: address is a number, wanted is type address");
    both("longer than 32 bits", "'0x100000000'",
         "Argument: address is a text, wanted is type address");
    both("words", "'page'", "Argument: address is a text, wanted is type address");
    both("a list", "[4]", "Argument: address is a list, wanted is type address");
    QTest::newRow("value of 33 bits")
        << "unit.memory.write" << QByteArray("{'address':0,'value':4294967296}")
        << "Argument: value is a number, wanted is type address";
}

void TestUnitMethods::memoryRefuses()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(error(method, params), message);
}

void TestUnitMethods::memoryThatIsNotThere()
{
    QVERIFY(QFile::rename("/dev/mem", "/dev/mem.aside"));
    const QString read = error("unit.memory.read", "{'address':0}");
    const QString written = error("unit.memory.write", "{'address':0,'value':1}");
    const bool made = QFile::remove("/dev/mem");
    QVERIFY(QFile::rename("/dev/mem.aside", "/dev/mem"));
    QCOMPARE(read, QString("File: cannot open /dev/mem: No such file or directory"));
    QCOMPARE(written, QString("File: cannot open /dev/mem: No such file or directory"));
    QVERIFY(!made);
}

const QStringList &TestUnitMethods::listen()
{
    const auto seen = std::make_shared<QStringList>();
    connect(dispatcher.get(), &bench::Dispatcher::eventHappened, dispatcher.get(),
            [seen](const QString &name, QJsonObject params) {
                params.remove("ms");
                *seen << name + ' '
                        + QString::fromUtf8(QJsonDocument(params).toJson(QJsonDocument::Compact))
                              .replace('"', '\'');
            });
    return *seen;
}

void TestUnitMethods::eventsTellWhatHappens()
{
    const QStringList &seen = listen();
    unit().showPopup("Saved");
    unit().requestSystemReset(1);
    unit().requestFactoryReset();
    unit().requestReboot();
    journal().call("A", "b", {1});
    qDebug().noquote() << "words";
    QCOMPARE(seen,
             QStringList({"unit.changed {'path':'system.popup','value':'Saved'}",
                          "unit.popup {'text':'Saved'}",
                          "unit.changed {'path':'system.system_resets','value':1}",
                          "unit.reset {'kind':'system'}",
                          "unit.changed {'path':'system.factory_resets','value':1}",
                          "unit.reset {'kind':'factory'}", "unit.reset {'kind':'reboot'}",
                          "unit.journal {'args':[1],'call':'b','n':1,'service':'A'}",
                          "trace.line {'line':'words','n':1}"}));
}

// Whoever writes: a script, a service or the sky.
void TestUnitMethods::changesComeWithTheirValue()
{
    const QStringList &seen = listen();
    result("unit.set", "{'path':'usb.1','value':{'disk':true,'path':'/media/usb1'}}");
    QCOMPARE(seen,
             QStringList({"unit.changed {'path':'usb.1.disk','value':true}",
                          "unit.changed {'path':'usb.1.path','value':'/media/usb1'}"}));
    result("unit.set", "{'path':'usb.1.disk','value':true}");
    QCOMPARE(seen.size(), 2);
    unit().change()->gnss.antenna = "SHORT";
    QCOMPARE(seen.mid(2), QStringList({"unit.changed {'path':'gnss.antenna','value':'SHORT'}"}));
}

// Where a recorder hears what is done to the bench: each call that fits, before what it causes.
void TestUnitMethods::callsAreToldBeforeTheyRun()
{
    QStringList seen;
    connect(dispatcher.get(), &bench::Dispatcher::called, dispatcher.get(),
            [&](const QString &method, const QJsonObject &params) {
                seen << method + ' ' + params.value("path").toString();
            });
    connect(dispatcher.get(), &bench::Dispatcher::eventHappened, dispatcher.get(),
            [&](const QString &name) { seen << name; });
    result("unit.set", "{'path':'usb.function','value':6}");
    error("unit.set", "{'path':'usb.function'}"); // does not fit
    error("unit.fly");
    QCOMPARE(seen, QStringList({"unit.set usb.function", "unit.changed"}));
}

void TestUnitMethods::callIsToldWhenItIsOver()
{
    const QStringList &seen = listen();
    const int outer = journal().begin("framework", "backEvent");
    journal().call("A", "within");
    QCOMPARE(seen, QStringList({"unit.journal {'args':[],'call':'within','n':2,'service':'A'}"}));
    journal().complete(outer, {1});
    QCOMPARE(
        seen.mid(1),
        QStringList({"unit.journal {'args':[1],'call':'backEvent','n':1,'service':'framework'}"}));
}

void TestUnitMethods::shellCommandIsToldWithItsStatus()
{
    const QStringList &seen = listen();
    QCOMPARE(std::system("exit 3"), 3 * 256);
    QCOMPARE(seen,
             QStringList({"unit.journal {'args':[3],'call':'exit 3','n':1,'service':'shell'}"}));
}

TESTMODE_TEST_MAIN(TestUnitMethods)
#include "test_unitmethods.moc"
