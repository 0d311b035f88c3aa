#include "journal.h"

#include <QJsonDocument>

namespace bench {

namespace {

QString argumentText(const QJsonValue &value)
{
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

} // namespace

QString JournalEntry::text() const
{
    if (service == QLatin1String("shell"))
        return QStringLiteral("shell: ") + call;
    QStringList words;
    for (const QJsonValue &value : arguments)
        words << argumentText(value);
    return QStringLiteral("%1.%2(%3)").arg(service, call, words.join(QStringLiteral(", ")));
}

Journal::Journal(QObject *parent) : QObject(parent)
{
    clock.start();
}

int Journal::call(const QString &service, const QString &operation, const QJsonArray &arguments)
{
    const int number = begin(service, operation, arguments);
    emit completed(number);
    return number;
}

int Journal::begin(const QString &service, const QString &operation, const QJsonArray &arguments)
{
    JournalEntry entry;
    {
        const QMutexLocker lock(&mutex);
        entry.number = log.lastNumber() + 1;
        entry.elapsed = clock.elapsed();
        entry.service = service;
        entry.call = operation;
        entry.arguments = arguments;
        log.append(entry);
    }
    emit added(entry.number);
    return entry.number;
}

void Journal::complete(int number, const QJsonArray &arguments)
{
    {
        const QMutexLocker lock(&mutex);
        JournalEntry *entry = log.find(number);
        if (entry == nullptr)
            return;
        entry->arguments = arguments;
    }
    emit completed(number);
}

QVector<JournalEntry> Journal::entries(int since) const
{
    const QMutexLocker lock(&mutex);
    return log.after(since);
}

QStringList Journal::texts(int since) const
{
    QStringList texts;
    const QVector<JournalEntry> found = entries(since);
    for (const JournalEntry &entry : found)
        texts << entry.text();
    return texts;
}

int Journal::lastNumber() const
{
    const QMutexLocker lock(&mutex);
    return log.lastNumber();
}

void Journal::clear()
{
    const QMutexLocker lock(&mutex);
    log = {};
}

Journal &journal()
{
    static Journal instance;
    return instance;
}

} // namespace bench
