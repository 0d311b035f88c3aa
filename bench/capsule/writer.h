#pragma once

#include "format.h"

#include <QMutex>
#include <QSemaphore>
#include <QThread>
#include <QVariantList>
#include <QVector>
#include <QWaitCondition>

#include <functional>

namespace bench {

// Writes the rows of a capsule in a thread of its own, some ten times a second: whoever hands a row
// over waits for no disk, and a process that is killed loses the last tenth of a second. Where the
// disk takes no more, what was written before stays, and the rest is dropped.
class CapsuleWriter : private QThread
{
public:
    // Called once, in the writer's thread, with one line.
    using Complaint = std::function<void(const QString &trouble)>;

    explicit CapsuleWriter(const QString &file, Complaint complaint);
    ~CapsuleWriter() override;

    // The file is there, or what is wrong. Comes first.
    QString start();

    // Any thread. A picture may be given as a QImage.
    void add(CapsuleTable table, const QVariantList &values);

    // Writes what was handed over, and closes the file. Nothing is taken from then on.
    void close();

    // Returns when what was handed over before stands in the file; false: it does not.
    bool flush();

private:
    struct Row
    {
        CapsuleTable table;
        QVariantList values;
    };

    void run() override;
    bool takeRows(QVector<Row> *rows);
    QString write(CapsuleDatabase *database, const QVector<Row> &rows) const;

    const QString file;
    const Complaint complain;
    QSemaphore begun;
    QString startTrouble;

    QMutex mutex;
    QWaitCondition hurry; // no waiting for more
    QWaitCondition written;
    QVector<Row> waiting;
    bool ends = false;
    bool flushes = false;
    bool writing = false;
    bool takesNoMore = true;
};

} // namespace bench
