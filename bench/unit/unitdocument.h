#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QString>
#include <QVector>

#include <functional>
#include <optional>
#include <utility>

namespace bench {

// The state of the unit as one JSON document: a table of paths
// ("gnss.module_kind") over the model's structures. A path may lead on into a
// value that is a list or an object. GUI thread; the model outlives it.
class UnitDocument : public QObject
{
    Q_OBJECT

public:
    // One value of the model.
    struct Entry
    {
        QString path;
        QString type; // in words
        QString description;
        std::function<QJsonValue()> read;
        // What is wrong with a value, beginning with the path inside it (".2.signal: ...") or
        // with ": "; empty: it fits.
        std::function<QString(const QJsonValue &)> check;
        std::function<void(const QJsonValue &)> write; // of a value that fits
    };

    // Why a value was refused; `message` begins with the path of the key.
    struct Problem
    {
        enum Kind { None, UnknownKey, WrongValue };
        Kind kind = None;
        QString message;
    };

    explicit UnitDocument(const QVector<Entry> &paths = {});

    // Further paths, for a party that is no part of the model.
    void add(const Entry &entry);
    const QVector<Entry> &entries() const { return table; }

    // The value or branch at `path`; the empty path is the whole. Empty for an unknown path.
    std::optional<QJsonValue> value(const QString &path) const;

    // Checks the value or branch whole, then writes it. Keys that an object
    // leaves out stay as they are.
    Problem setValue(const QString &path, const QJsonValue &value);

    // Compares with what was told last, and says what is another value now. For a model that
    // has changed by itself: HeadUnit::written() is connected to it.
    void tellChanges();

signals:
    // The value at the path of an entry is another one. Whatever changed together is told
    // together, when all of it stands: once a path, in the order of the table.
    void changed(const QString &path);

private:
    using Change = std::pair<int, QJsonValue>; // row of the table, its new value

    Problem collect(const QString &path, const QJsonValue &value, QVector<Change> *changes) const;
    Problem collectEntry(int row, const QJsonValue &value, QVector<Change> *changes) const;
    int rowOf(const QString &path) const;
    int rowAbove(const QString &path) const;
    bool isBranch(const QString &path) const;

    QVector<Entry> table;
    QVector<QJsonValue> told; // value of each row
    bool writing = false;     // what the rows tell meanwhile waits for the last one
};

// Reads a document from a file into the unit. Empty, or one line that names the
// file, the key and what is wrong; nothing has changed then.
QString loadUnitFile(UnitDocument *document, const QString &file);

} // namespace bench
