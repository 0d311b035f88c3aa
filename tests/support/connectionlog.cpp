#include "connectionlog.h"

#include <QMetaMethod>
#include <QMutex>

namespace {

struct Connected
{
    QPointer<QObject> sender;
    QString signal;
};

QMutex mutex; // connections are made in any thread
bool recording = false;
QVector<Connected> connections;

} // namespace

void QObject::connectNotify(const QMetaMethod &signal)
{
    const QMutexLocker lock(&mutex);
    if (recording)
        connections.append({this, QString::fromLatin1(signal.methodSignature())});
}

namespace tests {

ConnectionLog::ConnectionLog()
{
    const QMutexLocker lock(&mutex);
    recording = true;
}

ConnectionLog::~ConnectionLog()
{
    const QMutexLocker lock(&mutex);
    recording = false;
    connections.clear();
}

QStringList ConnectionLog::signalsOf(const QObject *sender) const
{
    const QMutexLocker lock(&mutex);
    QStringList found;
    for (const Connected &connection : qAsConst(connections)) {
        if (connection.sender == sender)
            found << connection.signal;
    }
    return found;
}

QVector<QPointer<QObject>> ConnectionLog::senders() const
{
    const QMutexLocker lock(&mutex);
    QVector<QPointer<QObject>> found;
    for (const Connected &connection : qAsConst(connections))
        found << connection.sender;
    return found;
}

} // namespace tests
