#include "client.h"

#include <QElapsedTimer>
#include <QJsonDocument>

namespace ctl {

namespace {

// More than a bench lets any call wait, in milliseconds; it refuses longer ones itself.
constexpr int kLongestWait = 24 * 3600 * 1000;

} // namespace

bool Client::connectTo(const QString &socketPath)
{
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(patienceMilliseconds))
        return fail(bench::kNotThere,
                    QStringLiteral("no bench answers on %1 (%2); start one with 'testmode-bench "
                                   "--monitor %1' or name another socket")
                        .arg(socketPath, socket.errorString()));
    QJsonObject hello;
    if (!readMessage(patienceMilliseconds, &hello))
        return false;
    if (hello.value(QStringLiteral("method")) != QJsonValue(QStringLiteral("bench.hello")))
        return fail(bench::kNotThere,
                    QStringLiteral("what answers on %1 is no bench").arg(socketPath));
    return true;
}

bool Client::call(const CallLine &call, QJsonObject *result)
{
    const QJsonObject request{
        {"jsonrpc", "2.0"}, {"id", ++lastId}, {"method", call.method}, {"params", call.params}};
    socket.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');

    const int ownWait =
        qBound(0, call.params.value(QStringLiteral("timeout_ms")).toInt(), kLongestWait);
    QJsonObject answer;
    do {
        if (!readMessage(patienceMilliseconds + ownWait, &answer))
            return false;
    } while (answer.value(QStringLiteral("id")) != QJsonValue(lastId)
             && !answer.value(QStringLiteral("id")).isNull()); // events come in between

    const QJsonObject error = answer.value(QStringLiteral("error")).toObject();
    if (!error.isEmpty())
        return fail(
            bench::kCheckFailed,
            QStringLiteral("%1: %2").arg(error.value(QStringLiteral("data"))
                                             .toObject()
                                             .value(QStringLiteral("class"))
                                             .toString(),
                                         error.value(QStringLiteral("message")).toString()));
    *result = answer.value(QStringLiteral("result")).toObject();
    return true;
}

bool Client::readMessage(int milliseconds, QJsonObject *message)
{
    QElapsedTimer clock;
    clock.start();
    while (!socket.canReadLine()) {
        const int left = milliseconds - int(clock.elapsed());
        if (left <= 0)
            return fail(bench::kTimedOut,
                        QStringLiteral("no answer after %1 s").arg(milliseconds / 1000.0));
        if (!socket.waitForReadyRead(left) && socket.state() != QLocalSocket::ConnectedState
            && !socket.canReadLine())
            return fail(bench::kNotThere, QStringLiteral("the bench has hung up"));
    }
    *message = QJsonDocument::fromJson(socket.readLine()).object();
    return true;
}

bool Client::fail(ExitStatus status, const QString &error)
{
    lastStatus = status;
    lastError = error;
    return false;
}

} // namespace ctl
