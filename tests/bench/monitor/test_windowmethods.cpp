#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/host/host.h"
#include "bench/monitor/windowmethods.h"
#include "framework/events.h"

#include <QPointer>

using tests::json;

// The real plug-in's window through the calls.
class TestWindowMethods : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void createAndShowAreTwoSteps();
    void showHandsOverItsData();
    void homeDoesBoth();
    void destroyedWindowIsBuiltAnew();
    void backAnswersWithTheResult();
    void keyAnswersWithTheResult();
    void withoutAWindowTheyAreRefused_data();
    void withoutAWindowTheyAreRefused();

private:
    QJsonObject result(const QString &method, const QByteArray &params = "{}")
    {
        return tests::resultOf(dispatcher.get(), method, params);
    }
    QString error(const QString &method, const QByteArray &params = "{}")
    {
        return tests::errorOf(dispatcher.get(), method, params);
    }

    std::unique_ptr<bench::Host> host;
    std::unique_ptr<bench::Dispatcher> dispatcher;
};

void TestWindowMethods::init()
{
    UnitTest::init();
    host = std::make_unique<bench::Host>();
    QString trouble;
    QVERIFY2(host->load(QStringLiteral(TESTMODE_PLUGIN), &trouble), qPrintable(trouble));
    host->screen()->show();
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::addWindowMethods(dispatcher.get(), host.get());
}

void TestWindowMethods::cleanup()
{
    dispatcher.reset();
    host.reset();
    UnitTest::cleanup();
}

void TestWindowMethods::createAndShowAreTwoSteps()
{
    QCOMPARE(result("window.create"), QJsonObject());
    QVERIFY(host->hasWindow());
    QVERIFY(!host->mainWidget()->isVisible());
    QVERIFY(!bench::journal().texts().contains("BaseWindow.onShow(\"\")"));
    QCOMPARE(result("window.show"), QJsonObject());
    QVERIFY(host->mainWidget()->isVisible());
    QCOMPARE(bench::journal().texts().last(), QString("BaseWindow.onShow(\"\")"));
}

void TestWindowMethods::showHandsOverItsData()
{
    result("window.create");
    result("window.show", "{'data':'aä'}");
    QCOMPARE(bench::journal().texts().last(), QString("BaseWindow.onShow(\"61c3a4\")"));
}

void TestWindowMethods::homeDoesBoth()
{
    QCOMPARE(result("window.home"), QJsonObject());
    QVERIFY(host->mainWidget()->isVisible());
    const int mark = bench::journal().lastNumber();
    result("window.home");
    QCOMPARE(bench::journal().texts(mark).filter("BaseWindow.on"),
             QStringList({"BaseWindow.onCreate()", "BaseWindow.onShow(\"\")"}));
}

void TestWindowMethods::destroyedWindowIsBuiltAnew()
{
    result("window.home");
    const QPointer<QWidget> first = host->mainWidget();
    QCOMPARE(result("window.destroy"), QJsonObject());
    QTRY_VERIFY(first.isNull());
    result("window.home");
    QVERIFY(host->mainWidget()->isVisible());
}

void TestWindowMethods::backAnswersWithTheResult()
{
    result("window.home");
    QStringList told;
    QObject context;
    connect(&bench::journal(), &bench::Journal::completed, &context,
            [&told](int number) { told << bench::journal().texts(number - 1).first(); });
    const int mark = bench::journal().lastNumber();
    QCOMPARE(result("window.back"), json("{'result':1}"));
    QCOMPARE(bench::journal().texts(mark).first(), QString("framework.backEvent(1)"));
    QCOMPARE(told.last(), QString("framework.backEvent(1)"));
}

void TestWindowMethods::keyAnswersWithTheResult()
{
    result("window.home");
    const int mark = bench::journal().lastNumber();
    QCOMPARE(result("window.key", "{'code':12}"), json("{'result':-1}"));
    QCOMPARE(bench::journal().texts(mark).first(), QString("framework.keyEvent(12, -1)"));
}

void TestWindowMethods::withoutAWindowTheyAreRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    for (const char *method : {"window.show", "window.destroy", "window.back"})
        QTest::newRow(method) << method << QByteArray("{}");
    QTest::newRow("window.key") << "window.key" << QByteArray("{'code':1}");
}

void TestWindowMethods::withoutAWindowTheyAreRefused()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QCOMPARE(error(method, params),
             QString("WrongState: there is no window: window.create comes first"));
}

TESTMODE_TEST_MAIN(TestWindowMethods)
#include "test_windowmethods.moc"
