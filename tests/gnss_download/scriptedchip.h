#pragma once

// knob                what it does                                            untouched
// play(dialogue)      what head unit and chip say, in order; all is compared  chip is silent
// repeat(dialogue)    said again and again once the played one is over        nothing follows
// goSilentAt(step)    from that step's first answer on nothing comes, and what is sent is only kept
// opens = false       the port cannot be opened                               it can
// takesTime = true    a read without an answer lasts a millisecond a poll     no time

#include "dialogue.h"

#include "gnss_download/uart_types.h"

#include <QByteArray>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QVector>

#include <cstdint>

class ugrade_thread;

namespace tests {

// Stands in for transport and receiver on a worker's hdl_uart_* signals: works
// in the thread that emits. Read its record when the worker is at rest; sent() at any time.
class ScriptedChip : public QObject
{
    Q_OBJECT

public:
    explicit ScriptedChip(ugrade_thread *worker);

    void play(const Dialogue &dialogue);
    void repeat(const Dialogue &dialogue) { repeated = dialogue.frames(); }
    void goSilentAt(const QString &step) { silentStep = step; }
    bool opens = true;
    bool takesTime = false;

    // Empty when the whole dialogue went as written; otherwise what did not.
    QString verdict() const;

    QByteArray sent() const;
    QVector<quint32> unansweredPolls() const { return unanswered; }
    // What was in the reader's variable where no answer came, in hex: the transport traces it.
    QStringList unansweredValues() const { return values; }
    QStringList lineEvents() const { return events; }

private:
    void connectTo(ugrade_thread *worker);
    void init(uint8_t *, uint8_t, uint8_t *status);
    void lineEvent(const QString &event);
    void take(const QByteArray &bytes);
    template <typename Word>
    void takeWord(Word value);
    void give(uint8_t *buffer, uint32_t count, quint32 polls);
    Frame *currentFrame();
    void advance();
    void complain(const QString &text);

    QVector<Frame> script;
    QVector<Frame> repeated;
    int position = 0; // frame of the script
    int offset = 0;   // byte of that frame
    QString silentStep;
    bool silent = false;

    mutable QMutex mutex; // of record
    QByteArray record;
    QVector<quint32> unanswered;
    QStringList values;
    QStringList events;
    QStringList complaints;
};

} // namespace tests
