#include "rawhost.h"

#include <QElapsedTimer>
#include <QtEndian>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace tests {

namespace {

speed_t codeOf(int baud)
{
    switch (baud) {
    case 0:
        return B0; // read back as a rate that is not known
    case 9600:
        return B9600;
    case 115200:
        return B115200;
    case 921600:
        return B921600;
    default:
        qFatal("no code for %d baud", baud);
    }
}

QByteArray hexOf(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes.toHex();
}

QByteArray checksumOf(const QByteArray &program)
{
    quint16 sum = 0;
    for (int i = 0; i < program.size(); ++i)
        sum = static_cast<quint16>(sum ^ (static_cast<quint8>(program.at(i)) << (i % 2 * 8)));
    return hexOf(sum).mid(4);
}

} // namespace

RawHost::RawHost(const QString &linePath, int baud)
    : descriptor(::open(qPrintable(linePath), O_RDWR | O_NOCTTY | O_CLOEXEC))
{
    termios settings = {};
    if (descriptor < 0 || ::tcgetattr(descriptor, &settings) != 0)
        qFatal("cannot open %s", qPrintable(linePath));
    ::cfmakeraw(&settings);
    ::tcsetattr(descriptor, TCSANOW, &settings);
    setBaud(baud);
}

RawHost::~RawHost()
{
    ::close(descriptor);
}

void RawHost::setBaud(int baud)
{
    termios settings = {};
    ::tcgetattr(descriptor, &settings);
    ::cfsetspeed(&settings, codeOf(baud));
    ::tcsetattr(descriptor, TCSANOW, &settings);
}

void RawHost::setSoftwareFlowControl()
{
    termios settings = {};
    ::tcgetattr(descriptor, &settings);
    settings.c_iflag |= IXON | IXOFF;
    ::tcsetattr(descriptor, TCSANOW, &settings);
}

void RawHost::put(const QByteArray &bytes)
{
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count <= 0)
            qFatal("the line took no bytes");
        done += static_cast<int>(count);
    }
}

void RawHost::putHex(const QByteArray &hexBytes)
{
    put(QByteArray::fromHex(hexBytes));
}

QByteArray RawHost::get(int count, int timeoutMilliseconds)
{
    QElapsedTimer clock;
    clock.start();
    QByteArray bytes;
    while (bytes.size() < count) {
        const qint64 left = timeoutMilliseconds - clock.elapsed();
        pollfd readable = {descriptor, POLLIN, 0};
        if (left <= 0 || ::poll(&readable, 1, static_cast<int>(left)) <= 0)
            break;
        QByteArray chunk(count - bytes.size(), '\0');
        const ssize_t got = ::read(descriptor, chunk.data(), static_cast<size_t>(chunk.size()));
        bytes.append(chunk.left(static_cast<int>(std::max<ssize_t>(got, 0))));
    }
    return bytes;
}

QByteArray RawHost::getHex(int count, int timeoutMilliseconds)
{
    return get(count, timeoutMilliseconds).toHex(' ');
}

int RawHost::pending() const
{
    int count = 0;
    ::ioctl(descriptor, FIONREAD, &count);
    return count;
}

bool RawHost::ask(const QByteArray &sent, const QByteArray &expected)
{
    putHex(sent);
    const QByteArray wanted = QByteArray::fromHex(expected).toHex(' ');
    answer = getHex(QByteArray::fromHex(expected).size());
    if (answer == wanted)
        return true;
    qInfo("sent %s, expected %s, got %s", sent.left(40).constData(), wanted.constData(),
          answer.constData());
    return false;
}

bool RawHost::synchronise()
{
    return ask("a0", "5f") && ask("0a", "f5") && ask("50", "af") && ask("05", "fa");
}

bool RawHost::identify()
{
    for (const char *address : {"80000000", "80000008", "8000000c", "80000000", "80000004"}) {
        const bool accepted =
            echoed("d0") && echoed(address) && echoed("00000001") && ask("", "0000");
        if (!accepted || get(2).size() != 2 || !ask("", "0000"))
            return false;
    }
    return echoed("d8") && get(4).size() == 4
        && ask("", "0000")
        // the watchdog
        && echoed("d2") && echoed("a2080000") && echoed("00000001") && ask("", "0000")
        && echoed("0010") && ask("", "0000");
}

bool RawHost::sendProgram(const QByteArray &program)
{
    if (!ask("", "0000"))
        return false;
    for (int offset = 0; offset < program.size(); offset += 1024)
        put(program.mid(offset, 1024));
    return ask("", checksumOf(program)) && ask("", "0000");
}

bool RawHost::loadStage1(const QByteArray &program)
{
    return echoed("d9") && echoed("04204000") && echoed(hexOf(static_cast<quint32>(program.size())))
        && echoed("00000000") && echoed("00000000") && sendProgram(program);
}

bool RawHost::greetStage1()
{
    return ask("5a", "5a 0000") && ask("5a00", "5a00 0000") && ask("5a", "5a 0000");
}

bool RawHost::switchRate(int baud)
{
    if (!echoed("5a5a"))
        return false;
    setBaud(baud);
    return true;
}

bool RawHost::checkLine()
{
    for (const char *byte : {"69", "5a", "0f", "1e", "2d", "3c", "4b", "5a", "69", "78", "87", "96",
                             "a5", "b4", "c3", "d2", "e1", "f0"}) {
        if (!echoed(byte))
            return false;
    }
    if (!ask("", "0000") || !ask("5a", "0000"))
        return false;
    for (int i = 0; i < 2; ++i) {
        putHex("5a");
        if (get(4).size() != 4 || !ask("", "0000"))
            return false;
    }
    return true;
}

bool RawHost::loadStage2(const QByteArray &program)
{
    return echoed("d7") && echoed("04204000") && echoed(hexOf(static_cast<quint32>(program.size())))
        && echoed("00000000") && sendProgram(program);
}

bool RawHost::jump()
{
    return echoed("d5") && ask("04204000", "04204000 0000");
}

bool RawHost::handshake()
{
    return ask("", "c0") && ask("3f", "0c") && ask("f3", "3f") && ask("c0", "f3")
        && ask("0c", "5a");
}

bool RawHost::learn()
{
    if (!ask("00", "69") || !ask("00", "69"))
        return false;
    putHex("5a");
    if (get(6).size() != 6 || !echoed("24"))
        return false;
    putHex("16 01 00 00 50 c8 20 04 7c c5 20 04 d0 cb 20 04 01 00 ef 00 60 00 16 00"
           "00 00 00 00 18 cb 20 04 b8 cb 20 04");
    return get(2).size() == 2 && ask("", "0000") && get(1).size() == 1;
}

bool RawHost::connectToAgent()
{
    return synchronise() && identify() && loadStage1(pattern(2458, 1)) && greetStage1()
        && switchRate() && checkLine() && loadStage2(pattern(39148, 2)) && jump() && handshake()
        && learn();
}

bool RawHost::announceImage(quint32 address, quint32 paddedLength)
{
    putHex("5a");
    return ask("b2" + hexOf(address) + hexOf(paddedLength) + "00001000", "5a 5a");
}

bool RawHost::sendPacket(const QByteArray &packet)
{
    put(packet);
    return get(2).toHex().mid(2) == "69";
}

bool RawHost::writeImage(quint32 address, const QByteArray &image)
{
    const QByteArray whole = padded(image);
    if (!announceImage(address, static_cast<quint32>(whole.size())))
        return false;
    quint32 sum = 0;
    for (int offset = 0; offset < whole.size(); offset += 4096) {
        const QByteArray packet = whole.mid(offset, 4096);
        for (const char byte : packet)
            sum += static_cast<quint8>(byte);
        if (!sendPacket(packet))
            return false;
    }
    return ask("", "5a") && ask(hexOf(sum), "5a");
}

bool RawHost::finish()
{
    putHex("a5");
    return get(1).size() == 1 && ask("d9 00", "5a");
}

Rig::Rig(bool pulsed)
{
    set([](auto &settings) { settings.keepLineRate = false; });
    QString error;
    const QString path = receiver.open(&error);
    if (path.isEmpty())
        qFatal("%s", qPrintable(error));
    host = std::make_unique<RawHost>(path);
    if (pulsed)
        pulse(receiver);
}

void pulse(bench::Receiver &receiver)
{
    receiver.setReset(true);
    receiver.setReset(false);
}

QByteArray pattern(int count, quint32 start)
{
    QByteArray bytes(count, '\0');
    quint32 value = start * 2654435761U;
    for (char &byte : bytes) {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<char>(value >> 24);
    }
    return bytes;
}

QByteArray padded(const QByteArray &image)
{
    QByteArray whole = image;
    while (whole.size() % 4096 != 0)
        whole.append('\xFF');
    return whole;
}

} // namespace tests
