#include "seamline.h"

#include <QtGlobal>

#include <sys/socket.h>
#include <unistd.h>

namespace tests {

SeamLine::SeamLine()
{
    int ends[2] = {};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends) != 0)
        qFatal("no pair of sockets");
    own = ends[0];
    host = ends[1];
}

SeamLine::~SeamLine()
{
    ::close(own);
    ::close(host);
}

bench::chip::Line::Event SeamLine::wait(int wakeDescriptor,
                                        std::optional<bench::chip::Clock::time_point> deadline,
                                        bool forBytes)
{
    return waitOn(own, wakeDescriptor, deadline, forBytes);
}

QByteArray SeamLine::read()
{
    char buffer[8192];
    const ssize_t count = ::read(own, buffer, sizeof buffer);
    return count > 0 ? QByteArray(buffer, static_cast<int>(count)) : QByteArray();
}

int SeamLine::write(const QByteArray &bytes) const
{
    const ssize_t count = ::write(own, bytes.constData(), static_cast<size_t>(bytes.size()));
    return count > 0 ? static_cast<int>(count) : 0;
}

} // namespace tests
