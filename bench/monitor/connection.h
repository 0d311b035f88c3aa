#pragma once

#include "clientsocket.h"
#include "dispatcher.h"

#include <QByteArray>
#include <QJsonValue>
#include <QSet>

namespace bench {

// Longest line of the monitor in either direction, without its end.
constexpr int kLineBytes = 1024 * 1024;

// One client of the socket: JSON-RPC 2.0, an object a line. GUI thread. Deletes itself
// when the client has gone, or has said its last word and got its answers.
class Connection : public Client
{
    Q_OBJECT

public:
    // Greets the client, and takes the descriptor of its socket over.
    Connection(int descriptor, const QJsonObject &greeting, Dispatcher *calls, QObject *parent);

    void subscribe(const QStringList &events) override;

    // Takes no more calls, tells why, and hangs up.
    void refuse(const CallError &error);

    // Waits a moment until the client has what was written for it.
    void flush();

private:
    void takeLines();
    bool takeLine(QByteArray *line);
    void process(const QByteArray &line);
    void finish(const QJsonValue &id, const QJsonObject &answer);
    void hangUpWhenDone();
    void sendAnswer(const QJsonValue &id, const QJsonObject &answer);
    void sendNotification(const QString &method, const QJsonObject &params);
    void send(const QByteArray &line);

    ClientSocket socket;
    Dispatcher *dispatcher;
    QByteArray received;
    int callsUnderWay = 0;
    bool refused = false;
    QSet<QString> subscribed;
};

} // namespace bench
