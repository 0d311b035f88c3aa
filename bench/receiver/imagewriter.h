#pragma once

#include "conversation.h"
#include "flash.h"

namespace bench::chip {

class Record;

// The part of the second agent that takes one image and writes it, packet by packet.
class ImageWriter
{
public:
    ImageWriter(Conversation &usedConversation, Record &usedRecord, Flash &usedFlash);

    // The agent has started: the next image is the first.
    void restart();

    // The command byte has been read. `announced`: the host said before that an image follows.
    void download(bool announced);

private:
    struct Image
    {
        int number = 0; // since the agent started
        quint32 address = 0;
        quint32 length = 0;
        quint32 packetSize = 0;
    };

    void readArguments();
    std::optional<quint32> badArguments(bool announced);
    std::optional<quint32> badRange();
    bool check(int index, std::optional<quint32> code);
    bool takePacket(int packet, quint32 *sum);
    bool packetComesAgain(quint32 code);
    void store(int packet, const QByteArray &bytes);
    bool endPackets();
    void compareSums(quint32 sum);

    Conversation &conversation;
    Record &logbook;
    Flash &flash;
    Image image;
    int overlapReported = 0; // image that this one was reported to overwrite
};

} // namespace bench::chip
