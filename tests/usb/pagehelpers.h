#pragma once

#include "tests/support/connections.h"

#include <QByteArray>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <QWidget>

namespace tests {

// The child of that object name; fails the case where there is none.
template <typename Widget = QWidget>
Widget *child(const QWidget &page, const char *name)
{
    auto *found = page.findChild<Widget *>(QString::fromLatin1(name));
    if (found == nullptr)
        qFatal("no widget %s", name);
    return found;
}

// A real click at the widget's centre: it goes to whatever lies on top there.
// The page must be shown as a window.
void clickAt(QWidget &page, const char *name);
void pressAt(QWidget &page, const char *name);
void releaseAt(QWidget &page, const char *name);

// Widgets that a user sees and that lie over one another though they should not:
// "name/name". A caption lies inside its button and is left out.
QStringList overlaps(const QWidget &page);

// Widgets that a user sees and that reach out of their parent.
QStringList outsiders(const QWidget &page);

QByteArray contentOf(const char *path);
void writeFile(const char *path, const QByteArray &content);

} // namespace tests
