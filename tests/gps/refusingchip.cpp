#include "refusingchip.h"

#include <QtGlobal>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace tests {

namespace {

const char kDevice[] = "/dev/ttyS4";

constexpr std::chrono::milliseconds kCrossing(100);

} // namespace

RefusingChip::RefusingChip()
{
    master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    const char *path = nullptr;
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0
        || (path = ::ptsname(master)) == nullptr)
        qFatal("no pseudo-terminal");
    slave = ::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    ::tcgetattr(slave, &settings);
    ::cfmakeraw(&settings);
    if (slave < 0 || ::tcsetattr(slave, TCSANOW, &settings) != 0 || ::symlink(path, kDevice) != 0)
        qFatal("no device");
    thread = std::thread(&RefusingChip::talk, this);
}

RefusingChip::~RefusingChip()
{
    finished = true;
    thread.join();
    std::remove(kDevice);
    ::close(slave);
    ::close(master);
}

QByteArray RefusingChip::received() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return bytes;
}

// The sync's answers are complements; afterwards there is always something to read for the host.
void RefusingChip::talk()
{
    int synchronised = 0;
    std::chrono::steady_clock::time_point began;
    while (!finished) {
        unsigned char byte = 0;
        if (waitForByte() && ::read(master, &byte, 1) == 1) {
            const std::lock_guard<std::mutex> lock(mutex);
            bytes.append(static_cast<char>(byte));
            if (byte == 0xA0) {
                // Repeated before the host saw the answer: answered twice, it would stay one
                // behind for good.
                const auto now = std::chrono::steady_clock::now();
                if (synchronised == 1 && now - began < kCrossing)
                    continue;
                began = now;
                synchronised = 0;
            }
            const auto answer = static_cast<unsigned char>(~byte);
            if (++synchronised <= 4 && ::write(master, &answer, 1) != 1)
                return;
        }
        const unsigned char refusals[8] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
        if (synchronised >= 4 && hostHasReadAll()
            && ::write(master, refusals, sizeof refusals) != sizeof refusals)
            return;
    }
}

// Asked for by a poll, which delivers what is on its way. A count of what has been delivered stays
// 0 while the kernel has no time for it: then the line would fill up and the write never end.
bool RefusingChip::hostHasReadAll() const
{
    pollfd host = {slave, POLLIN, 0};
    return ::poll(&host, 1, 0) == 0;
}

bool RefusingChip::waitForByte()
{
    pollfd line = {master, POLLIN, 0};
    return ::poll(&line, 1, 1) == 1;
}

} // namespace tests
