#pragma once

#include <QMap>
#include <QString>

#include <chrono>

namespace bench {

// One USB port with what hangs on it.
struct UsbPortState
{
    bool disk = false;
    QString path;         // mount folder of the disk, without a trailing "/"
    int chargingMode = 2; // 0 CDP, 1 DCP, 2 SDP
};

// How the network tests against an attached device go.
struct NetworkTestState
{
    std::chrono::milliseconds runDuration{300}; // of a client run, whose call blocks as long
    QMap<QString, int> results; // what an operation returns, by its name; 0 where none stands
    QString log;                // what a run leaves as its report; empty: measured rates
    bool writesLog = true;      // false: runs succeed and leave no report
    QString server;             // the server test that runs; empty: none
};

// The unit's USB side.
struct UsbState
{
    UsbPortState ports[2];
    int certification = 79; // 79 normal, 84 TID, 77 MIF
    int function = 7;       // 6 NCM on, 7 off
    NetworkTestState networkTests;
};

} // namespace bench
