#pragma once

namespace lmplfctrl {

class LMPlatformControl
{
public:
    static LMPlatformControl *GetInstance();

    virtual int startTcpServer() = 0;
    virtual int startUdpServer() = 0;
    virtual int stopNetTest() = 0;
    virtual int startUdp50Client() = 0;
    virtual int startUdp100Client() = 0;
    virtual int startTcpClient() = 0;
};

} // namespace lmplfctrl
