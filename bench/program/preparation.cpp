#include "preparation.h"

#include "appearance.h"

#include "bench/capsule/format.h"
#include "bench/serial/agents.h"
#include "bench/serial/resetline.h"
#include "bench/serial/serialdevice.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

namespace {

namespace fs = std::filesystem;

// What the update page reads from a package folder.
constexpr const char *kPackageFiles[] = {"flash_download.cfg", "partition_table.bin",
                                         "bootloader.bin", "gnss_demo.bin", "gnss_config.bin"};

// Folders that the private root has of its own: the machine's would take their place.
constexpr const char *kOwnFolders[] = {"/", "/run", "/var", "/media"};
constexpr const char *kOwnTrees[] = {"/dev",          "/proc",       "/sys",
                                     "/run/unit",     "/run/lock",   "/media/flash",
                                     "/media/update", "/media/usb0", "/media/usb1"};

constexpr char kCatalogue[] = ".qm";

// What the command line of a kernel says where nobody else uses the registers' memory.
constexpr char kRealMemoryWord[] = "testmode.real_memory";

// Prefix of the words about one option.
std::string about(const char *option, const std::string &path)
{
    return std::string("--") + option + ": " + path;
}

std::string absolute(const std::string &path)
{
    return fs::absolute(path).lexically_normal().string();
}

bool isWithin(const std::string &path, const std::string &folder)
{
    return path == folder || path.compare(0, folder.size() + 1, folder + "/") == 0;
}

bool belongsToRoot(const std::string &path)
{
    for (const char *folder : kOwnFolders) {
        if (path == folder)
            return true;
    }
    for (const char *tree : kOwnTrees) {
        if (isWithin(path, tree))
            return true;
    }
    return false;
}

// Each of these returns what is wrong, or nothing.

std::string readableFolder(const char *option, const std::string &path, const char *cure)
{
    std::error_code ignored;
    if (!fs::is_directory(path, ignored))
        return about(option, path) + " is no folder; " + cure;
    if (::access(path.c_str(), R_OK | X_OK) != 0)
        return about(option, path) + " may not be read; give yourself the right, or " + cure;
    return std::string();
}

std::string readableFile(const char *option, const std::string &path, const char *cure)
{
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored))
        return about(option, path) + " is no file; " + cure;
    if (::access(path.c_str(), R_OK) != 0)
        return about(option, path) + " may not be read; give yourself the right, or " + cure;
    return std::string();
}

std::string writableFolder(const char *option, const std::string &path)
{
    if (belongsToRoot(path))
        return about(option, path) + " is the system's; name a folder of your own";
    if (::access(path.c_str(), W_OK | X_OK) != 0)
        return about(option, path) + " may not be written; name a folder of your own";
    return std::string();
}

// Made if it is not there yet.
std::string pictureFolder(const char *option, const std::string &path)
{
    std::error_code error;
    if (fs::exists(path, error) && !fs::is_directory(path, error))
        return about(option, path) + " is no folder; name another";
    if (belongsToRoot(path))
        return about(option, path) + " is the system's; name a folder of your own";
    fs::create_directories(path, error);
    if (error)
        return about(option, path) + " cannot be made (" + error.message() + "); name another";
    return writableFolder(option, path);
}

std::string socketPath(const std::string &path)
{
    constexpr size_t kLongestSocketPath = 107; // what the kernel takes
    std::error_code ignored;
    const std::string folder = fs::path(path).parent_path().string();
    if (path.size() > kLongestSocketPath)
        return about("monitor", path) + " is too long for a socket; name a shorter path";
    if (!fs::is_directory(folder, ignored))
        return about("monitor", folder) + " is no folder; make it, or name another";
    if (fs::exists(path, ignored) && !fs::is_socket(path, ignored))
        return about("monitor", path) + " is there and no socket; name another";
    return writableFolder("monitor", folder);
}

// Where programs keep what a person may want to read later.
fs::path stateFolder()
{
    const char *state = std::getenv("XDG_STATE_HOME");
    const char *home = std::getenv("HOME");
    const fs::path folder = state != nullptr && *state == '/'
        ? fs::path(state)
        : fs::path(home != nullptr ? home : ".") / ".local/state";
    return folder / "testmode-bench";
}

std::string defaultLogFile(const std::string &uart)
{
    char time[32];
    const std::time_t now = std::time(nullptr);
    std::strftime(time, sizeof time, "%Y%m%d-%H%M%S", std::localtime(&now));
    const std::string receiver = uart.empty() ? "simulated" : fs::path(uart).filename().string();
    return stateFolder() / (std::string("flash-") + time + "-" + receiver + ".log");
}

// Each bench of a second has a name of its own.
std::string defaultCapsule(const CommandLine &options)
{
    char time[32];
    const std::time_t now = std::time(nullptr);
    std::strftime(time, sizeof time, "%Y%m%d-%H%M%S", std::localtime(&now));
    const std::string receiver =
        options.uarts.empty() ? "simulated" : fs::path(options.uart()).filename().string();
    return fs::path(capsuleFolder())
        / ((options.flash ? "flash-" : "tour-") + std::string(time) + "-" + receiver + "-"
           + std::to_string(::getpid()) + ".capsule");
}

// A capsule that is there makes room; nothing else ever does.
std::string captureFile(const std::string &path)
{
    std::error_code error;
    const std::string folder = fs::path(path).parent_path().string();
    if (!fs::is_directory(folder, error))
        return about("capture", folder) + " is no folder; make it, or name another";
    if (fs::exists(path, error)) {
        if (!capsuleTrouble(path).empty())
            return about("capture", path) + " is there and no capsule; name another file";
        fs::remove(path, error);
        if (error)
            return about("capture", path) + " cannot be replaced (" + error.message()
                + "); name another file";
    }
    return writableFolder("capture", folder);
}

// What SQLite keeps beside a capsule whose bench was killed in the middle of a write.
std::string journalOf(const std::string &capsule)
{
    return capsule + "-journal";
}

// A capsule that can be read whole.
std::string readableCapsule(const char *option, const std::string &path)
{
    std::error_code ignored;
    const std::string trouble = capsuleTrouble(path);
    if (!trouble.empty())
        return std::string("--") + option + ": " + trouble;
    const std::string folder = fs::path(path).parent_path().string();
    if (fs::exists(journalOf(path), ignored)
        && (belongsToRoot(folder) || ::access(folder.c_str(), W_OK | X_OK) != 0
            || ::access(path.c_str(), W_OK) != 0))
        return about(option, path) + " was cut off in the middle of a write; copy it with the file "
            + journalOf(path) + " to a folder that you may write";
    return std::string();
}

// Made if it is not there yet, with its folder.
std::string logFile(const std::string &path)
{
    std::error_code ignored;
    if (fs::exists(path, ignored) && !fs::is_regular_file(path, ignored))
        return about("log", path) + " is no file; name another";
    if (belongsToRoot(path))
        return about("log", path) + " is the system's; name a file of your own";
    fs::create_directories(fs::path(path).parent_path(), ignored);
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (file < 0)
        return about("log", path) + " cannot be written (" + std::strerror(errno)
            + "); name another file";
    ::close(file);
    return std::string();
}

std::string package(const std::string &path)
{
    const char *cure = "name a folder with an update package";
    std::string trouble = readableFolder("package", path, cure);
    for (const char *file : kPackageFiles) {
        if (!trouble.empty())
            break;
        trouble = readableFile("package", path + "/" + file, cure);
    }
    return trouble;
}

// A receiver that may be a real one is not asked to run text.
std::string agentsFor(const std::string &uart, const CommandLine &options)
{
    if (options.standIns || isPseudoTerminal(uart))
        return std::string();
    std::string files;
    for (const std::string &file : standInsOf(options.plugin))
        files += (files.empty() ? "" : ", ") + file;
    return files.empty() ? files
                         : about("uart", uart)
            + ": the plug-in carries stand-ins for the receiver's agents (" + files
            + "), which no real one runs; build with the vendor's (script/run --agents DIR), or "
              "say --stand-ins if the receiver is a simulated one";
}

// The port, what is to be loaded through it, and the reset line, which the program inside inherits.
std::string realReceiver(const CommandLine &options)
{
    std::string trouble = claimSerialDevice(options.uart());
    if (!trouble.empty())
        return "--uart: " + trouble;
    trouble = agentsFor(options.uart(), options);
    const std::optional<ResetWiring> wiring = parseResetWiring(options.reset);
    if (!trouble.empty() || !wiring)
        return trouble;
    const std::unique_ptr<ResetLine> line = ResetLine::open(*wiring, options.uart(), &trouble);
    if (!line)
        return "--reset " + options.reset + ": " + trouble;
    line->bequeath();
    return trouble;
}

// An option is typed by mistake, a kernel is not started so: both together are meant.
std::string realMemory()
{
    std::ifstream words("/proc/cmdline");
    const std::istream_iterator<std::string> end;
    if (std::find(std::istream_iterator<std::string>(words), end, kRealMemoryWord) == end)
        return std::string("--real-memory: this kernel was not started with the word ")
            + kRealMemoryWord + ", so /dev/mem may be in use; leave the option out";
    if (::access("/dev/mem", R_OK | W_OK) != 0)
        return "--real-memory: /dev/mem may not be read and written; run the bench as root";
    return std::string();
}

bool isCatalogueFile(const std::string &language)
{
    return fs::path(language).extension() == kCatalogue;
}

void fillInDefaults(CommandLine *options)
{
    const std::string prefix = installationPrefix();
    if (options->plugin.empty()) {
        options->plugin = prefix + "/" TESTMODE_PLUGIN_FOLDER "/libtestmode.so";
        if (!fs::exists(options->plugin))
            options->plugin = prefix + "/lib/libtestmode.so"; // not installed: the build tree
    }
    if (!options->language.empty() && !isCatalogueFile(options->language))
        options->language =
            prefix + "/share/testmode/translations/testmode_" + options->language + kCatalogue;
    const std::string sample = prefix + "/share/headunit/package";
    if (options->package.empty() && options->replay.empty() && fs::exists(sample))
        options->package = sample;
    if (options->flash && options->log.empty())
        options->log = defaultLogFile(options->uart());
}

std::string checkInputs(const CommandLine &options)
{
    std::string trouble = readableFile("plugin", options.plugin, "name the plug-in's file");
    if (trouble.empty() && !options.package.empty())
        trouble = package(options.package);
    if (trouble.empty() && !options.language.empty())
        trouble =
            readableFile("language", options.language, "name en, zh_CN or a catalogue's file");
    const char *const usbOptions[] = {"usb0", "usb1"};
    for (int port = 0; port < 2; ++port) {
        if (trouble.empty() && !options.usb[port].empty())
            trouble = readableFolder(usbOptions[port], options.usb[port],
                                     "name the folder that stands for the disk");
    }
    if (trouble.empty() && !options.unit.empty())
        trouble = readableFile("unit", options.unit, "name a file with the unit's state");
    if (trouble.empty() && !options.uarts.empty())
        trouble = realReceiver(options);
    if (trouble.empty() && options.realMemory)
        trouble = realMemory();
    if (trouble.empty() && !options.monitor.empty())
        trouble = socketPath(options.monitor);
    if (trouble.empty() && !options.tour.empty())
        trouble = pictureFolder("tour", options.tour); // nothing is made for a start that fails
    if (trouble.empty() && !options.pictures.empty())
        trouble = pictureFolder("pictures", options.pictures);
    if (trouble.empty() && !options.replay.empty())
        trouble = readableCapsule("replay", options.replay);
    if (trouble.empty() && !options.capture.empty())
        trouble = captureFile(options.capture);
    return trouble;
}

} // namespace

std::string windowFolder()
{
    return stateFolder() / "window";
}

std::string capsuleFolder()
{
    return stateFolder() / "capsules";
}

namespace {

// A failure that nobody expects leaves its capsule all the same, where there is room for it.
void captureFailures(CommandLine *options)
{
    std::error_code error;
    if (!options->capture.empty() || (!options->flash && options->tour.empty())
        || belongsToRoot(capsuleFolder()))
        return;
    fs::create_directories(capsuleFolder(), error);
    if (!error && ::access(capsuleFolder().c_str(), W_OK | X_OK) == 0)
        options->capture = defaultCapsule(*options);
}

// SQLite keeps a journal beside the file that it writes, or brings to its last whole state.
void showCapsules(const CommandLine &options, RootLayout *layout)
{
    std::error_code ignored;
    if (!options.capture.empty())
        layout->writable.push_back(fs::path(options.capture).parent_path().string());
    if (options.replay.empty())
        return;
    if (fs::exists(journalOf(options.replay), ignored))
        layout->writable.push_back(fs::path(options.replay).parent_path().string());
    else
        layout->readOnly.push_back({options.replay, options.replay});
}

// Without the folder the layout is not kept; the window opens all the same.
bool madeWindowFolder(const CommandLine &options)
{
    std::error_code error;
    if (options.flash || !hasDisplay() || belongsToRoot(windowFolder()))
        return false;
    fs::create_directories(windowFolder(), error);
    return !error && ::access(windowFolder().c_str(), W_OK | X_OK) == 0;
}

} // namespace

bool prepareRoot(CommandLine *options, RootLayout *layout, std::string *error)
{
    fillInDefaults(options);
    for (std::string *path :
         {&options->tour, &options->pictures, &options->log, &options->monitor, &options->package,
          &options->usb[0], &options->usb[1], &options->unit, &options->plugin, &options->language,
          &options->capture, &options->replay})
        *path = path->empty() ? *path : absolute(*path);
    for (std::string &uart : options->uarts) {
        std::error_code missing;
        const fs::path device = fs::canonical(uart, missing); // by-id names are links
        uart = missing ? absolute(uart) : device.string();
    }

    *error = checkInputs(*options);
    if (error->empty() && options->flash)
        *error = logFile(options->log);
    if (!error->empty())
        return false;

    captureFailures(options);

    layout->supervised = true;
    layout->realMemory = options->realMemory;
    layout->uart = options->uart();
    layout->readOnly.push_back({options->plugin, options->plugin});
    for (const std::string &file : {options->unit, options->language}) {
        if (!file.empty())
            layout->readOnly.push_back({file, file});
    }
    if (!options->package.empty())
        layout->readOnly.push_back({options->package, kPackageFolder});
    for (int port = 0; port < 2; ++port) {
        if (!options->usb[port].empty())
            layout->readOnly.push_back({options->usb[port], kUsbFolders[port]});
    }
    for (const std::string &folder : {options->tour, options->pictures}) {
        if (!folder.empty())
            layout->writable.push_back(folder);
    }
    if (options->flash)
        layout->writable.push_back(options->log);
    else if (madeWindowFolder(*options))
        layout->writable.push_back(windowFolder());
    showCapsules(*options, layout);
    if (!options->monitor.empty())
        layout->writable.push_back(fs::path(options->monitor).parent_path().string());
    return true;
}

} // namespace bench
