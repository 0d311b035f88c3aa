#pragma once

#include "step.h"

#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <optional>

namespace bench {

// One fault to come: what happens, where in the dialogue, and how often.
struct Fault
{
    enum class Kind {
        // at a place of the dialogue
        Silence,  // nothing is answered from here until the next reset
        Reset,    // the receiver resets itself
        Baud,     // `value`: rate that it listens and talks at until the next reset
        Garbage,  // `value`: how many bytes of noise it sends (8)
        FlowByte, // `value`: XON (17) or XOFF (19), sent to the host (19)

        // of one answer
        Status,      // `value`: status in its place (0x1000)
        Checksum,    // `value`: checksum or sum in its place (the right one, lowest bit flipped)
        Acknowledge, // `value`: byte in its place (0x00)
        Nack,        // `value`: error code of the refusal (3061)
        NoWrite,     // a packet is acknowledged and not written
        Repeat,      // an answer is sent twice

        // of one byte, either direction
        Drop,
        Double,
        Flip, // `value`: mask of the bits (one bit of the seed's choice)
        Late, // `value`: milliseconds (50)
        Swap  // with its neighbour; a byte that travels alone has none
    };
    enum class Direction { ToReceiver, ToHost };

    Kind kind = Kind::Silence;

    // Where. Left out: anywhere, but Garbage before the synchronisation and Nack at a packet.
    std::optional<ReceiverStep> step;
    int count = 0; // the how-manieth such step since the reset, from 1; 0: each
    // From 0. Faults at a place: how many bytes of the step came before. Faults of an answer:
    // which answer of its sort in the step. Faults of a byte: which byte of the step in its
    // direction. -1: a place is the step's beginning; answers and bytes are any of the step.
    int index = -1;
    int image = 0;  // the how-manieth image since the reset, from 1; 0: any
    int packet = 0; // packet of its image, from 1; 0: any
    Direction direction = Direction::ToReceiver; // for faults of a byte

    // What; each kind says above what it takes and what stands for none.
    std::optional<quint32> value;

    int resumeMilliseconds = 0; // of an XOFF: until XON follows; 0: none follows

    // How often.
    int times = 1;            // 0: always
    double probability = 1.0; // of each occasion, drawn from the seed

    // Checked whole: `error` names the key that is unknown, missing or wrong.
    static std::optional<Fault> fromJson(const QJsonObject &object, QString *error);
    QJsonObject toJson() const;

    static QString kindName(Kind kind);
    static QStringList kindNames();
    static bool ofByte(Kind kind); // has a direction
};

// What became of one fault since it was set.
struct FaultReport
{
    Fault fault;
    int done = 0;            // how often it struck
    QStringList deeds;       // each, with the place and the bytes; at most the first 1000
    QVector<qint64> moments; // of the deeds: milliseconds since the line was opened
};

} // namespace bench
