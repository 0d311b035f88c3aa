#pragma once

#include "event.h"
#include "failurewords.h"
#include "updatephase.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace bench {

// Follows an update by the plug-in's trace, which is all that can be seen of one on a
// real line: tells the phases, the progress over all images, and the step that failed
// with what the receiver had said. Any thread, one at a time.
class TraceReader
{
public:
    explicit TraceReader(EventSink sink) : tell(std::move(sink)) { }

    // Forgets all but the sizes of the images.
    void beginAttempt();

    void read(const QString &line);

    // Tells of the step that failed, once an attempt: the update is over without success.
    void tellFailure();

    UpdatePhase phase() const { return at; }
    qint64 bytesInAll() const;

private:
    struct Mark;
    static const QVector<Mark> &marks();

    // One a line of the trace that matters; given what its pattern captured.
    void imageLoaded(const QStringList &words);
    void portIsNamed(const QStringList &words);
    void portIsOpen(const QStringList &words);
    void resetMoves(const QStringList &words);
    void syncSucceeded(const QStringList &words);
    void syncWentWrong(const QStringList &words);
    void echoIsRead(const QStringList &words);
    void byteIsSent(const QStringList &words);
    void chipIsKnown(const QStringList &words);
    void agentLoads(const QStringList &words);
    void agentBlockSent(const QStringList &words);
    void checksumsCompared(const QStringList &words);
    void agentStarts(const QStringList &words);
    void agentShakesHands(const QStringList &words);
    void imageBegins(const QStringList &words);
    void packetBegins(const QStringList &words);
    void packetIsAnswered(const QStringList &words);
    void packetIsRefused(const QStringList &words);
    void sumsDiffer(const QStringList &words);
    void connectionEnds(const QStringList &words);
    void valueIsRead(const QStringList &words);
    void stepSucceeded(const QStringList &words);
    void stepFailed(const QStringList &words);

    void enter(UpdatePhase phase, const QString &text, Event more = {});
    void keepFailure(const QString &label, const QString &said);
    void packetIsWritten();
    QString packetSaid() const;

    EventSink tell;
    QMap<QString, qint64> imageSizes; // by file name, as the plug-in has read them
    UpdatePhase at = UpdatePhase::Package;
    FailedStep place{};     // where a failure would be now
    bool chipAsked = false; // to identify itself; statuses before that decide nothing
    // Where the echoes went wrong that have been wrong ever since, and the first of them. The
    // plug-in does not compare them and may go on for long with a receiver that has fallen silent.
    std::optional<FailedStep> echoesLostAt;
    QString wrongEcho;
    QString syncSaid; // in a synchronisation that went wrong
    QString openingRate;
    QString checksums;    // that were compared last, in words
    QStringList readings; // since the last step ended

    int packetBytes = 0;
    int refusals = 0; // of the packet
    QString refusalCode;
    QStringList answers; // to the packet
    qint64 written = 0;

    Event failure;
    bool failureTold = false;
};

} // namespace bench
