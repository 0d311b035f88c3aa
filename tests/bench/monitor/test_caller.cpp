#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/caller.h"

#include <QThread>

using tests::json;

// Calls from a thread of their own, as the tour makes them.
class TestCaller : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void resultComesBack();
    void errorComesBack();
    void handlerRunsInTheDispatchersThread();
    void callIsAnsweredWhenTheDispatcherGoes();

private:
    // The answer of a call that is made in another thread while this one turns its event loop.
    QJsonObject callFromOutside(bench::Dispatcher *dispatcher, const QString &method,
                                const QJsonObject &params);
};

QJsonObject TestCaller::callFromOutside(bench::Dispatcher *dispatcher, const QString &method,
                                        const QJsonObject &params)
{
    QJsonObject answer;
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { answer = bench::Caller(dispatcher).call(method, params); }));
    thread->start();
    [&] { QTRY_VERIFY(thread->isFinished()); }();
    thread->wait();
    return answer;
}

void TestCaller::resultComesBack()
{
    bench::Dispatcher dispatcher;
    dispatcher.add({"echo",
                    {bench::required("text", bench::ParameterType::Text, "")},
                    "",
                    "",
                    bench::direct([](const bench::Arguments &arguments) {
                        return QJsonObject{{"said", arguments.text("text")}};
                    })});
    QCOMPARE(callFromOutside(&dispatcher, "echo", json("{'text':'a'}")),
             json("{'result':{'said':'a'}}"));
}

void TestCaller::errorComesBack()
{
    bench::Dispatcher dispatcher;
    QCOMPARE(callFromOutside(&dispatcher, "nothing", {}),
             json("{'error':{'code':-32601,'message':'no method nothing',"
                  "'data':{'class':'UnknownMethod'}}}"));
}

void TestCaller::handlerRunsInTheDispatchersThread()
{
    bench::Dispatcher dispatcher;
    QThread *ranIn = nullptr;
    dispatcher.add({"look", {}, "", "", bench::direct([&](const bench::Arguments &) {
                        ranIn = QThread::currentThread();
                        return QJsonObject();
                    })});
    QCOMPARE(callFromOutside(&dispatcher, "look", {}), json("{'result':{}}"));
    QCOMPARE(ranIn, QThread::currentThread());
}

void TestCaller::callIsAnsweredWhenTheDispatcherGoes()
{
    auto dispatcher = std::make_unique<bench::Dispatcher>();
    QJsonObject answer;
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { answer = bench::Caller(dispatcher.get()).call("bench.schema"); }));
    thread->start();
    // The call is posted, but never runs: this thread turns no event loop meanwhile.
    QTest::qSleep(50);
    dispatcher.reset();
    QVERIFY(thread->wait(5000));
    QCOMPARE(answer,
             json("{'error':{'code':-32010,'message':'the bench is closing',"
                  "'data':{'class':'Unavailable'}}}"));
}

TESTMODE_TEST_MAIN(TestCaller)
#include "test_caller.moc"
