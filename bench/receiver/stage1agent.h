#pragma once

#include "programloader.h"

namespace bench::chip {

class Record;

// The first agent: an exchange at the boot ROM's rate, the change to the download rate with
// a check of the line, then the load of the second agent and the jump to it.
class Stage1Agent
{
public:
    Stage1Agent(Conversation &usedConversation, Record &usedRecord,
                const Guarded<ReceiverSettings> &usedSettings);

    // Until the second agent has been started.
    void run();

private:
    void greet();
    void switchRate();
    void awaitWord(ReceiverStep step, quint16 expected, const QString &meaning);
    void checkLine();
    void report();
    void takeCommand(bool *started);
    void jump(bool *started);

    Conversation &conversation;
    Record &logbook;
    const Guarded<ReceiverSettings> &settings;
    ProgramLoader loader;
    bool loaded = false;
};

} // namespace bench::chip
