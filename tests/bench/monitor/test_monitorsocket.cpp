#include "calls.h"
#include "socketclient.h"

#include "tests/support/unittest.h"

#include "bench/monitor/monitorserver.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using tests::json;
using tests::SocketClient;

namespace {

// A socket file as a killed bench leaves it.
void leaveSocketBehind(const QString &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int file = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QVERIFY(::bind(file, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0);
    ::close(file);
}

} // namespace

// The file of the socket: whose it is, and what stands in its place already.
class TestMonitorSocket : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void socketIsForTheUserOnly();
    void socketGoesWithTheServer();
    void leftSocketIsReplaced();
    void socketInUseIsLeftAlone();
    void fileInTheWayIsLeftAlone();
    void pathTooLongIsRefused();
    void folderThatIsNotThere();

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<bench::Dispatcher> dispatcher;
    std::unique_ptr<bench::MonitorServer> server;
};

void TestMonitorSocket::init()
{
    UnitTest::init();
    folder = std::make_unique<QTemporaryDir>();
    path = folder->filePath("monitor");
    dispatcher = std::make_unique<bench::Dispatcher>();
    server = std::make_unique<bench::MonitorServer>(dispatcher.get(),
                                                    json("{'bench':'1.2','protocol':1}"));
    QString error;
    QVERIFY2(server->listen(path, &error), qPrintable(error));
}

void TestMonitorSocket::cleanup()
{
    server.reset();
    dispatcher.reset();
    folder.reset();
    UnitTest::cleanup();
}

void TestMonitorSocket::socketIsForTheUserOnly()
{
    struct stat status = {};
    QVERIFY(::stat(QFile::encodeName(path).constData(), &status) == 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0600));
}

void TestMonitorSocket::socketGoesWithTheServer()
{
    QVERIFY(QFileInfo::exists(path));
    server.reset();
    QVERIFY(!QFileInfo::exists(path));
}

void TestMonitorSocket::leftSocketIsReplaced()
{
    const QString left = folder->filePath("left");
    leaveSocketBehind(left);
    bench::MonitorServer second(dispatcher.get(), json("{'bench':'2'}"));
    QString error;
    QVERIFY2(second.listen(left, &error), qPrintable(error));
    SocketClient client(left);
    QCOMPARE(client.next().value("method"), QJsonValue("bench.hello"));
}

void TestMonitorSocket::socketInUseIsLeftAlone()
{
    bench::MonitorServer second(dispatcher.get(), json("{'bench':'2'}"));
    QString error;
    QVERIFY(!second.listen(path, &error));
    QCOMPARE(error, "another bench answers on " + path + "; end it or name another path");
    SocketClient client(path);
    QCOMPARE(client.next().value("params"), QJsonValue(json("{'bench':'1.2','protocol':1}")));
}

void TestMonitorSocket::fileInTheWayIsLeftAlone()
{
    const QString name = folder->filePath("letter");
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("dear") == 4);
    file.close();
    bench::MonitorServer second(dispatcher.get(), {});
    QString error;
    QVERIFY(!second.listen(name, &error));
    QCOMPARE(error, name + " is there and no socket; name another path");
    QCOMPARE(QFileInfo(name).size(), 4);
}

void TestMonitorSocket::pathTooLongIsRefused()
{
    const QString name = folder->filePath(QString(120, 'n'));
    bench::MonitorServer second(dispatcher.get(), {});
    QString error;
    QVERIFY(!second.listen(name, &error));
    QCOMPARE(error, name + " is too long for a socket, which takes 107 bytes; name a shorter path");
}

void TestMonitorSocket::folderThatIsNotThere()
{
    bench::MonitorServer second(dispatcher.get(), {});
    QString error;
    QVERIFY(!second.listen(folder->filePath("none/monitor"), &error));
    QVERIFY(error.startsWith("cannot listen on " + folder->filePath("none/monitor") + ": "));
}

TESTMODE_TEST_MAIN(TestMonitorSocket)
#include "test_monitorsocket.moc"
