#include "calls.h"
#include "socketclient.h"

#include "tests/support/unittest.h"

#include "bench/monitor/monitorserver.h"
#include "bench/monitor/waiting.h"

#include <QTemporaryDir>

using tests::json;
using tests::SocketClient;

namespace {

constexpr int kMebibyte = 1024 * 1024;

// A call of "echo" whose line has this many bytes.
QByteArray echoOfLength(int bytes)
{
    const QByteArray head = R"({"jsonrpc":"2.0","id":1,"method":"echo","params":{"text":")";
    const QByteArray tail = R"("}})";
    return head + QByteArray(bytes - head.size() - tail.size(), 'x') + tail;
}

} // namespace

// The talk on the socket: greeting, calls, events, misuse and many clients.
class TestMonitorServer : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void greetingComesFirst();
    void callIsAnsweredUnderItsId_data();
    void callIsAnsweredUnderItsId();
    void callWithoutIdIsNotAnswered();
    void severalCallsInOneWrite();
    void callInPieces();
    void blankLinesAreNoCalls();

    void badLinesAreAnswered_data();
    void badLinesAreAnswered();
    void longestLineIsTaken();
    void longerLineEndsTheConnection();
    void lineWithoutEndEndsTheConnection();
    void longerAnswerIsAnError();

    void halfALineIsNoCall();
    void hangUpInMidCall();
    void hangUpEndsTheClientsWaits();
    void lastWordIsAnswered();
    void lastWordOfManyIsAnswered();
    void answersBeyondTheSocketsRoomFollowTheLastWord();
    void waitAfterTheLastWordEndsWithItsClient();
    void closingBenchHandsOutItsAnswers();
    void closingBenchAnswersWaits();
    void tenClientsAtOnce();
    void clientTooManyIsTold();
    void manyCallsAtOnceAreAllAnswered();
    void callsBeyondThoseUnderWayStay();
    void clientThatNeverReadsIsLetGo();

    void eventsAreOffUntilSubscribed();
    void subscriptionsArePerClient();
    void subscriptionReplacesTheOneBefore();
    void subscribeRefuses_data();
    void subscribeRefuses();
    void quitIsAnsweredAndAsked();

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<bench::Dispatcher> dispatcher;
    std::unique_ptr<bench::MonitorServer> server;
    QStringList echoed;
};

void TestMonitorServer::init()
{
    UnitTest::init();
    boxes().leaveAlone();
    folder = std::make_unique<QTemporaryDir>();
    path = folder->filePath("monitor");
    echoed.clear();
    dispatcher = std::make_unique<bench::Dispatcher>();
    dispatcher->add({"echo",
                     {bench::required("text", bench::ParameterType::Text, "")},
                     "",
                     "",
                     bench::direct([this](const bench::Arguments &arguments) {
                         echoed << arguments.text("text");
                         return QJsonObject{{"said", arguments.text("text")}};
                     })});
    dispatcher->add({"never", {bench::timeout()}, "", "", [](const bench::Call &call) {
                         bench::Waiting::start(
                             call, [] { return std::nullopt; },
                             [] { return QStringLiteral("nothing came"); });
                     }});
    dispatcher->addEvent("news", "");
    dispatcher->addEvent("weather", "");
    server = std::make_unique<bench::MonitorServer>(dispatcher.get(),
                                                    json("{'bench':'1.2','protocol':1}"));
    QString error;
    QVERIFY2(server->listen(path, &error), qPrintable(error));
}

void TestMonitorServer::cleanup()
{
    server.reset();
    dispatcher.reset();
    folder.reset();
    UnitTest::cleanup();
}

void TestMonitorServer::greetingComesFirst()
{
    SocketClient client(path);
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':'a'}}");
    QCOMPARE(
        client.next(),
        json("{'jsonrpc':'2.0','method':'bench.hello','params':{'bench':'1.2','protocol':1}}"));
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','id':1,'result':{'said':'a'}}"));
}

void TestMonitorServer::callIsAnsweredUnderItsId_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("number") << QByteArray("7");
    QTest::newRow("text") << QByteArray("'seven'");
    QTest::newRow("null") << QByteArray("null");
}

void TestMonitorServer::callIsAnsweredUnderItsId()
{
    QFETCH(QByteArray, id);
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':" + id + ",'method':'echo','params':{'text':'a'}}");
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','id':" + id + ",'result':{'said':'a'}}"));
    client.sendLine("{'jsonrpc':'2.0','id':" + id + ",'method':'echo'}");
    QCOMPARE(client.next(),
             json("{'jsonrpc':'2.0','id':" + id
                  + ",'error':{'code':-32602,'message':'text is missing',"
                    "'data':{'class':'Argument'}}}"));
}

void TestMonitorServer::callWithoutIdIsNotAnswered()
{
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','method':'echo','params':{'text':'quiet'}}");
    client.sendLine("{'jsonrpc':'2.0','method':'nothing'}");
    client.sendLine("{'jsonrpc':'2.0','id':2,'method':'echo','params':{'text':'loud'}}");
    QCOMPARE(client.next().value("id"), QJsonValue(2));
    QCOMPARE(echoed, QStringList({"quiet", "loud"}));
}

void TestMonitorServer::severalCallsInOneWrite()
{
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':'a'}}\n"
                    "{'jsonrpc':'2.0','id':2,'method':'echo','params':{'text':'b'}}\r");
    QCOMPARE(client.next().value("id"), QJsonValue(1));
    QCOMPARE(client.next().value("id"), QJsonValue(2));
}

void TestMonitorServer::callInPieces()
{
    SocketClient client(path);
    client.next();
    for (const char byte : echoOfLength(100) + '\n') {
        client.send(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    QCOMPARE(client.next().value("id"), QJsonValue(1));
}

void TestMonitorServer::blankLinesAreNoCalls()
{
    SocketClient client(path);
    client.next();
    client.send("\n  \n\r\n" + echoOfLength(100) + '\n');
    QCOMPARE(client.next().value("id"), QJsonValue(1));
}

void TestMonitorServer::badLinesAreAnswered_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("errorClass");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("no JSON") << QByteArray("click it") << "Parse" << -32700 << QByteArray("null");
    QTest::newRow("cut off") << QByteArray("{'jsonrpc':'2.0'") << "Parse" << -32700
                             << QByteArray("null");
    QTest::newRow("invalid UTF-8")
        << QByteArray("{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':'\xC3\x28'}}")
        << "Parse" << -32700 << QByteArray("null");
    QTest::newRow("stray byte") << QByteArray("\xFF\xFE") << "Parse" << -32700
                                << QByteArray("null");
    QTest::newRow("batch") << QByteArray("[{'jsonrpc':'2.0','id':1,'method':'echo'}]") << "Request"
                           << -32600 << QByteArray("null");
    QTest::newRow("no version") << QByteArray("{'id':1,'method':'echo'}") << "Request" << -32600
                                << QByteArray("1");
    QTest::newRow("other version") << QByteArray("{'jsonrpc':2,'id':1,'method':'echo'}")
                                   << "Request" << -32600 << QByteArray("1");
    QTest::newRow("no method") << QByteArray("{'jsonrpc':'2.0','id':1}") << "Request" << -32600
                               << QByteArray("1");
    QTest::newRow("arguments by place")
        << QByteArray("{'jsonrpc':'2.0','id':1,'method':'echo','params':['a']}") << "Request"
        << -32600 << QByteArray("1");
    QTest::newRow("id is an object")
        << QByteArray("{'jsonrpc':'2.0','id':{},'method':'echo','params':{'text':'a'}}")
        << "Request" << -32600 << QByteArray("null");
    QTest::newRow("unknown member")
        << QByteArray("{'jsonrpc':'2.0','id':1,'method':'echo','param':{'text':'a'}}") << "Request"
        << -32600 << QByteArray("1");
    QTest::newRow("unknown method") << QByteArray("{'jsonrpc':'2.0','id':1,'method':'nothing'}")
                                    << "UnknownMethod" << -32601 << QByteArray("1");
    QTest::newRow("unknown argument")
        << QByteArray("{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':'a','x':1}}")
        << "Argument" << -32602 << QByteArray("1");
    QTest::newRow("wrong type") << QByteArray(
        "{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':1}}")
                                << "Argument" << -32602 << QByteArray("1");
}

void TestMonitorServer::badLinesAreAnswered()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, errorClass);
    QFETCH(int, code);
    QFETCH(QByteArray, id);
    SocketClient client(path);
    client.next();
    client.sendLine(line);
    const QJsonObject answer = client.next();
    const QJsonObject error = answer.value("error").toObject();
    QCOMPARE(error.value("data"), QJsonValue(QJsonObject{{"class", errorClass}}));
    QCOMPARE(error.value("code"), QJsonValue(code));
    QCOMPARE(answer.value("id"), json("{'id':" + id + "}").value("id"));
    QCOMPARE(echoed, QStringList());

    // The connection serves on.
    client.send(echoOfLength(100) + '\n');
    QVERIFY(client.next().contains("result"));
}

void TestMonitorServer::longestLineIsTaken()
{
    SocketClient client(path);
    client.next();
    client.send(echoOfLength(kMebibyte) + '\n');
    // The answer repeats the text, but has a shorter frame around it.
    QCOMPARE(client.next().value("id"), QJsonValue(1));
    QCOMPARE(echoed.size(), 1);
}

void TestMonitorServer::longerLineEndsTheConnection()
{
    SocketClient client(path);
    client.next();
    client.send(echoOfLength(kMebibyte + 1) + '\n' + echoOfLength(100) + '\n');
    QCOMPARE(client.nextError(), QString("Limit"));
    QTRY_VERIFY(client.isGone());
    QVERIFY(!client.hasLine());
    QCOMPARE(echoed, QStringList());
}

void TestMonitorServer::lineWithoutEndEndsTheConnection()
{
    SocketClient client(path);
    client.next();
    client.send(QByteArray(2 * kMebibyte, ' '));
    QCOMPARE(client.nextError(), QString("Limit"));
    QTRY_VERIFY(client.isGone());
}

void TestMonitorServer::longerAnswerIsAnError()
{
    dispatcher->add({"talk", {}, "", "", bench::direct([](const bench::Arguments &) {
                         return QJsonObject{{"words", QString(kMebibyte, 'w')}};
                     })});
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'talk'}");
    QCOMPARE(client.nextError(), QString("Limit"));
    QVERIFY(!client.isGone());
}

void TestMonitorServer::halfALineIsNoCall()
{
    {
        SocketClient client(path);
        client.next();
        client.send(echoOfLength(100)); // whole, but for its end
    }
    SocketClient other(path);
    other.next();
    other.sendLine("{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':'other'}}");
    other.next();
    QCOMPARE(echoed, QStringList({"other"}));
}

void TestMonitorServer::hangUpInMidCall()
{
    {
        SocketClient client(path);
        client.next();
        client.sendLine("{'jsonrpc':'2.0','id':1,'method':'never','params':{'timeout_ms':100}}");
        client.sendLine("{'jsonrpc':'2.0','id':2,'method':'echo','params':{'text':'a'}}");
        client.next();
        client.hangUp();
    }
    QTest::qWait(200); // past the end of the wait
    SocketClient other(path);
    QCOMPARE(other.next().value("method"), QJsonValue("bench.hello"));
}

void TestMonitorServer::hangUpEndsTheClientsWaits()
{
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'never','params':{'timeout_ms':600000}}");
    QTRY_COMPARE(server->findChildren<bench::Waiting *>().size(), 1);
    client.hangUp();
    QTRY_COMPARE(server->findChildren<bench::Waiting *>().size(), 0);
}

void TestMonitorServer::lastWordIsAnswered()
{
    SocketClient client(path);
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'never','params':{'timeout_ms':100}}");
    client.sendLine("{'jsonrpc':'2.0','id':2,'method':'echo','params':{'text':'a'}}");
    client.send(echoOfLength(100)); // half a line: no call
    client.endSending();
    QCOMPARE(client.next().value("method"), QJsonValue("bench.hello"));
    QCOMPARE(client.next().value("id"), QJsonValue(2));
    QCOMPARE(client.nextError(), QString("Timeout"));
    QTRY_VERIFY(client.isGone());
    QVERIFY(!client.hasLine());
    QCOMPARE(echoed, QStringList({"a"}));
}

void TestMonitorServer::lastWordOfManyIsAnswered()
{
    SocketClient client(path);
    for (int i = 0; i < 1000; ++i)
        client.sendLine("{'jsonrpc':'2.0','id':" + QByteArray::number(i)
                        + ",'method':'echo','params':{'text':'a'}}");
    client.endSending();
    QCOMPARE(client.next().value("method"), QJsonValue("bench.hello"));
    for (int i = 0; i < 1000; ++i)
        QCOMPARE(client.next().value("id"), QJsonValue(i));
    QTRY_VERIFY(client.isGone());
}

void TestMonitorServer::answersBeyondTheSocketsRoomFollowTheLastWord()
{
    constexpr int kAnswers = 8; // of which the kernel takes less than one
    dispatcher->add({"talk", {}, "", "", bench::direct([](const bench::Arguments &) {
                         return QJsonObject{{"words", QString(kMebibyte / 2, 'w')}};
                     })});
    SocketClient client(path);
    for (int i = 0; i < kAnswers; ++i)
        client.sendLine("{'jsonrpc':'2.0','id':" + QByteArray::number(i) + ",'method':'talk'}");
    client.endSending();
    QCOMPARE(client.next().value("method"), QJsonValue("bench.hello"));
    for (int i = 0; i < kAnswers; ++i)
        QCOMPARE(client.next().value("id"), QJsonValue(i));
    QTRY_VERIFY(client.isGone());
}

void TestMonitorServer::waitAfterTheLastWordEndsWithItsClient()
{
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'never','params':{'timeout_ms':600000}}");
    client.endSending();
    QTRY_COMPARE(server->findChildren<bench::Waiting *>().size(), 1);
    client.hangUp();
    QTRY_COMPARE(server->findChildren<bench::Waiting *>().size(), 0);
}

void TestMonitorServer::closingBenchHandsOutItsAnswers()
{
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'echo','params':{'text':'a'}}");
    QTRY_COMPARE(echoed.size(), 1);
    server.reset();
    QCOMPARE(client.next().value("result"), QJsonValue(json("{'said':'a'}")));
    QTRY_VERIFY(client.isGone());
}

void TestMonitorServer::closingBenchAnswersWaits()
{
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':7,'method':'never','params':{'timeout_ms':600000}}");
    QTRY_COMPARE(server->findChildren<bench::Waiting *>().size(), 1);
    server.reset();
    QCOMPARE(client.next(),
             json("{'jsonrpc':'2.0','id':7,'error':{'code':-32010,"
                  "'message':'the bench is closing','data':{'class':'Unavailable'}}}"));
    QTRY_VERIFY(client.isGone());
}

void TestMonitorServer::tenClientsAtOnce()
{
    std::vector<std::unique_ptr<SocketClient>> clients;
    for (int i = 0; i < 10; ++i)
        clients.push_back(std::make_unique<SocketClient>(path));
    for (int round = 0; round < 20; ++round) {
        for (size_t i = 0; i < clients.size(); ++i)
            clients[i]->sendLine("{'jsonrpc':'2.0','id':" + QByteArray::number(round)
                                 + ",'method':'echo','params':{'text':'"
                                 + QByteArray::number(int(i)) + "'}}");
    }
    for (size_t i = 0; i < clients.size(); ++i) {
        QCOMPARE(clients[i]->next().value("method"), QJsonValue("bench.hello"));
        for (int round = 0; round < 20; ++round) {
            const QJsonObject answer = clients[i]->next();
            QCOMPARE(answer.value("id"), QJsonValue(round));
            QCOMPARE(answer.value("result"), QJsonValue(QJsonObject{{"said", QString::number(i)}}));
        }
    }
}

void TestMonitorServer::clientTooManyIsTold()
{
    std::vector<std::unique_ptr<SocketClient>> clients;
    for (int i = 0; i < 32; ++i) {
        clients.push_back(std::make_unique<SocketClient>(path));
        QCOMPARE(clients.back()->next().value("method"), QJsonValue("bench.hello"));
    }
    {
        SocketClient client(path);
        QCOMPARE(client.next().value("method"), QJsonValue("bench.hello"));
        QCOMPARE(client.nextError(), QString("Limit"));
        QTRY_VERIFY(client.isGone());
    }
    clients.pop_back();
    QCoreApplication::processEvents();
    SocketClient client(path);
    client.next();
    client.send(echoOfLength(100) + '\n');
    QVERIFY(client.next().contains("result"));
}

void TestMonitorServer::manyCallsAtOnceAreAllAnswered()
{
    SocketClient client(path);
    client.next();
    for (int i = 0; i < 1000; ++i)
        client.sendLine("{'jsonrpc':'2.0','id':" + QByteArray::number(i)
                        + ",'method':'echo','params':{'text':'a'}}");
    for (int i = 0; i < 1000; ++i)
        QCOMPARE(client.next().value("id"), QJsonValue(i));
}

void TestMonitorServer::callsBeyondThoseUnderWayStay()
{
    std::vector<bench::Responder> held;
    dispatcher->add(
        {"hold", {}, "", "", [&held](const bench::Call &call) { held.push_back(call.responder); }});
    SocketClient client(path);
    client.next();
    for (int i = 1; i <= 64; ++i)
        client.sendLine("{'jsonrpc':'2.0','id':" + QByteArray::number(i) + ",'method':'hold'}");
    client.sendLine("{'jsonrpc':'2.0','id':65,'method':'echo','params':{'text':'a'}}");
    QTRY_COMPARE(held.size(), size_t(64));
    QTest::qWait(50);
    QCOMPARE(echoed, QStringList());

    // One of them ends: there is room for the next.
    held.at(39).succeed();
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','id':40,'result':{}}"));
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','id':65,'result':{'said':'a'}}"));
}

void TestMonitorServer::clientThatNeverReadsIsLetGo()
{
    SocketClient idle(path);
    idle.next();
    idle.sendLine(
        "{'jsonrpc':'2.0','id':1,'method':'bench.subscribe','params':{'events':['news']}}");
    idle.next();
    QTRY_COMPARE(server->findChildren<bench::Client *>().size(), 1);
    // No event loop turns meanwhile: nobody reads.
    const QJsonObject news{{"text", QString(kMebibyte / 2, 'n')}};
    for (int i = 0; i < 50; ++i)
        emit dispatcher->eventHappened("news", news);
    QTRY_COMPARE(server->findChildren<bench::Client *>().size(), 0);
}

void TestMonitorServer::eventsAreOffUntilSubscribed()
{
    SocketClient client(path);
    client.next();
    emit dispatcher->eventHappened("news", json("{'text':'unheard'}"));
    client.sendLine(
        "{'jsonrpc':'2.0','id':1,'method':'bench.subscribe','params':{'events':['news']}}");
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','id':1,'result':{'events':['news']}}"));
    emit dispatcher->eventHappened("weather", json("{'text':'rain'}"));
    emit dispatcher->eventHappened("news", json("{'text':'heard'}"));
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','method':'news','params':{'text':'heard'}}"));
}

void TestMonitorServer::subscriptionsArePerClient()
{
    SocketClient one(path);
    SocketClient two(path);
    one.next();
    two.next();
    one.sendLine(
        "{'jsonrpc':'2.0','id':1,'method':'bench.subscribe','params':{'events':['news']}}");
    one.next();
    emit dispatcher->eventHappened("news", json("{'text':'a'}"));
    QCOMPARE(one.next().value("method"), QJsonValue("news"));
    two.send(echoOfLength(100) + '\n');
    QCOMPARE(two.next().value("id"), QJsonValue(1));
}

void TestMonitorServer::subscriptionReplacesTheOneBefore()
{
    SocketClient client(path);
    client.next();
    for (const char *events : {"['news']", "[]"}) {
        client.sendLine("{'jsonrpc':'2.0','id':1,'method':'bench.subscribe','params':{'events':"
                        + QByteArray(events) + "}}");
        client.next();
    }
    emit dispatcher->eventHappened("news", json("{'text':'a'}"));
    client.send(echoOfLength(100) + '\n');
    QCOMPARE(client.next().value("id"), QJsonValue(1));
}

void TestMonitorServer::subscribeRefuses_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("errorClass");
    QTest::newRow("unknown event") << QByteArray("{'events':['gossip']}") << "NotFound";
    QTest::newRow("no name") << QByteArray("{'events':[1]}") << "NotFound";
    QTest::newRow("no list") << QByteArray("{'events':'news'}") << "Argument";
    QTest::newRow("missing") << QByteArray("{}") << "Argument";
    QTest::newRow("unknown key") << QByteArray("{'events':[],'x':1}") << "Argument";
}

void TestMonitorServer::subscribeRefuses()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, errorClass);
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'bench.subscribe','params':" + params + "}");
    QCOMPARE(client.nextError(), errorClass);
    // From inside the process nothing can be sent.
    QCOMPARE(tests::errorOf(dispatcher.get(), "bench.subscribe", "{'events':[]}"),
             QString("Unavailable: only a client of the socket can subscribe"));
}

void TestMonitorServer::quitIsAnsweredAndAsked()
{
    QSignalSpy asked(dispatcher.get(), &bench::Dispatcher::quitRequested);
    SocketClient client(path);
    client.next();
    client.sendLine("{'jsonrpc':'2.0','id':1,'method':'bench.quit','params':{'now':true}}");
    QCOMPARE(client.nextError(), QString("Argument"));
    QCOMPARE(asked.count(), 0);
    client.sendLine("{'jsonrpc':'2.0','id':2,'method':'bench.quit'}");
    QCOMPARE(client.next(), json("{'jsonrpc':'2.0','id':2,'result':{}}"));
    QCOMPARE(asked.count(), 1);
}

TESTMODE_TEST_MAIN(TestMonitorServer)
#include "test_monitorserver.moc"
