#include "commandline.h"

#include "bench/serial/resetwiring.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <getopt.h>

namespace bench {

namespace {

// One option: its word, where its value goes, and what the help says of it.
struct Option
{
    const char *name;
    const char *value; // name of the value in the help; null: a flag
    std::string *(*text)(CommandLine *);
    bool *(*flag)(CommandLine *);
    const char *help;
    std::vector<std::string> *(*list)(CommandLine *) = nullptr; // the option may come again
};

const Option kOptions[] = {
    {"tour", "DIR", [](CommandLine *o) { return &o->tour; }, nullptr,
     "run the guided tour, leave its pictures in DIR, end with its result"},
    {"monitor", "SOCKET", [](CommandLine *o) { return &o->monitor; }, nullptr,
     "listen on SOCKET for scripts (JSON-RPC) and run until told to quit"},
    {"flash", nullptr, nullptr, [](CommandLine *o) { return &o->flash; },
     "update the receiver through the page, end with its result"},
    {"package", "DIR", [](CommandLine *o) { return &o->package; }, nullptr,
     "the update package; default: the sample package"},
    {"usb0", "DIR", [](CommandLine *o) { return &o->usb[0]; }, nullptr,
     "a folder that stands for the disk on USB port 0; default: no disk"},
    {"usb1", "DIR", [](CommandLine *o) { return &o->usb[1]; }, nullptr, "the same for port 1"},
    {"uart", "DEVICE", nullptr, nullptr,
     "a real serial device in place of the simulated receiver;\n"
     "with --flash again for each that is to be updated beside it",
     [](CommandLine *o) { return &o->uarts; }},
    {"reset", "LINE", [](CommandLine *o) { return &o->reset; }, nullptr,
     "the line that the receiver's reset hangs on: rts or dtr of --uart,\n"
     "or gpio:CHIP:LINE; '!' before it: reset while it is low; default:\n"
     "it is pulled by hand, when told"},
    {"stand-ins", nullptr, nullptr, [](CommandLine *o) { return &o->standIns; },
     "the receiver of --uart is simulated: it takes the stand-in agents"},
    {"attempts", "N", [](CommandLine *o) { return &o->attempts; }, nullptr,
     "with --flash: try N times at most, each from the reset; default: 1"},
    {"format", "FORMAT", [](CommandLine *o) { return &o->format; }, nullptr,
     "with --flash: text, or json, one object a line; default: text"},
    {"log", "FILE", [](CommandLine *o) { return &o->log; }, nullptr,
     "with --flash: the trace goes to the end of FILE; default: a new\n"
     "file in ~/.local/state/testmode-bench"},
    {"capture", "FILE", [](CommandLine *o) { return &o->capture; }, nullptr,
     "write all that happens into FILE, a capsule; without it --flash and\n"
     "--tour leave one that fails in ~/.local/state/testmode-bench/capsules"},
    {"replay", "FILE", [](CommandLine *o) { return &o->replay; }, nullptr,
     "repeat what was done in a capsule, tell the first difference, and end:\n"
     "0 the same verdict, 1 another"},
    {"unit", "FILE", [](CommandLine *o) { return &o->unit; }, nullptr,
     "the simulated unit's state at the start (JSON)"},
    {"plugin", "FILE", [](CommandLine *o) { return &o->plugin; }, nullptr,
     "the plug-in to load; default: the one built with this bench"},
    {"language", "NAME", [](CommandLine *o) { return &o->language; }, nullptr,
     "the pages' texts by the catalogue NAME (en, zh_CN) or by a file\n"
     "*.qm; default: as the pages have them"},
    {"pictures", "DIR", [](CommandLine *o) { return &o->pictures; }, nullptr,
     "where \"Screenshot\" leaves its pictures; default: the clipboard"},
    {"real-memory", nullptr, nullptr, [](CommandLine *o) { return &o->realMemory; },
     "the PHY page reads and writes the machine's own /dev/mem; only\n"
     "where the kernel was started with the word testmode.real_memory"},
    {"full-speed", nullptr, nullptr, [](CommandLine *o) { return &o->fullSpeed; },
     "the receiver answers at once instead of at the line's rate"},
    {"trace", nullptr, nullptr, [](CommandLine *o) { return &o->trace; },
     "show the plug-in's trace on standard error"},
    {"doctor", nullptr, nullptr, [](CommandLine *o) { return &o->doctor; },
     "say what of this machine keeps the bench from running, and the cure"},
    {"help", nullptr, nullptr, [](CommandLine *o) { return &o->help; },
     "show this and end; also -h"},
    {"version", nullptr, nullptr, [](CommandLine *o) { return &o->version; },
     "show the version and end"},
};

constexpr char kSeeHelp[] = "; --help lists what there is";

// What cannot be asked for together, or of a value that is none; empty: nothing.
std::string contradiction(const CommandLine &options)
{
    if (options.flash && !options.tour.empty())
        return "--flash and --tour exclude each other; choose one";
    if (!options.language.empty() && !options.tour.empty())
        return "--tour compares the pages' own texts; leave --language out";
    const bool names = options.flash || !options.tour.empty() || !options.package.empty()
        || !options.unit.empty() || !options.uarts.empty() || !options.usb[0].empty()
        || !options.usb[1].empty() || options.fullSpeed;
    if (!options.replay.empty() && names)
        return "--replay takes all that a run needs from its capsule; leave the other options out";
    if (!options.flash
        && (!options.log.empty() || !options.format.empty() || !options.attempts.empty()))
        return "--attempts, --format and --log need --flash";
    if (options.uarts.empty() && (!options.reset.empty() || options.standIns))
        return "--reset and --stand-ins need --uart";
    const std::optional<ResetWiring> wiring = parseResetWiring(options.reset);
    if (!options.reset.empty() && !wiring)
        return "--reset is " + options.reset
            + "; wanted is rts, dtr or gpio:CHIP:LINE, or one of them after '!'";
    if (wiring && !wiring->isModemLine() && options.uarts.size() > 1)
        return "--reset names one GPIO line for several receivers; name one --uart";
    if (options.uarts.size() > 1 && !options.flash)
        return "--uart is given twice; only --flash takes several";
    if (options.uarts.size() > 1 && !options.monitor.empty())
        return "--monitor is for one bench; name one --uart";
    for (auto uart = options.uarts.begin(); uart != options.uarts.end(); ++uart) {
        if (std::find(options.uarts.begin(), uart, *uart) != uart)
            return "--uart names " + *uart + " twice; name each device once";
    }
    if (!options.format.empty() && options.format != "text" && options.format != "json")
        return "--format is " + options.format + "; wanted is text or json";
    if (!options.attempts.empty() && options.attemptCount() == 0)
        return "--attempts is " + options.attempts + "; wanted is a whole number from 1 to 100";
    return std::string();
}

std::vector<option> tableForGetopt()
{
    std::vector<option> table;
    for (const Option &entry : kOptions)
        table.push_back(
            {entry.name, entry.value != nullptr ? required_argument : no_argument, nullptr, 0});
    table.push_back({});
    return table;
}

} // namespace

int CommandLine::attemptCount() const
{
    constexpr int kMost = 100;
    if (attempts.empty())
        return 1;
    int count = 0;
    const char *end = attempts.data() + attempts.size();
    const auto [rest, error] = std::from_chars(attempts.data(), end, count);
    return error == std::errc() && rest == end && count >= 1 && count <= kMost ? count : 0;
}

bool parseCommandLine(int argc, char **argv, CommandLine *options, std::string *error)
{
    const std::vector<option> table = tableForGetopt();
    ::opterr = 0;
    ::optind = 0; // starts anew: the function may be called again
    int index = 0;
    for (int found = 0; (found = ::getopt_long(argc, argv, ":h", table.data(), &index)) != -1;) {
        if (found == ':') {
            *error = std::string(argv[optind - 1]) + " needs a value" + kSeeHelp;
            return false;
        }
        if (found == '?') {
            *error = std::string(argv[optind - 1]) + " is no option" + kSeeHelp;
            return false;
        }
        if (found == 'h') { // what many type first
            options->help = true;
            continue;
        }
        const Option &entry = kOptions[index];
        if (entry.value == nullptr) {
            *entry.flag(options) = true;
        } else if (*::optarg == '\0') {
            *error = std::string("--") + entry.name + " needs a value" + kSeeHelp;
            return false;
        } else if (entry.list != nullptr) {
            entry.list(options)->push_back(::optarg);
        } else {
            *entry.text(options) = ::optarg;
        }
    }
    if (::optind < argc) {
        *error = std::string(argv[optind]) + " belongs to no option" + kSeeHelp;
        return false;
    }
    *error = contradiction(*options);
    return error->empty();
}

std::vector<std::string> commandLineWords(const CommandLine &options)
{
    CommandLine copy = options;
    std::vector<std::string> words = {"testmode-bench"};
    for (const Option &entry : kOptions) {
        const std::string name = std::string("--") + entry.name;
        if (entry.value == nullptr) {
            if (*entry.flag(&copy))
                words.push_back(name);
        } else if (entry.list != nullptr) {
            for (const std::string &value : *entry.list(&copy))
                words.emplace_back(name).append("=").append(value);
        } else if (!entry.text(&copy)->empty()) {
            words.push_back(name + "=" + *entry.text(&copy));
        }
    }
    return words;
}

std::string helpText()
{
    constexpr size_t kColumn = 20; // where the explanations begin
    std::string text = "Usage: testmode-bench [OPTION...]\n"
                       "A simulated head unit and GNSS receiver for the test mode's plug-in.\n\n";
    for (const Option &entry : kOptions) {
        std::string line = std::string("  --") + entry.name;
        if (entry.value != nullptr)
            line += std::string(" ") + entry.value;
        line.resize(kColumn, ' ');
        for (const char c : std::string(entry.help) + "\n") {
            line += c;
            if (c == '\n') {
                text += line;
                line.assign(kColumn, ' ');
            }
        }
    }
    return text
        + "\nWithout a display, --flash, --tour, --monitor or --replay is needed.\n"
          "\nExamples:\n"
          "  testmode-bench                          the unit on the screen, to be used by hand\n"
          "  testmode-bench --tour pictures          prove the whole and leave pictures\n"
          "  testmode-bench --usb0 stick --package firmware\n"
          "                                          with a disk and a package of your own\n"
          "  testmode-bench --flash --package firmware --uart /dev/ttyUSB0\n"
          "                                          update a real receiver from the terminal\n"
          "  testmode-bench --uart /dev/ttyUSB0      the same by hand, on the update page\n"
          "  testmode-bench --monitor bench.socket   to be driven by scripts\n"
          "  testmode-bench --replay night.capsule   what happened there, once more\n"
          "\nExit status: 0 done, 1 a check failed, 2 usage, 3 a named file or device is not\n"
          "there or cannot be used, 6 the machine gives no private root, or lacks something\n"
          "that --doctor looks for, 70 a fault of the bench itself.\n";
}

} // namespace bench
