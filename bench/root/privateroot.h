#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

// What of the machine's own tree the private root shows beside the read-only rest,
// and how the program inside is looked after. All paths are absolute and exist.
struct RootLayout
{
    struct Mount
    {
        std::string source;
        std::string target; // created if need be
    };

    std::vector<std::string> writable; // folders and files that stay so under their own name
    std::vector<Mount> readOnly;       // files and folders shown elsewhere: disks, the package
    size_t flashBytes = 0;             // what /media/flash holds at most; 0: as much as memory
    std::string uart;                  // a serial device to show as /dev/ttyS4; empty: none
    bool realMemory = false;           // shows the machine's own /dev/mem, not a file in its place

    // True: this process stays outside and looks after the program inside, which learns
    // of SIGINT, SIGTERM and SIGHUP through stopDescriptor(). False: it becomes the root.
    bool supervised = false;
};

// Folder of the private root that the bench keeps its own files in; also the
// working directory of the program inside.
constexpr char kUnitFolder[] = "/run/unit";

// Where the root shows the update package and the disks on the two USB ports.
constexpr char kPackageFolder[] = "/media/update";
constexpr const char *kUsbFolders[2] = {"/media/usb0", "/media/usb1"};

// Folder that holds the program's bin/, lib/, libexec/ and share/.
std::string installationPrefix();

// True in the program that enterPrivateRoot() has started inside, and in no other:
// a program that this one starts in turn is outside of any root of its own.
bool insidePrivateRoot();

// Runs the program anew in a private root of its own, with the words of argv as they are,
// and never returns outside; inside it returns at once, with the unit's device files
// made. Must be called before any thread is started. Ends the program with
// kPrivateRootRefused and one line on standard error where the machine refuses.
void enterPrivateRoot(char **argv, const RootLayout &layout);

// Readable, inside a supervised root, once the program is asked to end; -1 elsewhere.
int stopDescriptor();

} // namespace bench
