#pragma once

#include "platform_api.h"

#include <QString>

class QFont;

// Fonts and text colours of the unit's style. GUI thread only.
class PLATFORM_API ColorGroup
{
public:
    // Sets `font` to what the style has for `group` ("ColorGroup1" ...) at `size` (pixels)
    // and `state` (0 normal, 1 selected, 2 disabled, 3 checked).
    static void setFontColor(QFont &font, QString group, int size, int state);
};
