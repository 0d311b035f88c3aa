#pragma once

#include <optional>
#include <string>

namespace bench {

// Which line of this machine the receiver's reset input hangs on, and how.
struct ResetWiring
{
    enum class Kind { Rts, Dtr, Gpio };

    Kind kind = Kind::Rts;
    bool inverted = false;   // asserted: the modem line cleared, the GPIO line low
    std::string chip;        // path of the GPIO line's chip
    unsigned lineNumber = 0; // on that chip

    bool isModemLine() const { return kind != Kind::Gpio; }
};

// Reads "rts", "dtr" or "gpio:CHIP:LINE", each with "!" before it when inverted. CHIP is a path, a
// name below /dev or a number. Empty for any other word.
std::optional<ResetWiring> parseResetWiring(const std::string &word);

} // namespace bench
