#pragma once

#include <QString>
#include <QStringList>

namespace tests {

// The kernel's part in ioctl() for modem lines and GPIO lines, in place of the real one while an
// object of this class lives. All other requests go to the kernel.
class RecordedCalls
{
public:
    RecordedCalls();
    RecordedCalls(const RecordedCalls &) = delete;
    RecordedCalls &operator=(const RecordedCalls &) = delete;
    ~RecordedCalls();

    // "RTS set", "DTR cleared", "gpio 3 output low as \"name\"", "gpio high".
    QStringList calls() const;
    void clear();

    // As the kernel does whenever somebody opens a port.
    void raiseModemLines();
    bool rts() const;
    bool dtr() const;

    void failNext(int reason); // the next request
    void setGpioLines(unsigned count);
    void setHolder(const QString &consumer); // of every GPIO line: requests find it busy
};

} // namespace tests
