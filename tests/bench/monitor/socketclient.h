#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QtTest>

#include <sys/socket.h>

namespace tests {

// A client of the monitor in the test's own thread, down to the bytes.
class SocketClient
{
public:
    explicit SocketClient(const QString &path) { socket.connectToServer(path); }

    void send(const QByteArray &bytes)
    {
        socket.write(bytes);
        socket.flush();
    }

    // A call as a line; ' stands for ".
    void sendLine(QByteArray line) { send(line.replace('\'', '"') + '\n'); }

    // The next line; empty after five seconds without one, or when the server hung up.
    QJsonObject next()
    {
        [this] { QTRY_VERIFY(socket.canReadLine() || isGone()); }();
        return QJsonDocument::fromJson(socket.readLine()).object();
    }

    // The class of the error in the next line.
    QString nextError()
    {
        return next().value("error").toObject().value("data").toObject().value("class").toString();
    }

    bool isGone() const { return socket.state() == QLocalSocket::UnconnectedState; }
    bool hasLine() const { return socket.canReadLine(); }
    void hangUp() { socket.abort(); }

    // As `nc -N` at the end of its input: says no more, and listens on.
    void endSending()
    {
        [this] { QTRY_COMPARE(socket.bytesToWrite(), qint64(0)); }();
        ::shutdown(int(socket.socketDescriptor()), SHUT_WR);
    }

private:
    QLocalSocket socket;
};

} // namespace tests
