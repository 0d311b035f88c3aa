#include "tracelog.h"

namespace bench {

namespace {

TraceLog *active = nullptr;

QString payloadOf(const QString &line)
{
    const QString mark = QStringLiteral(" -- ");
    const int at = line.startsWith(QLatin1String("[DBG]")) ? line.indexOf(mark) : -1;
    return at < 0 ? line : line.mid(at + mark.size());
}

} // namespace

TraceLog::TraceLog(QObject *parent) : QObject(parent)
{
    active = this;
    previous = qInstallMessageHandler(handle);
}

TraceLog::~TraceLog()
{
    qInstallMessageHandler(previous);
    active = nullptr;
}

void TraceLog::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    TraceLog *log = active;
    bool forward = true;
    int number = 0;
    {
        const QMutexLocker lock(&log->mutex);
        if (type == QtDebugMsg) {
            number = log->debugLines.append(text);
            forward = !log->quiet;
        } else if (type != QtInfoMsg) {
            log->warningLines.append(text);
        }
    }
    if (forward && log->previous)
        log->previous(type, context, text);
    if (type == QtDebugMsg)
        emit log->added(text, number);
}

QStringList TraceLog::lines(int since, int *gone) const
{
    const QMutexLocker lock(&mutex);
    if (gone != nullptr)
        *gone = debugLines.goneAfter(since);
    return debugLines.after(since).toList();
}

QStringList TraceLog::payloads(int since) const
{
    QStringList found = lines(since);
    for (QString &line : found)
        line = payloadOf(line);
    return found;
}

QStringList TraceLog::warnings() const
{
    const QMutexLocker lock(&mutex);
    return warningLines.after(0).toList();
}

void TraceLog::clear()
{
    const QMutexLocker lock(&mutex);
    debugLines = {};
    warningLines = {};
}

void TraceLog::setQuiet(bool on)
{
    const QMutexLocker lock(&mutex);
    quiet = on;
}

} // namespace bench
