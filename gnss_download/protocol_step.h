#pragma once

#include "tools/common.h"

// Every step of the dialogue logs how it ended. Returns `succeeded`.
inline bool stepSucceeded(const char *step, bool succeeded)
{
    if (succeeded)
        Log("%s success", step);
    else
        Log("%s fail", step);
    return succeeded;
}
