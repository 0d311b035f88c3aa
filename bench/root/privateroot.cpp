#include "privateroot.h"

#include "bubblewrap.h"
#include "exitstatus.h"
#include "failure.h"
#include "rootcontent.h"
#include "supervisor.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <sys/random.h>
#include <unistd.h>

namespace bench {

namespace {

// Two halves of one mark, a variable and a file of the private root: the variable alone
// may be inherited from somewhere else, and must never lead to the machine's own /dev/mem.
constexpr char kMarkVariable[] = "HEADUNIT_PRIVATE_ROOT";
constexpr char kMarkFile[] = "/run/unit/.entered";

std::string programPath()
{
    char path[PATH_MAX] = {};
    if (::readlink("/proc/self/exe", path, sizeof path - 1) < 0)
        fail("read", "/proc/self/exe");
    return path;
}

std::string folderOf(const std::string &path)
{
    return path.substr(0, path.rfind('/'));
}

std::string newMark()
{
    unsigned char bytes[16];
    if (::getrandom(bytes, sizeof bytes, 0) != sizeof bytes)
        fail("read", "random numbers");
    std::string text;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

// A descriptor from which bwrap can read `text`.
int readable(const std::string &text)
{
    int channel[2];
    if (::pipe(channel) != 0
        || ::write(channel[1], text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        fail("write", "a pipe");
    ::close(channel[1]);
    return channel[0];
}

// The mark serves once: neither this program's children nor a second look find it.
bool takeMark()
{
    const char *variable = std::getenv(kMarkVariable);
    if (variable == nullptr)
        return false;
    std::string mark;
    std::ifstream(kMarkFile) >> mark;
    const bool ours = !mark.empty() && mark == variable;
    ::unsetenv(kMarkVariable);
    if (ours)
        std::remove(kMarkFile);
    return ours;
}

} // namespace

std::string installationPrefix()
{
    return folderOf(folderOf(programPath()));
}

bool insidePrivateRoot()
{
    static const bool inside = takeMark();
    return inside;
}

int stopDescriptor()
{
    static const int descriptor = insidePrivateRoot() ? takeStopDescriptor() : -1;
    return descriptor;
}

void enterPrivateRoot(char **argv, const RootLayout &layout)
{
    if (insidePrivateRoot()) {
        stopDescriptor(); // from now on no request to stop is lost
        makeRootContent(installationPrefix() + "/share/headunit/home");
        return;
    }

    Words command = rootCommand(layout);
    const std::string refused = refusal(command);
    if (!refused.empty()) {
        std::fprintf(stderr, "bench: this machine refuses a private root: %s\n", refused.c_str());
        std::exit(kPrivateRootRefused);
    }

    const std::string mark = newMark();
    const std::string descriptor = std::to_string(readable(mark));
    command.insert(
        command.end(),
        {"--file", descriptor, kMarkFile, "--setenv", kMarkVariable, mark, "--", programPath()});
    for (char **word = argv + 1; *word != nullptr; ++word)
        command.push_back(*word);
    if (layout.supervised)
        supervise(std::move(command));
    ::execvp("bwrap", pointers(command).data());
    fail("start", "bwrap");
}

} // namespace bench
