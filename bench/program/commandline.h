#pragma once

#include <string>
#include <vector>

namespace bench {

// What the user asked for. Empty: not asked for.
struct CommandLine
{
    std::string tour;    // folder for the tour's pictures
    std::string monitor; // path of the control socket
    std::string package; // folder with the update package
    std::string usb[2];  // folders that stand for the disks on the two ports
    std::string uart;    // a real serial device in place of the simulated receiver
    std::string unit;    // file with the simulated unit's state
    std::string plugin;
    std::string pictures;   // folder for the panel's screenshots
    bool fullSpeed = false; // the receiver answers without keeping to the line rate
    bool trace = false;     // the plug-in's trace goes to standard error
    bool help = false;
    bool version = false;
};

// Reads the words of the command line. False, with one line that names the word and
// the cure, when one is not understood. Needs no QCoreApplication.
bool parseCommandLine(int argc, char **argv, CommandLine *options, std::string *error);

// The same as words, program name first: what parseCommandLine reads back.
std::vector<std::string> commandLineWords(const CommandLine &options);

std::string helpText();

} // namespace bench
