#pragma once

#include "programloader.h"

namespace bench::chip {

class Record;

// The boot ROM: synchronisation, registers, and the load that ends in the stage-1 agent.
class BootRom
{
public:
    BootRom(Conversation &usedConversation, Record &usedRecord,
            const Guarded<ReceiverSettings> &usedSettings);

    // From the synchronisation until the stage-1 agent is loaded.
    void run();

private:
    void synchronise();
    bool takeCommands(); // false: the host starts over with the synchronisation
    void takeCommand(bool *agentLoaded);
    bool readArguments(bool writing, quint32 *address);
    std::optional<quint16> registerValue(quint32 address) const;
    void readRegister(int bits);
    void writeRegister(int bits);
    void reportConfiguration();

    Conversation &conversation;
    Record &logbook;
    const Guarded<ReceiverSettings> &settings;
    ProgramLoader loader;
    quint16 watchdogRegister = 0;
};

} // namespace bench::chip
