#pragma once

#include "conversation.h"

namespace bench::chip {

// Takes a program into the receiver's memory: the load command of the boot ROM and of the
// stage-1 agent, which differ in the number of words behind the length.
class ProgramLoader
{
public:
    explicit ProgramLoader(Conversation &usedConversation) : conversation(usedConversation) { }

    // The command byte has been read. True when the program is in memory and the host was told so.
    bool load(int furtherWords);

    // The arguments are taken and refused with this status.
    void refuse(int furtherWords, quint16 status);

    quint32 address() const { return programAddress; } // of the last program

private:
    quint32 readArguments(int furtherWords); // the length

    Conversation &conversation;
    quint32 programAddress = 0;
};

} // namespace bench::chip
