#pragma once

#include "imagewriter.h"

namespace bench::chip {

// The second agent: begins a handshake, learns how to work, writes images into the flash
// and ends when it is told to.
class Stage2Agent
{
public:
    Stage2Agent(Conversation &usedConversation, Record &usedRecord, Flash &usedFlash,
                const Guarded<ReceiverSettings> &usedSettings);

    // Returns what the receiver does after it: Finished, WatchdogEnds, or Silent when the
    // handshake went wrong.
    ReceiverPhase run();

    int watchdogSeconds() const { return watchdogValue; } // as told, after WatchdogEnds

private:
    bool handshake();
    void learn();
    void learnParameters();
    std::optional<ReceiverPhase> takeCommand();
    std::optional<ReceiverPhase> end(quint8 command);

    Conversation &conversation;
    Record &logbook;
    const Guarded<ReceiverSettings> &settings;
    ImageWriter writer;
    bool imageAnnounced = false;
    bool leaving = false; // told that the end comes
    int watchdogValue = 0;
};

} // namespace bench::chip
