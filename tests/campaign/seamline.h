#pragma once

#include "bench/receiver/line.h"

#include <atomic>

namespace tests {

// A line without a terminal: the receiver's protocol machines at one end, a SeamPort at the other.
// Any number of bytes fits on it.
class SeamLine : public bench::chip::Line
{
public:
    SeamLine();
    ~SeamLine() override;

    // the receiver's end
    Event wait(int wakeDescriptor, std::optional<bench::chip::Clock::time_point> deadline,
               bool forBytes) override;
    QByteArray read() override;
    int write(const QByteArray &bytes) const override;
    int hostBaud() const override { return rate; }
    bool hostFlowControl() const override { return true; }

    // the host's end
    int hostDescriptor() const { return host; }
    void setHostBaud(int baud) { rate = baud; }

private:
    int own = -1;
    int host = -1;
    std::atomic<int> rate{0};
};

} // namespace tests
