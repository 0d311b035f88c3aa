#pragma once

#include <QString>

namespace logs {

class OutputLogsUsb
{
public:
    static OutputLogsUsb *instance();
    void tipsMessagePopup(QString);
    void updateLogToUsb(bool);
    void startDumpsys(bool);
    void endDumpsys(bool);
};

} // namespace logs
