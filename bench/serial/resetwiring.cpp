#include "resetwiring.h"

#include <charconv>

namespace bench {

namespace {

constexpr char kGpio[] = "gpio:";

std::optional<unsigned> numberFrom(const std::string &text)
{
    unsigned number = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end ? std::make_optional(number) : std::nullopt;
}

std::string chipPath(const std::string &chip)
{
    if (numberFrom(chip))
        return "/dev/gpiochip" + chip;
    return chip.find('/') == std::string::npos ? "/dev/" + chip : chip;
}

} // namespace

std::optional<ResetWiring> parseResetWiring(const std::string &word)
{
    ResetWiring wiring;
    wiring.inverted = word.compare(0, 1, "!") == 0;
    const std::string line = word.substr(wiring.inverted ? 1 : 0);
    if (line == "rts")
        return wiring;
    wiring.kind = ResetWiring::Kind::Dtr;
    if (line == "dtr")
        return wiring;

    const size_t prefix = sizeof kGpio - 1;
    const size_t colon = line.rfind(':');
    if (line.compare(0, prefix, kGpio) != 0 || colon <= prefix)
        return std::nullopt;
    const std::optional<unsigned> number = numberFrom(line.substr(colon + 1));
    if (!number)
        return std::nullopt;
    wiring.kind = ResetWiring::Kind::Gpio;
    wiring.chip = chipPath(line.substr(prefix, colon - prefix));
    wiring.lineNumber = *number;
    return wiring;
}

} // namespace bench
