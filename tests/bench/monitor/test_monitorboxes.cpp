#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/monitorserver.h"
#include "bench/monitor/uimethods.h"

#include <QLocalSocket>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>

using tests::json;

namespace {

// A client in a thread of its own: the event loop of the test stands still while a box runs its.
class BlockingClient
{
public:
    explicit BlockingClient(const QString &path)
    {
        socket.connectToServer(path);
        next(); // the greeting
    }

    // A call as "'ui.click','params':{...}"; ' stands for ".
    void send(QByteArray call)
    {
        socket.write("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":" + call.replace('\'', '"') + "}\n");
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(5000)) { }
    }

    QJsonObject next()
    {
        while (!socket.canReadLine() && socket.waitForReadyRead(5000)) { }
        return QJsonDocument::fromJson(socket.readLine()).object();
    }

    QJsonObject ask(const QByteArray &call)
    {
        send(call);
        return next();
    }

private:
    QLocalSocket socket;
};

QString firstBoxOf(const QJsonObject &answer)
{
    const QJsonArray open = answer.value("result").toObject().value("boxes").toArray();
    return open.at(0).toObject().value("text").toString();
}

} // namespace

// The socket while a message box, opened by a call, runs an event loop of its own.
class TestMonitorBoxes : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void callsAreAnsweredWhileABoxIsOpen();
    void boxOutlivesTheClientThatOpenedIt();

private:
    void runBeside(const std::function<void()> &clients);

    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<QWidget> screen;
    std::unique_ptr<bench::Dispatcher> dispatcher;
    std::unique_ptr<bench::MonitorServer> server;
    bool answered = false; // the box has been closed
};

void TestMonitorBoxes::init()
{
    UnitTest::init();
    boxes().leaveAlone();
    folder = std::make_unique<QTemporaryDir>();
    path = folder->filePath("monitor");

    answered = false;
    screen = std::make_unique<QWidget>();
    screen->setFixedSize(400, 300);
    auto *key = new QPushButton(screen.get());
    key->setObjectName("key");
    key->setGeometry(20, 20, 120, 40);
    connect(key, &QPushButton::clicked, key, [this] {
        QMessageBox::information(screen.get(), "Result", "All done");
        answered = true;
    });

    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::UiMethods::addTo(dispatcher.get(), screen.get(), [] { return QImage(); });
    server = std::make_unique<bench::MonitorServer>(dispatcher.get(), QJsonObject());
    QString error;
    QVERIFY2(server->listen(path, &error), qPrintable(error));
    screen->show();
    QVERIFY(QTest::qWaitForWindowExposed(screen.get()));
}

void TestMonitorBoxes::cleanup()
{
    server.reset();
    dispatcher.reset();
    screen.reset();
    folder.reset();
    UnitTest::cleanup();
}

void TestMonitorBoxes::runBeside(const std::function<void()> &clients)
{
    const std::unique_ptr<QThread> thread(QThread::create(clients));
    thread->start();
    [&thread] { QTRY_VERIFY_WITH_TIMEOUT(thread->isFinished(), 20000); }();
    thread->wait();
}

void TestMonitorBoxes::callsAreAnsweredWhileABoxIsOpen()
{
    QVector<QJsonObject> answers;
    runBeside([&] {
        BlockingClient client(path);
        for (const char *call : {"'ui.click','params':{'object':'key'}", "'ui.boxes'",
                                 "'ui.state','params':{'object':'key'}",
                                 "'ui.answer','params':{'button':'OK'}", "'ui.boxes'"})
            answers << client.ask(call);
    });
    QCOMPARE(answers.at(0).value("result"), QJsonValue(json("{'delivered_to':'key'}")));
    QCOMPARE(firstBoxOf(answers.at(1)), QString("All done"));
    QCOMPARE(answers.at(2).value("result").toObject().value("class"), QJsonValue("QPushButton"));
    QVERIFY(answers.at(3).contains("result"));
    QCOMPARE(answers.at(4).value("result"), QJsonValue(json("{'boxes':[]}")));
    QVERIFY(answered);
}

// Another one finds the box and closes it.
void TestMonitorBoxes::boxOutlivesTheClientThatOpenedIt()
{
    QVector<QJsonObject> answers;
    runBeside([&] {
        BlockingClient(path).send("'ui.click','params':{'object':'key'}"); // and hangs up
        BlockingClient client(path);
        for (const char *call :
             {"'ui.boxes','params':{'timeout_ms':5000}", "'ui.answer','params':{'button':'OK'}"})
            answers << client.ask(call);
    });
    QCOMPARE(firstBoxOf(answers.at(0)), QString("All done"));
    QVERIFY(answers.at(1).contains("result"));
    QTRY_VERIFY(answered);
    QTRY_COMPARE(server->findChildren<bench::Client *>().size(), 0);
}

TESTMODE_TEST_MAIN(TestMonitorBoxes)
#include "test_monitorboxes.moc"
