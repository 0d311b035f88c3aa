#pragma once

#include "receiverstate.h"

#include "bench/unit/numberedlog.h"

#include <QMutex>

#include <functional>

namespace bench::chip {

// The frames of both directions in words, with what struck between them. Any thread.
class Dialogue
{
public:
    static constexpr int kShownBytes = 64; // of a frame

    // Called in the receiver's thread, with the line as it is kept and the whole frame.
    std::function<void(const DialogueLine &line, const QByteArray &frame)> onLine;

    // Numbers the line and keeps the beginning of its bytes; `line.length` is filled in.
    void add(DialogueLine line);

    QVector<DialogueLine> lines(int since) const;
    void clear(); // numbers go on

private:
    mutable QMutex mutex;
    NumberedLog<DialogueLine> log;
};

} // namespace bench::chip
