#include "monitorserver.h"

#include "connection.h"
#include "waiting.h"

#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

#include <sys/stat.h>
#include <sys/un.h>

namespace bench {

namespace {

constexpr int kClients = 32;

bool isSocket(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISSOCK(status.st_mode);
}

bool somebodyAnswers(const QString &path)
{
    QLocalSocket probe;
    probe.connectToServer(path);
    return probe.waitForConnected(0) || probe.state() == QLocalSocket::ConnectedState;
}

// A socket file that a bench left behind is removed; nothing else ever is.
bool makeRoom(const QString &path, QString *error)
{
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink() && !isSocket(path))
        return true;
    if (!isSocket(path)) {
        *error = QStringLiteral("%1 is there and no socket; name another path").arg(path);
        return false;
    }
    if (somebodyAnswers(path)) {
        *error =
            QStringLiteral("another bench answers on %1; end it or name another path").arg(path);
        return false;
    }
    if (!QFile::remove(path)) {
        *error = QStringLiteral("cannot replace the old socket %1; remove it").arg(path);
        return false;
    }
    return true;
}

} // namespace

MonitorServer::MonitorServer(Dispatcher *calls, const QJsonObject &hello, QObject *parent)
    : QObject(parent), dispatcher(calls), greeting(hello),
      server([this](int descriptor) { acceptClient(descriptor); })
{
    server.setSocketOptions(QLocalServer::UserAccessOption);
}

MonitorServer::~MonitorServer()
{
    for (Connection *client : findChildren<Connection *>()) {
        // A wait that ends unanswered tells its client that the bench is closing.
        qDeleteAll(client->findChildren<Waiting *>());
        client->flush();
    }
}

bool MonitorServer::listen(const QString &path, QString *error)
{
    constexpr int longest = sizeof(sockaddr_un::sun_path) - 1;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (QFile::encodeName(absolute).size() > longest) {
        *error =
            QStringLiteral("%1 is too long for a socket, which takes %2 bytes; name a shorter path")
                .arg(absolute)
                .arg(longest);
        return false;
    }
    if (!makeRoom(absolute, error))
        return false;
    // Made in a private folder, then moved here; nobody runs a socket.
    if (!server.listen(absolute)
        || !QFile::setPermissions(absolute, QFile::ReadOwner | QFile::WriteOwner)) {
        *error = QStringLiteral("cannot listen on %1: %2; name a path in a folder that is yours")
                     .arg(absolute, server.errorString());
        return false;
    }
    return true;
}

void MonitorServer::acceptClient(int descriptor)
{
    auto *client = new Connection(descriptor, greeting, dispatcher, this);
    if (findChildren<Connection *>().size() > kClients)
        client->refuse(
            {ErrorClass::Limit, QStringLiteral("the monitor takes %1 clients").arg(kClients)});
}

} // namespace bench
