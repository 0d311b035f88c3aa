#include "pagehelpers.h"

#include <QFile>
#include <QLabel>
#include <QWindow>
#include <QtTest>

namespace tests {

namespace {

QPoint centreInWindow(QWidget &page, const char *name)
{
    const QWidget *widget = child(page, name);
    return widget->mapTo(&page, widget->rect().center());
}

QList<QWidget *> shownChildren(const QWidget &parent)
{
    QList<QWidget *> shown;
    const auto children = parent.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *widget : children) {
        if (widget->isVisible())
            shown << widget;
    }
    return shown;
}

bool isCaptionOf(const QWidget *label, const QWidget *button)
{
    return qobject_cast<const QLabel *>(label) != nullptr
        && qobject_cast<const QPushButton *>(button) != nullptr
        && button->geometry().contains(label->geometry());
}

// The inner widgets of a text view are its own business.
bool isContainer(const QWidget *widget)
{
    return widget->inherits("QGroupBox") || widget->metaObject() == &QWidget::staticMetaObject
        || widget->metaObject() == &QFrame::staticMetaObject;
}

} // namespace

void clickAt(QWidget &page, const char *name)
{
    QTest::mouseClick(page.windowHandle(), Qt::LeftButton, {}, centreInWindow(page, name));
}

void pressAt(QWidget &page, const char *name)
{
    QTest::mousePress(page.windowHandle(), Qt::LeftButton, {}, centreInWindow(page, name));
}

void releaseAt(QWidget &page, const char *name)
{
    QTest::mouseRelease(page.windowHandle(), Qt::LeftButton, {}, centreInWindow(page, name));
}

QStringList overlaps(const QWidget &page)
{
    QStringList found;
    const QList<QWidget *> shown = shownChildren(page);
    for (int i = 0; i < shown.size(); ++i) {
        const QWidget *one = shown.at(i);
        if (isContainer(one))
            found << overlaps(*one);
        for (int j = i + 1; j < shown.size(); ++j) {
            const QWidget *other = shown.at(j);
            if (one->geometry().intersects(other->geometry()) && !isCaptionOf(one, other)
                && !isCaptionOf(other, one))
                found << one->objectName() + QLatin1Char('/') + other->objectName();
        }
    }
    return found;
}

QStringList outsiders(const QWidget &page)
{
    QStringList found;
    const QList<QWidget *> shown = shownChildren(page);
    for (const QWidget *widget : shown) {
        if (!page.rect().contains(widget->geometry()))
            found << widget->objectName();
        if (isContainer(widget))
            found << outsiders(*widget);
    }
    return found;
}

QByteArray contentOf(const char *path)
{
    QFile file(QString::fromLatin1(path));
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("cannot open ") + path;
    return file.readAll();
}

void writeFile(const char *path, const QByteArray &content)
{
    QFile file(QString::fromLatin1(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", path);
}

} // namespace tests
