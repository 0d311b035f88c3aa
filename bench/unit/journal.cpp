#include "journal.h"

#include <QJsonDocument>

namespace bench {

namespace {

// A bench that runs for days must not grow for days; dropped in lumps, which costs less.
constexpr int kEntriesKept = 100000;
constexpr int kEntriesDropped = 10000;

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
    JournalEntry entry;
    {
        const QMutexLocker lock(&mutex);
        entry.number = list.isEmpty() ? 1 : list.last().number + 1;
        entry.elapsed = clock.elapsed();
        entry.service = service;
        entry.call = operation;
        entry.arguments = arguments;
        list.append(entry);
        if (list.size() > kEntriesKept + kEntriesDropped)
            list.remove(0, kEntriesDropped);
    }
    emit added(entry.number);
    return entry.number;
}

void Journal::complete(int number, const QJsonArray &arguments)
{
    const QMutexLocker lock(&mutex);
    for (int i = list.size() - 1; i >= 0; --i) {
        if (list.at(i).number == number) {
            list[i].arguments = arguments;
            return;
        }
    }
}

QVector<JournalEntry> Journal::entries(int since) const
{
    const QMutexLocker lock(&mutex);
    QVector<JournalEntry> found;
    for (const JournalEntry &entry : list) {
        if (entry.number > since)
            found.append(entry);
    }
    return found;
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
    return list.isEmpty() ? 0 : list.last().number;
}

void Journal::clear()
{
    const QMutexLocker lock(&mutex);
    list.clear();
}

Journal &journal()
{
    static Journal instance;
    return instance;
}

} // namespace bench
