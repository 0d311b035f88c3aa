#include "clientsocket.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bench {

namespace {

// A client that has shut its side down makes no more events, not even when it goes.
constexpr int kLookEvery = 200; // milliseconds

// poll() on one descriptor; what it tells.
short polled(int descriptor, short events, int milliseconds)
{
    pollfd entry = {descriptor, events, 0};
    return ::poll(&entry, 1, milliseconds) > 0 ? entry.revents : short(0);
}

} // namespace

ClientSocket::ClientSocket(int connected, QObject *parent)
    : QObject(parent), descriptor(connected), readable(connected, QSocketNotifier::Read),
      writable(connected, QSocketNotifier::Write)
{
    writable.setEnabled(false);
    connect(&readable, &QSocketNotifier::activated, this, [this] {
        readable.setEnabled(false); // until it is read
        emit readyRead();
    });
    connect(&writable, &QSocketNotifier::activated, this, &ClientSocket::sendWaiting);
    look.setInterval(kLookEvery);
    connect(&look, &QTimer::timeout, this, &ClientSocket::lookForClient);
}

ClientSocket::~ClientSocket()
{
    if (descriptor < 0)
        return;
    readable.setEnabled(false);
    writable.setEnabled(false);
    ::close(descriptor);
}

QByteArray ClientSocket::read(int bytes)
{
    if (descriptor < 0 || ended || bytes <= 0)
        return QByteArray();
    QByteArray buffer(bytes, Qt::Uninitialized);
    const ssize_t count = ::recv(descriptor, buffer.data(), size_t(bytes), MSG_DONTWAIT);
    const int error = errno;
    if (count > 0 || (count < 0 && (error == EAGAIN || error == EINTR))) {
        readable.setEnabled(true);
        buffer.truncate(int(std::max<ssize_t>(count, 0)));
        return buffer;
    }
    ended = true;
    look.start();
    lookForClient();
    return QByteArray();
}

void ClientSocket::write(const QByteArray &bytes)
{
    if (descriptor < 0)
        return;
    waiting += bytes;
    sendWaiting();
}

void ClientSocket::flush(int milliseconds)
{
    while (!waiting.isEmpty() && polled(descriptor, POLLOUT, milliseconds) != 0)
        sendWaiting();
}

void ClientSocket::shutDownSending()
{
    ::shutdown(descriptor, SHUT_WR);
}

void ClientSocket::hangUp()
{
    if (descriptor < 0)
        return;
    readable.setEnabled(false);
    writable.setEnabled(false);
    look.stop();
    waiting.clear();
    ended = true;
    ::close(descriptor);
    descriptor = -1;
    emit disconnected();
}

void ClientSocket::sendWaiting()
{
    int sent = 0;
    while (sent < waiting.size()) {
        const ssize_t count = ::send(descriptor, waiting.constData() + sent,
                                     size_t(waiting.size() - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            hangUp();
            return;
        }
        if (count < 0 && errno == EAGAIN)
            break;
        sent += int(std::max<ssize_t>(count, 0));
    }
    waiting.remove(0, sent);
    writable.setEnabled(!waiting.isEmpty());
    if (waiting.isEmpty())
        emit bytesWritten();
}

void ClientSocket::lookForClient()
{
    if ((polled(descriptor, 0, 0) & (POLLHUP | POLLERR)) != 0)
        hangUp();
}

} // namespace bench
