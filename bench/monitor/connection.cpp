#include "connection.h"

#include <QJsonDocument>
#include <QPointer>
#include <QTimer>

namespace bench {

namespace {

// Further calls stay in the socket until an answer is out.
constexpr int kCallsAtOnce = 64;

// A client that asks and does not read is let go.
constexpr int kUnreadBytes = 16 * 1024 * 1024;

constexpr int kFlushMilliseconds = 500;

// How long a refused client may take to hang up by itself.
constexpr int kPatienceMilliseconds = 2000;

QJsonObject parsed(const QByteArray &line)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError)
        throw CallError(ErrorClass::Parse,
                        QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset));
    if (!document.isObject())
        throw CallError(ErrorClass::Request,
                        QStringLiteral("a call is an object; batches are not taken"));
    return document.object();
}

bool isId(const QJsonValue &value)
{
    return value.isString() || value.isDouble() || value.isNull();
}

void checkRequest(const QJsonObject &line)
{
    const auto refuse = [](const QString &message) {
        throw CallError(ErrorClass::Request, message);
    };
    static const QStringList members = {"jsonrpc", "id", "method", "params"};
    for (const QString &member : line.keys()) {
        if (!members.contains(member))
            refuse(QStringLiteral("a call has no member %1").arg(member));
    }
    if (line.value("jsonrpc") != QJsonValue("2.0"))
        refuse(QStringLiteral("jsonrpc is not \"2.0\""));
    if (!line.value("method").isString())
        refuse(QStringLiteral("method is no text"));
    if (line.contains("params") && !line.value("params").isObject())
        refuse(QStringLiteral("params is no object: arguments go by name"));
    if (line.contains("id") && !isId(line.value("id")))
        refuse(QStringLiteral("id is neither text nor number"));
}

} // namespace

Connection::Connection(int descriptor, const QJsonObject &greeting, Dispatcher *calls,
                       QObject *parent)
    : Client(parent), socket(descriptor), dispatcher(calls)
{
    connect(&socket, &ClientSocket::readyRead, this, &Connection::takeLines);
    connect(&socket, &ClientSocket::bytesWritten, this, &Connection::hangUpWhenDone);
    connect(&socket, &ClientSocket::disconnected, this, &QObject::deleteLater);
    connect(dispatcher, &Dispatcher::eventHappened, this,
            [this](const QString &name, const QJsonObject &params) {
                if (subscribed.contains(name))
                    sendNotification(name, params);
            });
    sendNotification("bench.hello", greeting);
}

void Connection::subscribe(const QStringList &events)
{
    subscribed = QSet<QString>(events.begin(), events.end());
}

void Connection::refuse(const CallError &error)
{
    sendAnswer(QJsonValue::Null, {{"error", error.toJson()}});
    refused = true;
    // Closed with its bytes unread, the client would lose the answer: they are read until it
    // has seen the end.
    socket.shutDownSending();
    QTimer::singleShot(kPatienceMilliseconds, &socket, &ClientSocket::hangUp);
}

void Connection::flush()
{
    socket.flush(kFlushMilliseconds);
}

void Connection::takeLines()
{
    received += socket.read(kLineBytes + 1 - received.size());
    if (refused)
        received.clear();
    QByteArray line;
    while (!refused && callsUnderWay < kCallsAtOnce && takeLine(&line)) {
        if (line.trimmed().isEmpty())
            continue;
        ++callsUnderWay;
        // From the event loop: a call may open a box, whose own loop must find the socket idle.
        QMetaObject::invokeMethod(
            this, [this, line] { process(line); }, Qt::QueuedConnection);
    }
    hangUpWhenDone();
}

bool Connection::takeLine(QByteArray *line)
{
    const int end = received.indexOf('\n');
    if (end > kLineBytes || (end < 0 && received.size() > kLineBytes)) {
        refuse({ErrorClass::Limit, QStringLiteral("a line has at most %1 bytes").arg(kLineBytes)});
        return false;
    }
    if (end < 0)
        return false;
    *line = received.left(end);
    received.remove(0, end + 1);
    return true;
}

void Connection::process(const QByteArray &line)
{
    QJsonValue id = QJsonValue::Null;
    try {
        const QJsonObject request = parsed(line);
        if (isId(request.value("id")))
            id = request.value("id");
        checkRequest(request);
        const bool isNotification = !request.contains("id");
        dispatcher->dispatch(
            request.value("method").toString(), request.value("params").toObject(),
            [connection = QPointer<Connection>(this), id,
             isNotification](const QJsonObject &message) {
                if (connection)
                    connection->finish(isNotification ? QJsonValue::Undefined : id, message);
            },
            this);
    } catch (const CallError &error) {
        finish(id, {{"error", error.toJson()}});
    }
}

void Connection::finish(const QJsonValue &id, const QJsonObject &answer)
{
    --callsUnderWay;
    if (!id.isUndefined())
        sendAnswer(id, answer);
    // A call less: there may be room for one that waits.
    QMetaObject::invokeMethod(this, &Connection::takeLines, Qt::QueuedConnection);
}

// Half a line that has no end is no call.
void Connection::hangUpWhenDone()
{
    if (socket.hasEnded() && callsUnderWay == 0 && !received.contains('\n')
        && socket.bytesToWrite() == 0)
        socket.hangUp();
}

void Connection::sendAnswer(const QJsonValue &id, const QJsonObject &answer)
{
    QJsonObject message = answer;
    message.insert("jsonrpc", "2.0");
    message.insert("id", id);
    const QByteArray line = QJsonDocument(message).toJson(QJsonDocument::Compact);
    if (line.size() <= kLineBytes) {
        send(line);
        return;
    }
    const CallError tooLong(ErrorClass::Limit,
                            QStringLiteral("the answer has %1 bytes, a line at most %2")
                                .arg(line.size())
                                .arg(kLineBytes));
    sendAnswer(id, {{"error", tooLong.toJson()}});
}

void Connection::sendNotification(const QString &method, const QJsonObject &params)
{
    send(QJsonDocument({{"jsonrpc", "2.0"}, {"method", method}, {"params", params}})
             .toJson(QJsonDocument::Compact));
}

void Connection::send(const QByteArray &line)
{
    if (refused)
        return;
    socket.write(line + '\n');
    if (socket.bytesToWrite() > kUnreadBytes)
        socket.hangUp();
}

} // namespace bench
