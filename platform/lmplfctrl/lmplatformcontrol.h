#pragma once

#include "platform_api.h"

namespace lmplfctrl {

// Network throughput tests against an attached Apple device. Each call blocks
// until the run is over, writes its outcome to "/var/ipt.log" and returns 0 for
// success. GUI thread only. The order of the virtual functions is ABI.
class PLATFORM_API LMPlatformControl
{
public:
    static LMPlatformControl *GetInstance();

    virtual int startTcpServer() = 0;
    virtual int startUdpServer() = 0;
    virtual int stopNetTest() = 0;
    virtual int startUdp50Client() = 0;
    virtual int startUdp100Client() = 0;
    virtual int startTcpClient() = 0;

protected:
    virtual ~LMPlatformControl() = default;
};

} // namespace lmplfctrl
