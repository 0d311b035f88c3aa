#include "serialdevice.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace bench {

namespace {

// The kernel's fixed numbers for pseudo-terminals (its list of devices), the last for the old kind.
constexpr unsigned kFirstMajor = 136;
constexpr unsigned kLastMajor = 143;
constexpr unsigned kOldMajor = 3;

constexpr char kBusy[] = " is in use by another program; end that one";

// The process that holds the device's lock file, as terminal programs write it; 0: none.
pid_t lockHolder(const std::string &path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    for (const char *folder : {"/run/lock", "/var/lock"}) {
        pid_t holder = 0;
        if (std::ifstream(std::string(folder) + "/LCK.." + name) >> holder && holder > 0
            && (::kill(holder, 0) == 0 || errno == EPERM))
            return holder;
    }
    return 0;
}

// TIOCEXCL does not stop the superuser's open; this tells it that somebody asked for it.
bool isExclusive(int device)
{
    int exclusive = 0;
    return ::ioctl(device, TIOCGEXCL, &exclusive) == 0 && exclusive != 0;
}

} // namespace

std::string claimSerialDevice(const std::string &path)
{
    if (const pid_t holder = lockHolder(path))
        return path + " is in use by process " + std::to_string(holder) + "; end that one";

    const int device = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0) {
        switch (errno) {
        case ENOENT:
            return path + " is not there; plug the adapter in, or name another device";
        case EACCES:
        case EPERM:
            return path + " may not be opened; join the device's group (often dialout)";
        case EBUSY:
            return path + kBusy;
        default:
            return path + " cannot be opened (" + std::strerror(errno) + "); name a serial device";
        }
    }
    std::string trouble;
    if (::isatty(device) == 0)
        trouble = path + " is no serial device; name one";
    else if (isExclusive(device) || ::flock(device, LOCK_EX | LOCK_NB) != 0)
        trouble = path + kBusy;
    if (!trouble.empty())
        ::close(device);
    return trouble; // an open device stays open: the lock ends with it
}

bool isPseudoTerminal(const std::string &path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISCHR(status.st_mode))
        return false;
    const unsigned number = major(status.st_rdev);
    return number == kOldMajor || (number >= kFirstMajor && number <= kLastMajor);
}

} // namespace bench
