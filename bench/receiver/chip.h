#pragma once

#include "bootrom.h"
#include "dialogue.h"
#include "record.h"
#include "stage1agent.h"
#include "stage2agent.h"

namespace bench::chip {

// The whole receiver: what it does in each phase and what takes it from one to the next.
// run() is the receiver's thread; the parts that are public may be used from any.
class Chip
{
public:
    explicit Chip(Line &usedLine); // ready to be read before run()

    Guarded<ReceiverSettings> settings;
    Pins pins;
    Flash flash;
    Faults faults;
    Dialogue dialogue;
    Record logbook;

    void run(); // until pins.stop()

private:
    ReceiverPhase live(ReceiverPhase phase);
    ReceiverPhase afterChange(ReceiverPhase before);
    void restart();
    [[noreturn]] void stayQuiet();
    ReceiverPhase awaitWatchdog();
    void ignore(const QByteArray &bytes);
    void event(const QString &text);

    Line &line;
    Uart uart;
    Conversation conversation;
    BootRom bootRom;
    Stage1Agent stage1;
    Stage2Agent stage2;
    ReceiverPhase current = ReceiverPhase::Application;
    bool stopped = false;
    bool ignoredReported = false;
};

} // namespace bench::chip
