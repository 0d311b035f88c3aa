#include "tests/support/unittest.h"

#include "plugin/mainwindow.h"
#include "plugin/plugin.h"

using testmode::Plugin;

// The plug-in object: what it offers, and who owns the window.
class TestPlugin : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void offersOneWindowAndNoSource();
    void createDoesNothing();
    void unknownWindowIsNullAndCreatesNothing_data();
    void unknownWindowIsNullAndCreatesNothing();
    void everyRequestYieldsTheSameWindow();
    void destroyedWindowIsBuiltAnew();
    void windowGoesWithThePlugin();
    void everySourceIsNull_data();
    void everySourceIsNull();
    void answersToItsNames_data();
    void answersToItsNames();
    void objectComesFirst();
    void offersNoMethodByName();
};

void TestPlugin::offersOneWindowAndNoSource()
{
    Plugin plugin;
    QCOMPARE(plugin.windowInterfaceID(), QList<int>{38});
    QCOMPARE(plugin.sourceInterfaceID(), QList<int>());
}

void TestPlugin::createDoesNothing()
{
    Plugin plugin;
    plugin.create();
    QVERIFY(plugin.children().isEmpty());
    QCOMPARE(bench::journal().texts(), QStringList());
    QCOMPARE(trace().lines(), QStringList());
}

void TestPlugin::unknownWindowIsNullAndCreatesNothing_data()
{
    QTest::addColumn<int>("number");
    for (int number : {37, 39, 0, -38, 380, std::numeric_limits<int>::max()})
        QTest::addRow("%d", number) << number;
}

void TestPlugin::unknownWindowIsNullAndCreatesNothing()
{
    QFETCH(int, number);
    Plugin plugin;
    QVERIFY(plugin.requestWindowInterface(number) == nullptr);
    QVERIFY(plugin.children().isEmpty());
    QCOMPARE(bench::journal().texts(), QStringList());
}

void TestPlugin::everyRequestYieldsTheSameWindow()
{
    Plugin plugin;
    WindowInterface *window = plugin.requestWindowInterface(38);
    QVERIFY(window != nullptr);
    QCOMPARE(plugin.requestWindowInterface(38), window);
    QVERIFY(plugin.requestWindowInterface(37) == nullptr);
    QCOMPARE(plugin.requestWindowInterface(38), window);
    QCOMPARE(plugin.children().size(), 1);
    auto *object = dynamic_cast<testmode::MainWindow *>(window);
    QVERIFY(object != nullptr);
    QCOMPARE(object->parent(), &plugin);
}

void TestPlugin::destroyedWindowIsBuiltAnew()
{
    Plugin plugin;
    delete dynamic_cast<testmode::MainWindow *>(plugin.requestWindowInterface(38));
    QVERIFY(plugin.children().isEmpty());
    WindowInterface *second = plugin.requestWindowInterface(38);
    QVERIFY(second != nullptr);
    QCOMPARE(second->name(), QStringLiteral("testmode"));
    QCOMPARE(plugin.children().size(), 1);
}

void TestPlugin::windowGoesWithThePlugin()
{
    auto plugin = std::make_unique<Plugin>();
    const QPointer<QObject> window =
        dynamic_cast<testmode::MainWindow *>(plugin->requestWindowInterface(38));
    QVERIFY(!window.isNull());
    plugin.reset();
    QVERIFY(window.isNull());
}

void TestPlugin::everySourceIsNull_data()
{
    QTest::addColumn<int>("number");
    for (int number : {0, 1, 37, 38, -1})
        QTest::addRow("%d", number) << number;
}

void TestPlugin::everySourceIsNull()
{
    QFETCH(int, number);
    Plugin plugin;
    QVERIFY(plugin.requestSourceInterface(number) == nullptr);
}

void TestPlugin::answersToItsNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("base");
    QTest::newRow("class") << QByteArray("testmode::Plugin") << "object";
    QTest::newRow("interface class") << QByteArray("AppPlugin") << "interface";
    QTest::newRow("interface name")
        << QByteArray("com.corvane.Plugin.AppPlugin/1.0") << "interface";
    QTest::newRow("Qt's own") << QByteArray("QObject") << "object";
    QTest::newRow("other version") << QByteArray("com.corvane.Plugin.AppPlugin/2.0") << "none";
    QTest::newRow("other class") << QByteArray("WindowInterface") << "none";
}

void TestPlugin::answersToItsNames()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, base);
    Plugin plugin;
    const void *object = static_cast<QObject *>(&plugin);
    const void *interface = static_cast<AppPlugin *>(&plugin);
    const void *wanted = base == "object" ? object : base == "interface" ? interface : nullptr;
    QCOMPARE(static_cast<const void *>(plugin.qt_metacast(name.constData())), wanted);
}

void TestPlugin::objectComesFirst()
{
    Plugin plugin;
    QCOMPARE(static_cast<void *>(static_cast<QObject *>(&plugin)), static_cast<void *>(&plugin));
    QVERIFY(static_cast<void *>(static_cast<AppPlugin *>(&plugin)) != static_cast<void *>(&plugin));
}

void TestPlugin::offersNoMethodByName()
{
    QCOMPARE(tests::signalsOf(Plugin::staticMetaObject), QStringList());
    QCOMPARE(tests::slotsOf(Plugin::staticMetaObject), QStringList());
    QCOMPARE(Plugin::staticMetaObject.superClass()->className(), "QObject");
}

TESTMODE_TEST_MAIN(TestPlugin)
#include "test_plugin.moc"
