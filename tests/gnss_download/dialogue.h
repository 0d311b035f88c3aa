#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace tests {

// One thing that happens on the wire between head unit and receiver.
struct Frame
{
    enum Who {
        Host, // bytes that the head unit sends
        Chip, // bytes that the receiver answers
        Line, // what the head unit does to its port: "open", "drain", "baud N", "close"
    };

    Who who;
    QString step;
    QByteArray bytes; // for Line the event's text
    quint32 polls;    // time-out that the head unit reads these bytes with
};

// What head unit and receiver say to each other, in order. Bytes are written in
// hexadecimal, "5A 00"; "FF*4095" repeats, "@NAME[FROM..TO)" is a part of an agent image.
class Dialogue
{
public:
    // Reads a dialogue from a file of "who | polls | step | bytes" lines.
    static Dialogue read(const QString &path);

    // Names what follows.
    Dialogue &step(const QString &name);
    Dialogue &host(const QString &bytes);
    Dialogue &chip(const QString &bytes, quint32 polls = 3000);
    // Sent, and sent back.
    Dialogue &echoed(const QString &bytes);
    Dialogue &line(const QString &event);
    Dialogue &add(const Dialogue &other);

    const QVector<Frame> &frames() const { return list; }
    // Names in order of their first answer.
    QStringList answeredSteps() const;
    // This dialogue's beginning, up to and without the first frame of a step.
    Dialogue before(const QString &step) const;
    // The rest of it, from that frame on.
    Dialogue from(const QString &step) const;

private:
    int firstOf(const QString &step) const;

    QString current;
    QVector<Frame> list;
};

// Bytes from their written form.
QByteArray bytesOf(const QString &text);

// A file of dialogues, and a stand-in of an agent image: the dialogues are made of those.
QString fixture(const QString &name);
QByteArray agentFile(const QString &name);

} // namespace tests
