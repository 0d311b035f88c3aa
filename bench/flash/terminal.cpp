#include "terminal.h"

#include <cstdlib>
#include <cstring>

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace bench {

namespace {

bool isSet(const char *variable)
{
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

} // namespace

TerminalAbilities abilitiesOf(std::FILE *output)
{
    const char *kind = std::getenv("TERM");
    TerminalAbilities abilities;
    abilities.redraws = ::isatty(::fileno(output)) != 0 && kind != nullptr && *kind != '\0'
        && std::strcmp(kind, "dumb") != 0;
    abilities.colours = abilities.redraws && !isSet("NO_COLOR");
    abilities.utf8 = std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0;
    return abilities;
}

TerminalSize sizeOf(std::FILE *output)
{
    winsize size = {};
    if (::ioctl(::fileno(output), TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {80, 24};
    return {size.ws_col, size.ws_row};
}

std::FILE *takeStandardOutput()
{
    std::fflush(stdout);
    const int own = ::dup(STDOUT_FILENO);
    if (own < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        return stdout;
    return ::fdopen(own, "w");
}

} // namespace bench
