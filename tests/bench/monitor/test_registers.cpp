#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/unitmethods.h"
#include "bench/unit/registers.h"
#include "usb/devmem_main.h"

using tests::json;

// The USB PHYs' registers by name: what they hold, what it means, who wrote it.
class TestRegisters : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void namesAndAddresses();
    void fieldsHaveMeanings_data();
    void fieldsHaveMeanings();
    void writesAreSeenWithTheirWriter();
    void pluginIsSeenThoughItCallsNobody();
    void fieldIsWrittenAlone();
    void writeRefuses_data();
    void writeRefuses();

private:
    QJsonObject named(const QString &name)
    {
        const QJsonArray rows =
            tests::resultOf(dispatcher.get(), "unit.registers").value("registers").toArray();
        for (const QJsonValue &row : rows) {
            if (row.toObject().value("name") == name)
                return row.toObject();
        }
        return {};
    }

    std::unique_ptr<bench::Dispatcher> dispatcher;
};

void TestRegisters::init()
{
    UnitTest::init();
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::addMemoryMethods(dispatcher.get());
}

void TestRegisters::cleanup()
{
    for (const bench::RegisterWord &word : bench::registers())
        tests::resultOf(dispatcher.get(), "unit.memory.write",
                        "{'value':0,'address':" + QByteArray::number(word.address) + "}");
    dispatcher.reset();
    UnitTest::cleanup();
}

void TestRegisters::namesAndAddresses()
{
    QStringList seen;
    const QJsonArray rows =
        tests::resultOf(dispatcher.get(), "unit.registers").value("registers").toArray();
    for (const QJsonValue &row : rows)
        seen << row.toObject().value("name").toString() + ' '
                + row.toObject().value("address").toString();
    QCOMPARE(seen,
             QStringList({"debug_select 0x9c000088", "debug_route 0x9c0000a0", "swing 0x9c000190",
                          "debug_enable.0 0x9c004a8c", "test_mode.0 0x9c004a90",
                          "disconnect.0 0x9c004a9c", "debug_enable.1 0x9c004b0c",
                          "test_mode.1 0x9c004b10", "disconnect.1 0x9c004b1c",
                          "debug_enable.2 0x9c004b8c", "test_mode.2 0x9c004b90",
                          "disconnect.2 0x9c004b9c"}));
}

void TestRegisters::fieldsHaveMeanings_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("meanings");
    QTest::newRow("swing") << "swing" << QByteArray("0x7F7F6045")
                           << "port_0=69 (+5) port_1=96 (-0) port_2=127 (-31)";
    QTest::newRow("no swing") << "swing" << QByteArray("0x00200100")
                              << "port_0=0 (not set) port_1=1 (no swing code) "
                                 "port_2=32 (no swing code)";
    QTest::newRow("threshold") << "disconnect.1" << QByteArray("0xFFFFFFF4") << "threshold=20 (20)";
    QTest::newRow("route") << "debug_route" << QByteArray("0x0008100C")
                           << "route=4108 (4108) port_0=0 (off) port_1=1 (on) port_2=0 (off)";
    QTest::newRow("eye") << "test_mode.2" << QByteArray("1")
                         << "pattern=1 (eye diagram, high speed)";
    QTest::newRow("test K") << "test_mode.0" << QByteArray("12")
                            << "pattern=12 (test K, full speed)";
    QTest::newRow("no pattern") << "test_mode.0" << QByteArray("13") << "pattern=13 (no pattern)";
}

void TestRegisters::fieldsHaveMeanings()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, value);
    QFETCH(QString, meanings);
    tests::resultOf(dispatcher.get(), "unit.register.write",
                    "{'name':'" + name.toLatin1() + "','value':'" + value + "'}");
    QStringList seen;
    const QJsonArray fields = named(name).value("fields").toArray();
    for (const QJsonValue &field : fields)
        seen << QStringLiteral("%1=%2 (%3)")
                    .arg(field["name"].toString())
                    .arg(field["value"].toDouble())
                    .arg(field["meaning"].toString());
    QCOMPARE(seen.join(' '), meanings);
}

void TestRegisters::writesAreSeenWithTheirWriter()
{
    QVERIFY(!named("swing").contains("writer"));
    QVector<QJsonObject> events;
    QObject scope; // not beyond this case
    connect(dispatcher.get(), &bench::Dispatcher::eventHappened, &scope,
            [&](const QString &name, const QJsonObject &params) {
                if (name == "unit.register")
                    events << params;
            });
    tests::resultOf(dispatcher.get(), "unit.memory.write",
                    "{'address':'0x9C000190','value':'0x11'}");
    tests::resultOf(dispatcher.get(), "unit.register.write", "{'name':'swing','value':'0x22'}");
    QCOMPARE(events.size(), 2);
    QCOMPARE(events.last(), named("swing"));
    QCOMPARE(events.last().value("hex"), QJsonValue("0x00000022"));
    QCOMPARE(events.last().value("before"), QJsonValue("0x00000011"));
    QCOMPARE(events.last().value("writer"), QJsonValue("bench")); // no client of the socket
    QVERIFY(events.last().value("ms").toDouble() >= events.first().value("ms").toDouble());
    tests::resultOf(dispatcher.get(), "unit.register.write", "{'name':'swing','value':'0x22'}");
    QCOMPARE(events.size(), 2); // the same as before
}

// It maps the memory and writes: the bench sees it when the plug-in's slot is over.
void TestRegisters::pluginIsSeenThoughItCallsNobody()
{
    QSignalSpy events(dispatcher.get(), &bench::Dispatcher::eventHappened);
    unsigned int word = 7;
    testmode::devmem_main(0x9C004000, 0xA90, 1, &word);
    QVERIFY(events.wait()); // the event loop comes to rest
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.first().at(0), QVariant("unit.register"));
    const QJsonObject row = events.first().at(1).toJsonObject();
    QCOMPARE(row.value("name"), QJsonValue("test_mode.0"));
    QCOMPARE(row.value("writer"), QJsonValue("plug-in"));

    // One who writes by a call takes nothing from the plug-in.
    word = 9;
    testmode::devmem_main(0x9C004000, 0xA90, 1, &word);
    tests::resultOf(dispatcher.get(), "unit.register.write", "{'name':'swing','value':1}");
    QCOMPARE(named("test_mode.0").value("writer"), QJsonValue("plug-in"));
    QCOMPARE(named("swing").value("writer"), QJsonValue("bench"));
}

void TestRegisters::fieldIsWrittenAlone()
{
    tests::resultOf(dispatcher.get(), "unit.register.write",
                    "{'name':'swing','value':'0x11223344'}");
    QCOMPARE(tests::resultOf(dispatcher.get(), "unit.register.write",
                             "{'name':'swing','field':'port_1','value':'0x45'}"),
             json("{'value':287458628,'hex':'0x11224544'}"));
    QCOMPARE(named("swing").value("hex"), QJsonValue("0x11224544"));
}

void TestRegisters::writeRefuses_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("name") << QByteArray("{'name':'gain','value':1}")
                          << "NotFound: no register gain; unit.registers lists them";
    QTest::newRow("field") << QByteArray("{'name':'swing','field':'port_3','value':1}")
                           << "NotFound: swing has no field port_3";
    QTest::newRow("range") << QByteArray("{'name':'swing','field':'port_0','value':256}")
                           << "Argument: value needs more than the 8 bits of port_0";
    QTest::newRow("far range") << QByteArray("{'name':'swing','field':'port_2','value':256}")
                               << "Argument: value needs more than the 8 bits of port_2";
}

void TestRegisters::writeRefuses()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(tests::errorOf(dispatcher.get(), "unit.register.write", params), message);
    QCOMPARE(named("swing").value("value"), QJsonValue(0));
}

TESTMODE_TEST_MAIN(TestRegisters)
#include "test_registers.moc"
