#include "dialogue.h"

namespace bench {

QString DialogueLine::text() const
{
    static const char *const kArrows[] = {"host -> receiver", "receiver -> host", "event"};
    QString words = QStringLiteral("%1 %2 ms %3").arg(number).arg(elapsed).arg(kArrows[direction]);
    if (direction != Event)
        words += QStringLiteral(" %1 baud").arg(baud);
    if (!step.isEmpty())
        words += QLatin1String(" ") + step;
    words += QLatin1String(": ") + meaning;
    if (length > 0)
        words += QStringLiteral(" [%1%2]").arg(
            QString::fromLatin1(bytes.toHex(' ')),
            length > bytes.size() ? QStringLiteral(" ... %1 bytes").arg(length) : QString());
    return words;
}

namespace chip {

void Dialogue::add(DialogueLine line)
{
    const QByteArray frame = line.bytes;
    line.length = frame.size();
    line.bytes.truncate(kShownBytes);
    {
        const QMutexLocker lock(&mutex);
        line.number = log.lastNumber() + 1;
        log.append(line);
    }
    if (onLine)
        onLine(line, frame);
}

QVector<DialogueLine> Dialogue::lines(int since) const
{
    const QMutexLocker lock(&mutex);
    return log.after(since);
}

void Dialogue::clear()
{
    const QMutexLocker lock(&mutex);
    log.clear();
}

} // namespace chip

} // namespace bench
