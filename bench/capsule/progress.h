#pragma once

#include <QJsonObject>
#include <QMutex>
#include <QString>

namespace bench {

// How far a run has come, told by what it did and not by the clock.
struct Progress
{
    int journal = 0;      // entries but those that the pages make while they draw
    int frames = 0;       // of the exchanges after the synchronisation
    int updatesBegun = 0; // in the plug-in's trace
    int updatesEnded = 0;

    static Progress fromJson(const QJsonObject &object);
    QJsonObject toJson() const;

    // The other has come as far, as far as inputs are concerned.
    bool isReachedBy(const Progress &other) const
    {
        return other.journal >= journal && other.frames >= frames;
    }
};

// A call that says nothing of what the run does.
bool isDrawing(const QString &service);

// How often the host has to ask until the receiver is in step is a matter of the machine's load.
bool isOfSync(const QString &step);

enum class UpdateMark { None, Begun, Succeeded, Failed };
UpdateMark updateMark(const QString &traceLine);

// Counts while it happens. Any thread.
class ProgressCounter
{
public:
    void countJournal(const QString &service);
    // `direction`: "to-receiver", "to-host" or "event".
    void countFrame(const QString &direction, const QString &step);
    void countTrace(const QString &line);
    Progress now() const;

private:
    mutable QMutex mutex;
    Progress count;
};

} // namespace bench
