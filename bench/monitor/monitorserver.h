#pragma once

#include "dispatcher.h"

#include <QLocalServer>

#include <functional>

namespace bench {

// Hands out the descriptors of its connections instead of sockets.
class DescriptorServer : public QLocalServer
{
    Q_OBJECT

public:
    using Taker = std::function<void(int descriptor)>;

    explicit DescriptorServer(Taker taker) : take(std::move(taker)) { }

protected:
    void incomingConnection(quintptr descriptor) override { take(int(descriptor)); }

private:
    Taker take;
};

// Offers the calls of a dispatcher on a Unix stream socket to clients of this
// user. Lives in the GUI thread; the dispatcher outlives it.
class MonitorServer : public QObject
{
    Q_OBJECT

public:
    // `greeting` is told to every client first.
    MonitorServer(Dispatcher *dispatcher, const QJsonObject &greeting, QObject *parent = nullptr);

    // Hands the clients what was written for them, and removes the socket.
    ~MonitorServer() override;

    // Replaces a socket that nobody answers on. False with one line that names
    // the path and the cure.
    bool listen(const QString &path, QString *error);

private:
    void acceptClient(int descriptor);

    Dispatcher *dispatcher;
    QJsonObject greeting;
    DescriptorServer server;
};

} // namespace bench
