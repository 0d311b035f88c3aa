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
    void wrongArgumentsAreRefused_data();
    void wrongArgumentsAreRefused();

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
    const int mark = bench::journal().lastNumber();
    QCOMPARE(result("window.back"), json("{'result':1}"));
    QCOMPARE(bench::journal().texts(mark).first(), QString("framework.backEvent(1)"));
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

void TestWindowMethods::wrongArgumentsAreRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    for (const char *method : {"window.create", "window.home", "window.destroy", "window.back"})
        QTest::addRow("%s with more", method)
            << method << QByteArray("{'x':1}")
            << QString("Argument: x is no parameter of %1; they are: none").arg(method);
    QTest::newRow("window.show with more")
        << "window.show" << QByteArray("{'x':1}")
        << "Argument: x is no parameter of window.show; they are: data";
    QTest::newRow("window.show data") << "window.show" << QByteArray("{'data':1}")
                                      << "Argument: data is a number, wanted is type text";
    QTest::newRow("window.key without code")
        << "window.key" << QByteArray("{}") << "Argument: code is missing";
    QTest::newRow("window.key code") << "window.key" << QByteArray("{'code':'12'}")
                                     << "Argument: code is a text, wanted is type integer";
    QTest::newRow("window.key with more")
        << "window.key" << QByteArray("{'code':1,'x':1}")
        << "Argument: x is no parameter of window.key; they are: code";
}

void TestWindowMethods::wrongArgumentsAreRefused()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QCOMPARE(error(method, params), message);
    QVERIFY(!host->hasWindow());
}

TESTMODE_TEST_MAIN(TestWindowMethods)
#include "test_windowmethods.moc"
