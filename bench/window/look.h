#pragma once

#include <QFont>
#include <QPalette>

namespace bench {

// The window's one look: Fusion in dark, text at least 4.5 : 1 against its ground. The unit keeps
// the palette that it had.
QPalette darkPalette();

// All roles of a palette said out loud, so that an application's other one does not shine through.
QPalette insistent(const QPalette &palette);

// For bytes and numbers that change: each digit as wide as the next.
QFont digits();

} // namespace bench
