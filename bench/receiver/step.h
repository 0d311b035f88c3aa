#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace bench {

// What the receiver does. The names (phaseName) are a closed list.
enum class ReceiverPhase {
    Off,          // no supply: silent, and the line stays up
    Application,  // its own firmware runs and has no ear for the boot ROM's bytes
    Reset,        // held by the reset line
    BootRom,      // waits for the synchronisation
    Commands,     // the boot ROM takes commands
    Stage1,       // the first agent, at the boot ROM's rate
    Stage1Fast,   // the first agent, at the download rate
    Handshake,    // the second agent has begun its handshake
    AgentSync,    // the second agent learns how it is to work
    Ready,        // the second agent waits for an image or for the end
    Writing,      // an image is on its way
    Finished,     // told to finish; silent until the next reset
    WatchdogEnds, // told to end by its watchdog, which is running
    Silent        // answers nothing until the next reset
};

// The exchanges of the dialogue. The names (stepName) are a closed list.
enum class ReceiverStep {
    Command, // a byte where a command is awaited, and which is none
    Sync,
    Read16,
    Read32,
    Write16,
    Write32,
    Configuration,
    LoadStage1,
    Stage1Greeting,
    Stage1Announce,
    Stage1Confirm,
    Stage1Switch,
    LineCheck,
    Stage1Ready,
    Stage1First,
    Stage1Second,
    LoadStage2,
    Jump,
    Handshake,
    Logging,
    PowerKey,
    FlashId,
    Parameters,
    ImageStart,
    Download,
    Packet,
    PacketRepeat, // what follows a refused packet, up to its repetition
    ImageEnd,
    ImageSum,
    Disconnect,
    Finish,
    Watchdog
};

QString phaseName(ReceiverPhase phase);
QStringList phaseNames();

QString stepName(ReceiverStep step);
QStringList stepNames();
std::optional<ReceiverStep> stepFromName(const QString &name);

} // namespace bench
