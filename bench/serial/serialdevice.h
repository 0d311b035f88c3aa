#pragma once

#include <string>

namespace bench {

// Opens and locks a serial device for the life of this process, so that no other program
// that asks drives it meanwhile. Empty if that works, else what is in the way and the cure.
std::string claimSerialDevice(const std::string &path);

// Whether the terminal is the host's side of a pseudo-terminal: behind it is a program.
bool isPseudoTerminal(const std::string &path);

} // namespace bench
