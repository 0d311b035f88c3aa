#pragma once

#include <QByteArray>
#include <QString>

#include <termios.h>

namespace tests {

// A pseudo-terminal: the transport opens path(), the test is the other end.
class Line
{
public:
    Line();
    ~Line();
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    QString path() const { return slavePath; }

    // Takes the line away under whoever has it open: what an adapter does that is pulled. Then
    // reads bring nothing, writes fail, and the device is gone.
    void pull();

    // Returns when the bytes lie at the other end, so that a read finds all of them pending.
    void send(const char *hex);
    // Returns at once, for a transport that takes them in meanwhile.
    void sendOnly(const char *hex);

    // 0x13 stops the other end's sender, 0x11 lets it go on; returns when the driver does so.
    void sendFlowControl(char byte);

    // Bytes that the transport has not taken in yet; the driver tells of 4095 at most.
    int untaken() const;

    // What has arrived, up to `count` bytes; waits for the first of each part.
    QByteArray receive(int count);
    bool quiet() const;

    termios settings() const;

private:
    int master = -1;
    int slave = -1; // kept open: the line stays up between two opens
    QString slavePath;
};

} // namespace tests
