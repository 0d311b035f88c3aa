#include "framework/colorgroup.h"

#include "bench/unit/journal.h"

#include <QFont>

void ColorGroup::setFontColor(QFont &font, QString group, int size, int state)
{
    bench::journal().call(QStringLiteral("ColorGroup"), QStringLiteral("setFontColor"),
                          {group, size, state});
    // The simulated style has one face for all groups and states.
    font.setFamily(QStringLiteral("DejaVu Sans Condensed"));
    font.setPixelSize(size);
}
