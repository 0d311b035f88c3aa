#include "line.h"

#include <QElapsedTimer>

#include <thread>

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tests {

Line::Line()
{
    char name[64] = {};
    if (::openpty(&master, &slave, name, nullptr, nullptr) != 0)
        qFatal("no pseudo-terminal");
    termios raw = settings();
    ::cfmakeraw(&raw);
    ::tcsetattr(slave, TCSANOW, &raw);
    slavePath = QString::fromLatin1(name);
}

Line::~Line()
{
    pull();
}

void Line::pull()
{
    if (master < 0)
        return;
    ::close(master);
    ::close(slave);
    master = -1;
    slave = -1;
}

void Line::sendOnly(const char *hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    if (::write(master, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size())
        qFatal("the line does not take the bytes");
}

void Line::send(const char *hex)
{
    const int before = untaken();
    sendOnly(hex);
    const int all = qMin(before + QByteArray::fromHex(hex).size(), 4000);
    QElapsedTimer clock;
    clock.start();
    while (untaken() < all && clock.elapsed() < 2000)
        std::this_thread::yield();
}

void Line::sendFlowControl(char byte)
{
    if (::write(master, &byte, 1) != 1)
        qFatal("the line does not take the byte");
    const int writable = byte == 0x11 ? 1 : 0;
    pollfd sender = {slave, POLLOUT, 0};
    QElapsedTimer clock;
    clock.start();
    while (::poll(&sender, 1, 0) != writable && clock.elapsed() < 2000)
        std::this_thread::yield();
}

int Line::untaken() const
{
    int count = 0;
    ::ioctl(slave, FIONREAD, &count);
    return count;
}

QByteArray Line::receive(int count)
{
    QByteArray bytes;
    pollfd ready = {master, POLLIN, 0};
    while (bytes.size() < count && ::poll(&ready, 1, 2000) == 1) {
        char part[4096];
        const ssize_t got =
            ::read(master, part, static_cast<size_t>(qMin<int>(sizeof part, count - bytes.size())));
        if (got <= 0)
            break;
        bytes.append(part, static_cast<int>(got));
    }
    return bytes;
}

bool Line::quiet() const
{
    pollfd ready = {master, POLLIN, 0};
    return ::poll(&ready, 1, 0) == 0;
}

termios Line::settings() const
{
    termios now = {};
    ::tcgetattr(master, &now);
    return now;
}

} // namespace tests
