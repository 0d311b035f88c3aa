#pragma once

#include "uart.h"

#include <initializer_list>

namespace bench::chip {

// What boot ROM and agents talk through: words, echoes, statuses and acknowledgements,
// each with its faults and its line in the dialogue. Receiver's thread.
class Conversation
{
public:
    Conversation(Uart &usedUart, Faults &usedFaults);

    Uart &uart() { return port; }

    void restart(); // out of a reset
    void begin(ReceiverStep step);

    // Waits for a command and begins its step, so that faults of the step meet its first byte.
    quint8 readCommand(ReceiverStep (*stepOf)(quint8 command));

    // The host's words; heard() then says in the dialogue what they meant.
    quint8 readByte();
    quint16 readWord();
    quint32 readLong();
    QByteArray readBlock(int length);
    void heard(const QString &meaning);

    // Begins the step and waits for one of these bytes; others are anomalies, not answered.
    quint8 await(ReceiverStep step, std::initializer_list<quint8> bytes, const QString &meaning);

    // Sends back what was heard last.
    void echo();

    // Read, heard and echoed; `name` says what the word is.
    quint16 echoedWord(const QString &name);
    quint32 echoedLong(const QString &name);

    // True when the status that went out means success; a fault may have changed it.
    bool sendStatus(quint16 status);
    void sendChecksum(quint16 checksum);
    void sendWords(std::initializer_list<quint16> words, const QString &meaning);
    void sendLong(quint32 value, const QString &meaning);
    void acknowledge(quint8 byte, const QString &meaning);
    void sendRefusal(quint32 code); // a NACK with its code
    void sendSumRefusal(quint32 sum);

    // Faults that change what the receiver itself does.
    quint32 ownSum(quint32 sum);
    std::optional<quint32> faultyRefusal(int index);
    bool skipsWrite();

    void anomaly(const QString &came, const QString &expected) { port.anomaly(came, expected); }

private:
    void send(const QByteArray &answer, const QString &meaning);

    Uart &port;
    Faults &faults;
    QByteArray frame; // read since the last heard()
    QByteArray lastFrame;
    int statuses = 0; // of this step so far
    int acknowledgements = 0;
    int answers = 0;
};

} // namespace bench::chip
