#include "rawhost.h"

#include "gnss_download/agent_images.h"
#include "gnss_download/download_agent_protocol.h"

#include <QtEndian>

#include <algorithm>
#include <ctime>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace benchmark {

namespace {

constexpr long kNanosecondsInMillisecond = 1000 * 1000;
constexpr uint32_t kProgramAddress = 0x04204000;

int64_t millisecondOfTheDay()
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return int64_t(now.tv_sec) * 1000 + now.tv_nsec / kNanosecondsInMillisecond;
}

// Until so many whole milliseconds of the day have begun.
void wait(int milliseconds)
{
    const int64_t end = millisecondOfTheDay() + milliseconds;
    const timespec until = {static_cast<time_t>(end / 1000),
                            static_cast<long>(end % 1000) * kNanosecondsInMillisecond};
    while (millisecondOfTheDay() < end)
        ::clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &until, nullptr);
}

} // namespace

RawHost::RawHost(const QString &port, std::function<void(bool)> reset)
    : descriptor(::open(qPrintable(port), O_RDWR | O_NOCTTY | O_CLOEXEC)),
      setReset(std::move(reset))
{
    setRate(B921600);
}

RawHost::~RawHost()
{
    ::close(descriptor);
}

double RawHost::fixedMilliseconds() const
{
    return fixedWaits + double(fixedBytes) * 10 * 1000 / 921600;
}

void RawHost::pause(int milliseconds)
{
    fixedWaits += packets ? 0 : milliseconds;
    wait(milliseconds);
}

void RawHost::setRate(unsigned baud)
{
    termios line = {};
    ::tcgetattr(descriptor, &line);
    ::cfmakeraw(&line);
    line.c_iflag |= IXON | IXOFF;
    line.c_cflag |= CREAD | CLOCAL;
    ::cfsetspeed(&line, baud);
    ::tcsetattr(descriptor, TCSANOW, &line);
}

void RawHost::write(const void *bytes, size_t count)
{
    fixedBytes += packets ? 0 : qint64(count);
    const auto *next = static_cast<const char *>(bytes);
    while (count > 0) {
        const ssize_t written = ::write(descriptor, next, count);
        if (written <= 0)
            return;
        next += written;
        count -= static_cast<size_t>(written);
    }
}

bool RawHost::read(void *bytes, size_t count, uint32_t polls)
{
    fixedWaits += packets ? 0 : 1;
    fixedBytes += packets ? 0 : qint64(count);
    int pending = 0;
    do {
        wait(1);
        ::ioctl(descriptor, FIONREAD, &pending);
    } while (pending < static_cast<int>(count) && --polls != 0);
    return pending >= static_cast<int>(count)
        && ::read(descriptor, bytes, count) == static_cast<ssize_t>(count);
}

void RawHost::drain()
{
    fixedWaits += 30; // nothing comes
    int pending = 0;
    for (int poll = 0; poll < 30 && pending == 0; ++poll) {
        wait(1);
        ::ioctl(descriptor, FIONREAD, &pending);
    }
    ::tcflush(descriptor, TCIFLUSH);
}

template <typename Word>
void RawHost::put(Word word)
{
    word = qToBigEndian(word);
    write(&word, sizeof word);
}

template <typename Word>
Word RawHost::get(uint32_t polls)
{
    Word word = 0;
    return read(&word, sizeof word, polls) ? qFromBigEndian(word) : Word(0xEE);
}

template <typename Word>
bool RawHost::echoed(Word word)
{
    put(word);
    return get<Word>() == word;
}

bool RawHost::good()
{
    return get<uint16_t>() == 0;
}

bool RawHost::goodAfterTwoWords()
{
    get<uint16_t>();
    get<uint16_t>();
    return good();
}

bool RawHost::synchronise()
{
    for (int tries = 0; tries < 1000; ++tries) {
        put<uint8_t>(0xA0);
        if (get<uint8_t>(5) == 0x5F)
            break;
    }
    for (const uint8_t byte : {0x0A, 0x50, 0x05}) {
        put(byte);
        if (get<uint8_t>(5) != static_cast<uint8_t>(~byte))
            return false;
    }
    return true;
}

bool RawHost::registerRead(uint32_t address)
{
    if (!echoed<uint8_t>(0xD0) || !echoed(address) || !echoed<uint32_t>(1) || !good())
        return false;
    get<uint16_t>();
    return good();
}

bool RawHost::identify()
{
    for (const uint32_t address : {0x80000000, 0x80000008, 0x8000000C, 0x80000000, 0x80000004}) {
        if (!registerRead(address))
            return false;
    }
    return echoed<uint8_t>(0xD8) && goodAfterTwoWords();
}

bool RawHost::watchdogOff()
{
    return echoed<uint8_t>(0xD2) && echoed<uint32_t>(0xA2080000) && echoed<uint32_t>(1) && good()
        && echoed<uint16_t>(0x0010) && good();
}

bool RawHost::load(uint8_t command, const uint8_t *program, uint32_t length, int zeroWords)
{
    if (!echoed(command) || !echoed(kProgramAddress) || !echoed(length))
        return false;
    for (int i = 0; i < zeroWords; ++i) {
        if (!echoed<uint32_t>(0))
            return false;
    }
    if (!good())
        return false;
    for (uint32_t offset = 0; offset < length; offset += 1024)
        write(program + offset, std::min(1024U, length - offset));
    get<uint16_t>(); // the receiver compares nothing with it
    return good();
}

bool RawHost::greet()
{
    return echoed<uint8_t>(0x5A) && good() && echoed<uint16_t>(0x5A00) && good()
        && echoed<uint8_t>(0x5A) && good() && echoed<uint16_t>(0x5A5A);
}

bool RawHost::checkLine()
{
    for (const uint8_t byte : agent::kLineCheck) {
        if (!echoed(byte))
            return false;
    }
    if (!good())
        return false;
    put<uint8_t>(0x5A);
    if (!good())
        return false;
    put<uint8_t>(0x5A);
    if (!goodAfterTwoWords())
        return false;
    put<uint8_t>(0x5A);
    return goodAfterTwoWords();
}

bool RawHost::handshake()
{
    for (const uint8_t said : agent::kHandshake) {
        if (get<uint8_t>() != said)
            return false;
        put(static_cast<uint8_t>(~said));
    }
    return get<uint8_t>() == 0x5A;
}

bool RawHost::agree()
{
    for (int i = 0; i < 2; ++i) {
        put<uint8_t>(0);
        if (get<uint8_t>() != 0x69)
            return false;
    }
    put<uint8_t>(0x5A);
    for (int i = 0; i < 3; ++i)
        get<uint16_t>();
    if (!echoed<uint8_t>(0x24))
        return false;
    write(unknow_array, sizeof unknow_array);
    get<uint16_t>();
    const bool agreed = good();
    get<uint8_t>();
    return agreed;
}

bool RawHost::image(uint32_t address, const QByteArray &data)
{
    const auto length = static_cast<uint32_t>(data.size());
    const uint32_t packetCount = (length + agent::kPacketBytes - 1) / agent::kPacketBytes;
    put<uint8_t>(0x5A);
    drain();
    put<uint8_t>(0xB2);
    put(address);
    put(packetCount * agent::kPacketBytes);
    put(agent::kPacketBytes);
    if (get<uint8_t>() != 0x5A || get<uint8_t>() != 0x5A)
        return false;

    uint32_t sum = 0;
    packets = true;
    for (uint32_t i = 0; i < packetCount; ++i) {
        QByteArray packet =
            data.mid(static_cast<int>(i * agent::kPacketBytes), agent::kPacketBytes);
        packet.append(static_cast<int>(agent::kPacketBytes) - packet.size(), '\xff');
        for (const char byte : qAsConst(packet))
            sum += static_cast<uint8_t>(byte);
        write(packet.constData(), agent::kPacketBytes);
        get<uint8_t>(300);
        if (get<uint8_t>(300) != 0x69)
            return false;
        pause(3);
    }
    if (get<uint8_t>() != 0x5A)
        return false;
    put(sum);
    const bool written = get<uint8_t>(900) == 0x5A;
    packets = false;
    return written;
}

bool RawHost::end()
{
    put<uint8_t>(0xA5);
    get<uint8_t>();
    put<uint8_t>(0xD9);
    put<uint8_t>(0);
    return get<uint8_t>() == 0x5A;
}

bool RawHost::update(const file &package)
{
    setReset(true);
    pause(100);
    setReset(false);
    if (!synchronise() || !identify() || !watchdogOff() || !load(0xD9, da_array, sizeof da_array, 2)
        || !greet())
        return false;
    pause(100);
    setRate(B921600);
    pause(100);
    return checkLine() && load(0xD7, da_array1, sizeof da_array1, 1) && echoed<uint8_t>(0xD5)
        && echoed(kProgramAddress) && good() && handshake() && agree()
        && image(0x08030000, package.bootloader_bin) && image(0x08000000, package.partition_bin)
        && image(0x08013000, package.app_bin) && image(0x083FF000, package.config_bin) && end();
}

} // namespace benchmark
