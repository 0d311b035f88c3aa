#pragma once

#include "platform_api.h"

#include <QString>

namespace logs {

// Brings the unit's logs to a USB stick. GUI thread only.
class PLATFORM_API OutputLogsUsb
{
public:
    static OutputLogsUsb *instance();

    // Shows a short message on the screen that goes by itself; does not block.
    void tipsMessagePopup(QString text);

    // Copies the unit's logs to the stick.
    void updateLogToUsb(bool start);

    // Starts and ends a dump of the phone projection's diagnostics.
    void startDumpsys(bool start);
    void endDumpsys(bool end);
};

} // namespace logs
