#include "commandline.h"

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
};

const Option kOptions[] = {
    {"tour", "DIR", [](CommandLine *o) { return &o->tour; }, nullptr,
     "run the guided tour, leave its pictures in DIR, end with its result"},
    {"monitor", "SOCKET", [](CommandLine *o) { return &o->monitor; }, nullptr,
     "listen on SOCKET for scripts (JSON-RPC) and run until told to quit"},
    {"package", "DIR", [](CommandLine *o) { return &o->package; }, nullptr,
     "the update package; default: the sample package"},
    {"usb0", "DIR", [](CommandLine *o) { return &o->usb[0]; }, nullptr,
     "a folder that stands for the disk on USB port 0; default: no disk"},
    {"usb1", "DIR", [](CommandLine *o) { return &o->usb[1]; }, nullptr, "the same for port 1"},
    {"uart", "DEVICE", [](CommandLine *o) { return &o->uart; }, nullptr,
     "a real serial device in place of the simulated receiver"},
    {"unit", "FILE", [](CommandLine *o) { return &o->unit; }, nullptr,
     "the simulated unit's state at the start (JSON)"},
    {"plugin", "FILE", [](CommandLine *o) { return &o->plugin; }, nullptr,
     "the plug-in to load; default: the one built with this bench"},
    {"pictures", "DIR", [](CommandLine *o) { return &o->pictures; }, nullptr,
     "where \"Screenshot\" leaves its pictures; default: the clipboard"},
    {"full-speed", nullptr, nullptr, [](CommandLine *o) { return &o->fullSpeed; },
     "the receiver answers at once instead of at the line's rate"},
    {"trace", nullptr, nullptr, [](CommandLine *o) { return &o->trace; },
     "show the plug-in's trace on standard error"},
    {"help", nullptr, nullptr, [](CommandLine *o) { return &o->help; },
     "show this and end; also -h"},
    {"version", nullptr, nullptr, [](CommandLine *o) { return &o->version; },
     "show the version and end"},
};

constexpr char kSeeHelp[] = "; --help lists what there is";

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
        } else {
            *entry.text(options) = ::optarg;
        }
    }
    if (::optind < argc) {
        *error = std::string(argv[optind]) + " belongs to no option" + kSeeHelp;
        return false;
    }
    return true;
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
        text += line + entry.help + "\n";
    }
    return text
        + "\nWithout a display, --tour or --monitor is needed.\n"
          "\nExamples:\n"
          "  testmode-bench                          the unit on the screen, to be used by hand\n"
          "  testmode-bench --tour pictures          prove the whole and leave pictures\n"
          "  testmode-bench --usb0 stick --package firmware\n"
          "                                          with a disk and a package of your own\n"
          "  testmode-bench --uart /dev/ttyUSB0      flash a real receiver\n"
          "  testmode-bench --monitor bench.socket   to be driven by scripts\n"
          "\nExit status: 0 done, 1 a check failed, 2 usage, 3 a named file or device is not\n"
          "there or cannot be used, 5 timed out, 6 the machine gives no private root,\n"
          "70 a fault of the bench itself.\n";
}

} // namespace bench
