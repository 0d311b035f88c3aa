#include "tests/support/unittest.h"

#include "bench/unit/audiostate.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"
#include "bench/unit/usbstate.h"
#include "gpsservice/gpsservice.h"
#include "mcu/mcuservice.h"
#include "mem/settingscache.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>

using bench::unit;
using bench::UnitDocument;

namespace {

// A value written as JSON; ' stands for ".
QJsonValue value(QByteArray text)
{
    const QJsonDocument document = QJsonDocument::fromJson("[" + text.replace('\'', '"') + "]");
    Q_ASSERT(document.isArray());
    return document.array().at(0);
}

// Every path, its value in a unit just switched on, and another one that fits.
struct PathRow
{
    const char *path;
    const char *initially;
    const char *other;
};

constexpr PathRow kPaths[] = {
    {"gnss.module_kind", "1", "2"},
    {"gnss.antenna", "'OK'", "'OPEN'"},
    {"gnss.install_status", "'3'", "'0'"},
    {"gnss.version", "'SIM-GNSS 1.0'", "'SIM-GNSS 2.0'"},
    {"gnss.version_delay_ms", "300", "0"},
    {"gnss.satellites", "[]", "[{'number':3,'in_use':1,'elevation':40,'azimuth':271,'signal':38}]"},
    {"gnss.satellites_in_use", "0", "7"},
    {"gnss.satellites_in_view", "0", "11"},
    {"gnss.latitude", "0", "3113.8176"},
    {"gnss.longitude", "0", "12128.4325"},
    {"gnss.speed", "0", "12.5"},
    {"gnss.utc.year", "0", "2031"},
    {"gnss.utc.month", "0", "12"},
    {"gnss.utc.day", "0", "31"},
    {"gnss.utc.hour", "0", "23"},
    {"gnss.utc.minute", "0", "59"},
    {"gnss.utc.second", "0", "58"},
    {"gnss.duration.hours", "0", "100"},
    {"gnss.duration.minutes", "0", "10"},
    {"gnss.duration.seconds", "0", "1"},
    {"gnss.sky_seed", "1", "7"},
    {"gnss.sky", "false", "true"},
    {"gnss.sky_covered", "[]", "[{'from':350,'to':20,'elevation':60}]"},
    {"gnss.sky_held", "[]", "[{'number':30,'elevation':90,'azimuth':359}]"},
    {"gnss.sky_speed", "-1", "130"},
    {"usb.0.disk", "false", "true"},
    {"usb.0.path", "''", "'/media/usb0'"},
    {"usb.0.charging_mode", "2", "0"},
    {"usb.1.disk", "false", "true"},
    {"usb.1.path", "''", "'/media/usb0'"},
    {"usb.1.charging_mode", "2", "0"},
    {"usb.certification", "79", "84"},
    {"usb.function", "7", "6"},
    {"usb.network.run_ms", "300", "0"},
    {"usb.network.results", "{}", "{'stopNetTest':1,'startTcpClient':-1}"},
    {"usb.network.report", "''", "'50 Mbit/s'"},
    {"usb.network.writes_report", "true", "false"},
    {"usb.network.server", "''", "'TCP server'"},
    {"system.watchdog", "true", "false"},
    {"system.system_resets", "0", "3"},
    {"system.factory_resets", "0", "1"},
    {"system.status_bar_hidden", "false", "true"},
    {"system.popup", "''", "'Saved'"},
    {"update.folder", "''", "'/media/update'"},
    {"settings.cache", "{}", "{'TEST_MODE':3}"},
    {"settings.func", "{}", "{'ToolsUSBLogEnable':true}"},
    {"settings.cache_first", "{}", "{'TEST_MODE':0}"},
    {"settings.func_first", "{}", "{'ToolsUSBLogEnable':1}"},
    {"audio.analog_gain.0", "0", "1.5"},
    {"audio.analog_gain.1", "0", "-2"},
    {"audio.op_gain", "0", "3"},
    {"audio.pga_gain", "0", "4"},
    {"audio.uplink_gain", "0", "5.25"},
};

} // namespace

// The unit's state as one document.
class TestUnitDocument : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void everyPathReadsAndWrites_data();
    void everyPathReadsAndWrites();
    void noPathGoesUntested();
    void valuesReachTheModel();
    void satellitesFillTheRecordToo();
    void givenCountsWinOverTheList();
    void statusBarTellsTheScreen();

    void branchReadsAsAnObject();
    void pathLeadsIntoAValue();
    void wholeDocumentComesBack();
    void partOfADocumentLeavesTheRest();

    void settingsKeepTheirTypes();
    void settingIsAddedAndRemoved();
    void firstArgumentStaysBesideTheValue();

    void unknownKeysAreRefused_data();
    void unknownKeysAreRefused();
    void wrongValuesAreRefused_data();
    void wrongValuesAreRefused();
    void refusedDocumentChangesNothing();

    void changesAreToldOnceAndWhole();
    void whoHearsOfAChangeMayChangeTheNext();
    void servicesAndSkyAreHeardOf();
    void addedPathsAreWatchedToo();

    void fileIsLoaded();
    void badFileIsRefused_data();
    void badFileIsRefused();

private:
    UnitDocument document{bench::pathsOf(&unit())};
};

void TestUnitDocument::everyPathReadsAndWrites_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("initially");
    QTest::addColumn<QByteArray>("other");
    for (const PathRow &row : kPaths)
        QTest::newRow(row.path) << row.path << QByteArray(row.initially) << QByteArray(row.other);
}

void TestUnitDocument::everyPathReadsAndWrites()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, initially);
    QFETCH(QByteArray, other);
    QCOMPARE(*document.value(path), value(initially));
    QCOMPARE(document.setValue(path, value(other)).message, QString());
    QCOMPARE(*document.value(path), value(other));
    unit().powerOn();
    QCOMPARE(*document.value(path), value(initially));
}

void TestUnitDocument::noPathGoesUntested()
{
    QStringList tested;
    for (const PathRow &row : kPaths)
        tested << row.path;
    QStringList paths;
    for (const UnitDocument::Entry &entry : document.entries()) {
        paths << entry.path;
        QVERIFY2(!entry.type.isEmpty() && !entry.description.isEmpty(), qPrintable(entry.path));
    }
    QCOMPARE(paths, tested);
}

void TestUnitDocument::valuesReachTheModel()
{
    document.setValue("gnss.module_kind", 2);
    document.setValue("gnss.speed", 12.5);
    document.setValue("usb.1.path", "/media/usb1");
    document.setValue("usb.certification", 77);
    document.setValue("system.watchdog", false);
    document.setValue("audio.analog_gain.1", 1.5);
    QCOMPARE(unit().gnss.moduleKind, 2);
    QCOMPARE(unit().gnss.info.speed, 12.5);
    QCOMPARE(unit().usb.ports[1].path, QString("/media/usb1"));
    QCOMPARE(unit().usb.certification, 77);
    QCOMPARE(unit().system.watchdogEnabled, false);
    QCOMPARE(unit().audio.analogGain[1], 1.5f);
}

void TestUnitDocument::satellitesFillTheRecordToo()
{
    QJsonArray list;
    for (int i = 0; i < 32; ++i)
        list.append(QJsonObject{{"number", i + 1}, {"in_use", i < 5 ? 1 : 0}, {"signal", 30 + i}});
    QCOMPARE(document.setValue("gnss.satellites", list).message, QString());
    const bench::GnssState &gnss = unit().gnss;
    QCOMPARE(gnss.satellites.size(), 32);
    QCOMPARE(gnss.satellites.at(31).signal, 61);
    QCOMPARE(gnss.satellites.at(31).azimuth, 0);
    QCOMPARE(gnss.info.satellites[29].number, 30);
    QCOMPARE(gnss.info.satellitesInView, 32);
    QCOMPARE(gnss.info.satellitesInUse, 5);

    document.setValue("gnss.satellites", value("[{'number':9}]"));
    QCOMPARE(gnss.info.satellites[0].number, 9);
    QCOMPARE(gnss.info.satellites[1].number, 0);
}

void TestUnitDocument::givenCountsWinOverTheList()
{
    document.setValue("gnss", value("{'satellites':[{'number':9}],'satellites_in_view':12}"));
    QCOMPARE(unit().gnss.info.satellitesInView, 12);
    QCOMPARE(unit().gnss.info.satellitesInUse, 0);
}

void TestUnitDocument::statusBarTellsTheScreen()
{
    QSignalSpy changed(&unit(), &bench::HeadUnit::statusBarHiddenChanged);
    document.setValue("system.status_bar_hidden", true);
    QCOMPARE(changed, QList<QVariantList>{{true}});
}

void TestUnitDocument::branchReadsAsAnObject()
{
    QCOMPARE(*document.value("usb.1"), value("{'disk':false,'path':'','charging_mode':2}"));
    QCOMPARE(*document.value("gnss.duration"), value("{'hours':0,'minutes':0,'seconds':0}"));
}

void TestUnitDocument::pathLeadsIntoAValue()
{
    document.setValue("gnss.satellites", value("[{'number':9},{'number':12}]"));
    QCOMPARE(*document.value("gnss.satellites.1.number"), value("12"));
    QCOMPARE(document.setValue("gnss.satellites.1.signal", 44).message, QString());
    QCOMPARE(unit().gnss.satellites.at(1).signal, 44);
    QCOMPARE(unit().gnss.satellites.at(1).number, 12);
}

void TestUnitDocument::wholeDocumentComesBack()
{
    const QJsonValue given =
        value("{'gnss':{'module_kind':2,'satellites':[{'number':4,'in_use':1,'elevation':10,"
              "'azimuth':20,'signal':30}],'satellites_in_view':9},"
              "'usb':{'0':{'disk':true,'path':'/media/usb0'},'certification':84},"
              "'settings':{'cache':{'TEST_MODE':6},'func':{'GPS_UPDATE':true},"
              "'func_first':{'GPS_UPDATE':'x'}},'update':{'folder':'/media/update'}}");
    QCOMPARE(document.setValue("", given).message, QString());
    const QJsonValue whole = *document.value("");
    unit().powerOn();
    QVERIFY(*document.value("") != whole);
    QCOMPARE(document.setValue("", whole).message, QString());
    QCOMPARE(*document.value(""), whole);
    QCOMPARE(whole.toObject().value("gnss").toObject().value("satellites_in_view"), QJsonValue(9));
    QCOMPARE(whole.toObject().keys(),
             QStringList({"audio", "gnss", "settings", "system", "update", "usb"}));
}

void TestUnitDocument::partOfADocumentLeavesTheRest()
{
    document.setValue("gnss.antenna", "SHORT");
    document.setValue("", value("{'gnss':{'module_kind':3}}"));
    QCOMPARE(unit().gnss.antenna, QString("SHORT"));
    QCOMPARE(unit().gnss.moduleKind, 3);
}

void TestUnitDocument::settingsKeepTheirTypes()
{
    document.setValue("settings.cache",
                      value("{'number':3,'fraction':1.5,'flag':true,'text':'a'}"));
    const QMap<QString, bench::Setting> &cache = unit().settings.cache;
    QCOMPARE(cache.value("number").value, QVariant(3));
    QCOMPARE(cache.value("fraction").value, QVariant(1.5));
    QCOMPARE(cache.value("flag").value, QVariant(true));
    QCOMPARE(cache.value("text").value, QVariant("a"));
}

void TestUnitDocument::settingIsAddedAndRemoved()
{
    QCOMPARE(document.setValue("settings.cache.TEST_MODE", 3).message, QString());
    QCOMPARE(*document.value("settings.cache.TEST_MODE"), value("3"));
    document.setValue("settings.cache.OTHER", 4);
    QCOMPARE(document.setValue("settings.cache.TEST_MODE", QJsonValue::Null).message, QString());
    QVERIFY(!document.value("settings.cache.TEST_MODE"));
    QCOMPARE(unit().settings.cache.keys(), QStringList("OTHER"));
}

void TestUnitDocument::firstArgumentStaysBesideTheValue()
{
    unit().change()->settings.func.insert("KEY", {QVariant(7), QVariant(true)});
    QCOMPARE(*document.value("settings.func_first.KEY"), value("7"));
    document.setValue("settings.func.KEY", false);
    QCOMPARE(unit().settings.func.value("KEY").first, QVariant(7));
    QCOMPARE(unit().settings.func.value("KEY").value, QVariant(false));
}

void TestUnitDocument::unknownKeysAreRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QString>("message");
    QTest::newRow("root") << "" << QByteArray("{'colour':1}") << "colour: the unit has no such key";
    QTest::newRow("branch") << "" << QByteArray("{'gnss':{'modul_kind':1}}")
                            << "gnss.modul_kind: the unit has no such key";
    QTest::newRow("path") << "usb.2.disk" << QByteArray("true")
                          << "usb.2.disk: the unit has no such key";
    QTest::newRow("below a value") << "gnss.antenna.length" << QByteArray("1")
                                   << "gnss.antenna.length: the unit has no such key";
    QTest::newRow("beyond a list")
        << "gnss.satellites.0" << QByteArray("{}") << "gnss.satellites.0: the unit has no such key";
}

void TestUnitDocument::unknownKeysAreRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, given);
    QFETCH(QString, message);
    const UnitDocument::Problem problem = document.setValue(path, value(given));
    QCOMPARE(problem.kind, UnitDocument::Problem::UnknownKey);
    QCOMPARE(problem.message, message);
}

void TestUnitDocument::wrongValuesAreRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *path, const char *given, const char *message) {
        QTest::addRow("%s %s", path, given) << path << QByteArray(given) << message;
    };
    row("", "[]", "the document: wanted is an object");
    row("gnss", "5", "gnss: wanted is an object");
    row("gnss.module_kind", "'1'", "gnss.module_kind: wanted is a whole number from 0");
    row("gnss.module_kind", "1.5", "gnss.module_kind: wanted is a whole number from 0");
    row("gnss.module_kind", "-1", "gnss.module_kind: wanted is a whole number from 0");
    row("gnss.module_kind", "3000000000", "gnss.module_kind: wanted is a whole number from 0");
    row("gnss.module_kind", "null", "gnss.module_kind: wanted is a whole number from 0");
    row("gnss.antenna", "1", "gnss.antenna: wanted is a text");
    row("gnss.latitude", "'N'", "gnss.latitude: wanted is a number");
    row("gnss.satellites", "{}", "gnss.satellites: wanted is a list of satellites");
    row("gnss.satellites", "[{},7]", "gnss.satellites.1: wanted is an object");
    row("gnss.satellites", "[{'signal':'x'}]",
        "gnss.satellites.0.signal: wanted is a whole number");
    row("gnss.satellites", "[{'power':1}]", "gnss.satellites.0.power: a satellite has no such key");
    row("usb.0.disk", "1", "usb.0.disk: wanted is true or false");
    row("usb.0.charging_mode", "3", "usb.0.charging_mode: wanted is a whole number from 0 to 2");
    row("usb.certification", "78", "usb.certification: wanted is one of 77, 79, 84");
    row("usb.certification", "'79'", "usb.certification: wanted is one of 77, 79, 84");
    row("usb.function", "5", "usb.function: wanted is one of 6, 7");
    row("usb.network.run_ms", "-1", "usb.network.run_ms: wanted is a whole number from 0");
    row("usb.network.results", "1", "usb.network.results: wanted is an object of results");
    row("usb.network.results", "{'startTcp':1}",
        "usb.network.results.startTcp: the network tests have no such operation");
    row("usb.network.results", "{'stopNetTest':0.5}",
        "usb.network.results.stopNetTest: wanted is a whole number");
    row("settings.cache", "[]", "settings.cache: wanted is an object of settings");
    row("settings.cache", "{'A':[]}",
        "settings.cache.A: wanted is true or false, a number or a text");
    row("settings.func.A", "{}", "settings.func.A: wanted is true or false, a number or a text");
}

void TestUnitDocument::wrongValuesAreRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, given);
    QFETCH(QString, message);
    const QJsonValue before = *document.value("");
    const UnitDocument::Problem problem = document.setValue(path, value(given));
    QCOMPARE(problem.kind, UnitDocument::Problem::WrongValue);
    QCOMPARE(problem.message, message);
    QCOMPARE(*document.value(""), before);
}

void TestUnitDocument::refusedDocumentChangesNothing()
{
    const QJsonValue before = *document.value("");
    document.setValue("", value("{'gnss':{'module_kind':2},'usb':{'0':{'disk':'yes'}}}"));
    QCOMPARE(*document.value(""), before);
}

// The model says what has changed: each path once, when everything that changed with it stands.
void TestUnitDocument::changesAreToldOnceAndWhole()
{
    UnitDocument watched(bench::pathsOf(&unit()));
    connect(&unit(), &bench::HeadUnit::written, &watched, &UnitDocument::tellChanges);
    QStringList told;
    int kindSeen = 0;
    connect(&watched, &UnitDocument::changed, this, [&](const QString &path) {
        told << path;
        kindSeen = unit().gnss.moduleKind;
    });
    watched.setValue("",
                     value("{'usb': {'function': 6}, 'gnss': {'antenna': 'Open', "
                           "'module_kind': 4, 'version': 'SIM-GNSS 1.0'}}"));
    QCOMPARE(told, QStringList({"gnss.module_kind", "gnss.antenna", "usb.function"}));
    QCOMPARE(kindSeen, 4);

    told.clear();
    watched.setValue("usb.function", 6); // as before
    QCOMPARE(told, QStringList());
    watched.setValue("usb.function", 8); // refused
    QCOMPARE(told, QStringList());
    {
        bench::UnitChange whole = unit().change();
        whole->usb.function = 7;
        whole->usb.certification = 84;
        unit().showPopup("a change within a change");
        QCOMPARE(told, QStringList());
    }
    QCOMPARE(told, QStringList({"usb.certification", "usb.function", "system.popup"}));
}

void TestUnitDocument::whoHearsOfAChangeMayChangeTheNext()
{
    UnitDocument watched(bench::pathsOf(&unit()));
    connect(&unit(), &bench::HeadUnit::written, &watched, &UnitDocument::tellChanges);
    QStringList told;
    connect(&watched, &UnitDocument::changed, this, [&](const QString &path) {
        told << path;
        if (path == "usb.0.disk")
            unit().change()->usb.ports[1].disk = unit().usb.ports[0].disk;
    });
    watched.setValue("usb.0", value("{'disk': true, 'path': '/media/usb0'}"));
    QCOMPARE(told, QStringList({"usb.0.disk", "usb.1.disk", "usb.0.path"}));
    QVERIFY(unit().usb.ports[1].disk);
}

void TestUnitDocument::servicesAndSkyAreHeardOf()
{
    UnitDocument watched(bench::pathsOf(&unit()));
    connect(&unit(), &bench::HeadUnit::written, &watched, &UnitDocument::tellChanges);
    QStringList told;
    connect(&watched, &UnitDocument::changed, this, [&](const QString &path) { told << path; });
    mcu::McuService::instance()->setWatchDogEnable(false);
    mem::SettingsCache::instance()->setValue("KEY", true);
    QCOMPARE(told, QStringList({"system.watchdog", "settings.cache"}));
    told.clear();
    gpsservice::GpsService::instance(); // the receiver's reports begin
    unit().followSky(true);
    QCOMPARE(told, QStringList("gnss.sky"));
    QTRY_VERIFY(told.contains("gnss.satellites"));
    QVERIFY(told.contains("gnss.latitude"));
    QCOMPARE(told.removeDuplicates(), 0);
    told.clear();
    unit().powerOn();
    QVERIFY(told.contains("system.watchdog"));
    QVERIFY(told.contains("gnss.sky"));
}

void TestUnitDocument::addedPathsAreWatchedToo()
{
    int number = 1;
    UnitDocument watched;
    watched.add({"other.number", "a number", "of another party", [&] { return number; },
                 [](const QJsonValue &) { return QString(); },
                 [&](const QJsonValue &given) { number = given.toInt(); }});
    QSignalSpy changed(&watched, &UnitDocument::changed);
    watched.setValue("other.number", 2);
    QCOMPARE(changed, QList<QVariantList>({{"other.number"}}));
    number = 3;
    watched.tellChanges();
    QCOMPARE(changed.size(), 2);
}

void TestUnitDocument::fileIsLoaded()
{
    QFile file(QDir::tempPath() + "/unit.json");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"gnss": {"module_kind": 2}, "usb": {"certification": 84}})");
    file.close();
    QCOMPARE(bench::loadUnitFile(&document, file.fileName()), QString());
    QCOMPARE(unit().gnss.moduleKind, 2);
    QCOMPARE(unit().usb.certification, 84);
}

void TestUnitDocument::badFileIsRefused_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown key") << QByteArray(R"({"gnss": {"kind": 2}})")
                                 << "gnss.kind: the unit has no such key";
    // What is said of a file stays one line.
    QTest::newRow("key of two lines") << QByteArray(R"({"gnss": {"a\nb\u2028": 2}})")
                                      << "gnss.a\\u000Ab\\u2028: the unit has no such key";
    QTest::newRow("wrong type") << QByteArray(R"({"usb": {"0": {"disk": "yes"}}})")
                                << "usb.0.disk: wanted is true or false";
    QTest::newRow("a list") << QByteArray("[]") << "wanted is an object";
    QTest::newRow("no JSON") << QByteArray(R"({"gnss": )") << "unterminated object at byte 9";
    QTest::newRow("empty") << QByteArray() << "illegal value at byte 0";
}

void TestUnitDocument::badFileIsRefused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QFile file(QDir::tempPath() + "/unit.json");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QCOMPARE(bench::loadUnitFile(&document, file.fileName()), file.fileName() + ": " + message);
    QCOMPARE(bench::loadUnitFile(&document, "/none/unit.json"),
             QString("/none/unit.json: No such file or directory"));
}

TESTMODE_TEST_MAIN(TestUnitDocument)
#include "test_unitdocument.moc"
