#pragma once

#include "line.h"

#include <QString>

namespace bench::chip {

// A line that a host opens by its path. Of a pseudo-terminal it owns the master and one raw slave
// descriptor, which keeps the line alive and free of echo while no host has it open. A
// device that goes is opened again when it is back.
class Terminal : public Line
{
public:
    ~Terminal() override { close(); }

    bool open(QString *error); // a pseudo-terminal
    bool openDevice(const QString &device, QString *error);
    void close();
    QString path() const { return hostPath; }

    Event wait(int wakeDescriptor, std::optional<Clock::time_point> deadline,
               bool forBytes) override;
    QByteArray read() override;
    int write(const QByteArray &bytes) const override;
    int hostBaud() const override;
    bool hostFlowControl() const override;

private:
    bool isDevice() const { return slave < 0; }
    Event awaitDevice(int wakeDescriptor, std::optional<Clock::time_point> deadline);

    int own = -1; // the pseudo-terminal's master, or the device; -1: closed, or the device is gone
    int slave = -1; // of a pseudo-terminal
    QString hostPath;
};

} // namespace bench::chip
