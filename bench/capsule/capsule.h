#pragma once

#include "progress.h"
#include "verdicts.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QVector>

#include <optional>

namespace bench {

// A capsule as it was written.
struct Capsule
{
    struct PackageFile
    {
        QString name;
        qint64 size = 0;
        QByteArray bytes; // null: too large to be kept
    };
    struct Input
    {
        int number = 0;
        qint64 ms = 0;
        int journal = 0; // what had happened by then: see Progress
        int frames = 0;
        QString call;
        QJsonObject arguments;
        bool refused = false;
    };
    struct Frame
    {
        qint64 ms = 0;
        QString direction; // "to-receiver", "to-host", "event"
        int baud = 0;
        QString step;
        QString meaning;
        QByteArray bytes;
    };
    struct JournalEntry
    {
        qint64 ms = 0;
        QString service;
        QString call;
        QString arguments; // JSON
    };

    QMap<QString, QString> meta;
    QVector<PackageFile> package;
    QJsonObject unit;            // at the start
    std::optional<Progress> end; // empty: the bench was killed before it was told to end
    QVector<Input> inputs;
    QVector<Frame> frames;
    QVector<JournalEntry> journal;
    QStringList trace;
    Verdicts verdicts; // "update 1" …, and what stands in the file

    // The bench came to its end, and was not killed.
    bool isComplete() const { return verdicts.contains(kFlashSubject); }
};

// Empty, or one line that names the file, what is wrong and the cure.
QString readCapsule(const QString &file, Capsule *capsule);

} // namespace bench
