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
        // As the page does, and so that a recorder can show them.
        qRegisterMetaType<uint8_t>("uint8_t");
        qRegisterMetaType<uint16_t>("uint16_t");
        qRegisterMetaType<uint32_t>("uint32_t");
        qRegisterMetaType<uint32_t>("hal_uart_baudrate_t");
        com_set = config();
        br = QStringLiteral("921600");
    }
    ~Link() { downloadfile = file(); }
    Q_DISABLE_COPY_MOVE(Link)

    explicit Link(const Dialogue &dialogue) : Link() { chip.play(dialogue); }

    ugrade_thread worker{QStringLiteral("/dev/ttyS4")};
    ScriptedChip chip{&worker};
};

// An update that goes well, and the package that it writes.
inline Dialogue goodDialogue()
{
    return Dialogue::read(fixture(QStringLiteral("good_dialogue.txt")));
}

inline void fillPackage()
{
    downloadfile = {"\xB0", QByteArray(4096, '\x50'), QByteArray(4096, '\xA0') + '\xA1',
                    "\xC0\xC1\xC2"};
}

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
