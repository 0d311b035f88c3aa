#include "tests/support/unittest.h"

#include "framework/appplugin.h"
#include "framework/windowinterface.h"

#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QProcess>
#include <QWidget>

// The built module as the framework's loader sees it. The class of the plug-in is not known here.
class TestPluginModule : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void metadataIsWhatTheFrameworkLooksFor_data();
    void metadataIsWhatTheFrameworkLooksFor();
    void exportsTheTwoEntryPointsOnly();
    void loadsAndShowsItsWindow();
    void entryPointKeepsItsPlugin();
    void entryPointReplacesADestroyedPlugin();
};

void TestPluginModule::metadataIsWhatTheFrameworkLooksFor_data()
{
    QTest::addColumn<QString>("module");
    QTest::newRow("as it is built here") << PLUGIN_MODULE;
    QTest::newRow("a debug build") << DEBUG_MODULE;
}

void TestPluginModule::metadataIsWhatTheFrameworkLooksFor()
{
    QFETCH(QString, module);
    const QPluginLoader loader(module);
    QJsonObject metadata = loader.metaData();
    // Qt's loader adds the Qt and the kind of machine that the module was built for.
    QCOMPARE(metadata.take("version").toInt(), QT_VERSION & ~0xff);
    QCOMPARE(metadata.take("archreq").toInt(), 0);
    const QJsonObject wanted = {
        {"IID", "com.corvane.Qt.testmodePlugin"},
        {"className", "Plugin"},
        {"MetaData", QJsonObject()},
        {"debug", false},
    };
    QCOMPARE(metadata, wanted);
}

void TestPluginModule::exportsTheTwoEntryPointsOnly()
{
    QProcess lister;
    lister.start(SYMBOL_LISTER, {"-D", "--defined-only", "-C", PLUGIN_MODULE});
    QVERIFY2(lister.waitForFinished(), qPrintable(lister.errorString()));
    QCOMPARE(lister.exitCode(), 0);
    QStringList functions;
    const QStringList lines = QString::fromUtf8(lister.readAllStandardOutput()).split('\n');
    for (const QString &line : lines) {
        // address, kind, name; T is a function of the module's own
        if (line.section(' ', 1, 1) == "T")
            functions << line.section(' ', 2);
    }
    functions.sort();
    QCOMPARE(functions, (QStringList{"qt_plugin_instance", "qt_plugin_query_metadata"}));
}

void TestPluginModule::loadsAndShowsItsWindow()
{
    QPluginLoader loader(PLUGIN_MODULE);
    QObject *object = loader.instance();
    QVERIFY2(object != nullptr, qPrintable(loader.errorString()));
    QCOMPARE(object->metaObject()->className(), "testmode::Plugin");
    QCOMPARE(loader.instance(), object);
    auto *plugin = qobject_cast<AppPlugin *>(object);
    QVERIFY(plugin != nullptr);
    plugin->create();
    QCOMPARE(plugin->windowInterfaceID(), QList<int>{38});

    QPointer<QWidget> content;
    connect(&bench::unit(), &bench::HeadUnit::mainWidgetChanged, &loader,
            [&content](QWidget *widget) { content = widget; });
    WindowInterface *window = plugin->requestWindowInterface(38);
    QVERIFY(window != nullptr);
    QCOMPARE(window->name(), QStringLiteral("testmode"));
    window->onCreate();
    QVERIFY(!content.isNull());
    QCOMPARE(content->metaObject()->className(), "testmode::MainWidget");
    content->show();
    window->onShow(QByteArray());
    QVERIFY(content->findChild<QWidget *>("testEntryWidget")->isVisible());

    window->onDestroy();
    QTRY_VERIFY(content.isNull());
    QTRY_VERIFY(object->children().isEmpty());
    window = plugin->requestWindowInterface(38);
    QVERIFY(window != nullptr);
    window->onCreate();
    QVERIFY(!content.isNull());
}

// Called as a loader calls it, not through Qt's, which keeps what it got.
void TestPluginModule::entryPointKeepsItsPlugin()
{
    QLibrary module(PLUGIN_MODULE);
    using EntryPoint = QObject *(*)();
    const auto instance = reinterpret_cast<EntryPoint>(module.resolve("qt_plugin_instance"));
    QVERIFY2(instance != nullptr, qPrintable(module.errorString()));
    QPointer<QObject> first = instance();
    QVERIFY(!first.isNull());
    QCOMPARE(instance(), first.data());
    delete first.data();
    QPointer<QObject> second = instance();
    QVERIFY(!second.isNull());
    QCOMPARE(instance(), second.data());
    delete second.data();
}

void TestPluginModule::entryPointReplacesADestroyedPlugin()
{
    QPluginLoader loader(PLUGIN_MODULE);
    const QPointer<QObject> first = loader.instance();
    QVERIFY(!first.isNull());
    delete first.data();
    QObject *second = loader.instance();
    QVERIFY(second != nullptr);
    QCOMPARE(qobject_cast<AppPlugin *>(second)->windowInterfaceID(), QList<int>{38});
    delete second;
}

TESTMODE_TEST_MAIN(TestPluginModule)
#include "test_pluginmodule.moc"
