#pragma once

#include "scriptedchip.h"

#include "gnss_download/ugrade_thread.h"
#include "tools/common.h"

#include <QStringList>

namespace tests {

// A worker with a scripted chip behind it, and the plug-in's settings as they are before the first
// update. No package is left behind.
struct Link
{
    Link()
    {
        com_set = config();
        br = QStringLiteral("921600");
    }
    ~Link() { downloadfile = file(); }
    Q_DISABLE_COPY_MOVE(Link)

    explicit Link(const Dialogue &dialogue) : Link() { chip.play(dialogue); }

    ugrade_thread worker{QStringLiteral("/dev/ttyS4")};
    ScriptedChip chip{&worker};
};

// What the protocol logged: the lines that carry no location.
inline QStringList logTexts(const QStringList &lines)
{
    QStringList texts;
    for (const QString &line : lines) {
        if (!line.startsWith(QLatin1String("[DBG]")))
            texts << line;
    }
    return texts;
}

} // namespace tests
