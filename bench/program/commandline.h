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
    std::string unit;    // file with the simulated unit's state
    std::string plugin;
    std::string language;           // of the pages' texts, or a catalogue's file
    std::string pictures;           // folder for the panel's screenshots
    std::string reset;              // line that the real receiver's reset hangs on
    std::string log;                // of --flash: file that takes the trace
    std::string format;             // of --flash: "text" or "json"
    std::string attempts;           // of --flash: how often at most an update is tried
    std::string capture;            // file that takes the whole run
    std::string replay;             // capsule whose inputs are repeated
    std::vector<std::string> uarts; // real serial devices in place of the simulated receiver
    bool standIns = false;          // the real receiver is a simulated one after all
    bool flash = false;             // update the receiver, then end
    bool realMemory = false;        // the plug-in gets at the machine's own /dev/mem
    bool fullSpeed = false;         // the receiver answers without keeping to the line rate
    bool trace = false;             // the plug-in's trace goes to standard error
    bool doctor = false;            // look at the machine, then end
    bool help = false;
    bool version = false;

    // The one device of a bench; empty: the simulated receiver. Several are a bench each.
    std::string uart() const { return uarts.empty() ? std::string() : uarts.front(); }
    // 0: no number of attempts.
    int attemptCount() const;
    // Somebody other than a person at the window drives the bench.
    bool isDriven() const { return flash || !tour.empty() || !monitor.empty() || !replay.empty(); }
};

// Reads the words of the command line. False, with one line that names the word and
// the cure, when one is not understood. Needs no QCoreApplication.
bool parseCommandLine(int argc, char **argv, CommandLine *options, std::string *error);

// The same as words, program name first: what parseCommandLine reads back.
std::vector<std::string> commandLineWords(const CommandLine &options);

std::string helpText();

} // namespace bench
