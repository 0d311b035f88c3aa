#include "look.h"

#include <QFontDatabase>

namespace bench {

QPalette darkPalette()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x20, 0x23, 0x28));
    dark.setColor(QPalette::WindowText, QColor(0xE6, 0xE8, 0xEB));
    dark.setColor(QPalette::Base, QColor(0x17, 0x19, 0x1D));
    dark.setColor(QPalette::AlternateBase, QColor(0x1D, 0x20, 0x25));
    dark.setColor(QPalette::ToolTipBase, QColor(0x2C, 0x30, 0x37));
    dark.setColor(QPalette::ToolTipText, QColor(0xE6, 0xE8, 0xEB));
    dark.setColor(QPalette::PlaceholderText, QColor(0x9A, 0xA0, 0xA8));
    dark.setColor(QPalette::Text, QColor(0xE6, 0xE8, 0xEB));
    dark.setColor(QPalette::Button, QColor(0x2F, 0x34, 0x3B));
    dark.setColor(QPalette::ButtonText, QColor(0xE6, 0xE8, 0xEB));
    dark.setColor(QPalette::BrightText, QColor(0xFF, 0x8A, 0x80));
    dark.setColor(QPalette::Link, QColor(0x7F, 0xB4, 0xFF));
    dark.setColor(QPalette::Highlight, QColor(0x1F, 0x5F, 0xB0));
    dark.setColor(QPalette::HighlightedText, QColor(0xFF, 0xFF, 0xFF));
    dark.setColor(QPalette::Light, QColor(0x45, 0x4B, 0x54));
    dark.setColor(QPalette::Midlight, QColor(0x3A, 0x40, 0x48));
    dark.setColor(QPalette::Mid, QColor(0x2A, 0x2E, 0x34));
    dark.setColor(QPalette::Dark, QColor(0x12, 0x14, 0x17));
    dark.setColor(QPalette::Shadow, QColor(0x00, 0x00, 0x00));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(0x8A, 0x90, 0x98));
    return dark;
}

QFont digits()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(9);
    return font;
}

QPalette insistent(const QPalette &palette)
{
    QPalette all = palette;
    for (const QPalette::ColorGroup group :
         {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (int role = 0; role < QPalette::NColorRoles; ++role)
            all.setBrush(group, QPalette::ColorRole(role),
                         palette.brush(group, QPalette::ColorRole(role)));
    }
    return all;
}

} // namespace bench
