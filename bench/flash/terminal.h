#pragma once

#include <cstdio>

namespace bench {

// What the place that an output goes to can show.
struct TerminalAbilities
{
    bool redraws = false; // lines can be drawn over
    bool colours = false;
    bool utf8 = false;
};

TerminalAbilities abilitiesOf(std::FILE *output);

// Columns and rows now; a terminal that does not say is taken for 80 by 24.
struct TerminalSize
{
    int columns;
    int rows;
};
TerminalSize sizeOf(std::FILE *output);

// Standard output for the caller alone: what others in the process print goes to standard
// error from here on.
std::FILE *takeStandardOutput();

} // namespace bench
