#pragma once

#include <QString>

namespace bench {

// What the user's session offers, before there is an application object.
bool hasDisplay();

// Chooses Qt's platform before the application object is made: the session's display, and
// none where there is none or it cannot be opened.
void choosePlatform();

// With the application object: whether the screen is really shown.
bool isOnDisplay();

// Style and fonts, the same on every machine; needs the application object.
void applyAppearance();

} // namespace bench
