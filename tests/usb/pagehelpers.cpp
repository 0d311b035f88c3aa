#include "pagehelpers.h"

#include "bench/unit/tracelog.h"

#include <QFile>
#include <QLabel>
#include <QRegularExpression>
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

QStringList dumpOf(const QObject &object, bench::TraceLog &trace)
{
    const int before = trace.lines().size();
    object.dumpObjectInfo();
    return trace.lines(before);
}

// The signal that a dumped sender has connected with the slot.
QString signalInto(const QString &slot, const QStringList &dump)
{
    static const QRegularExpression outgoing(QStringLiteral("^ +signal: (.+)$"));
    QString signal;
    for (const QString &line : dump) {
        const QRegularExpressionMatch match = outgoing.match(line);
        if (match.hasMatch())
            signal = match.captured(1);
        else if (line.contains(QLatin1String("-->")) && line.endsWith(QLatin1Char(' ') + slot))
            return signal;
    }
    return QStringLiteral("no signal");
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

QStringList connectionsInto(QWidget &receiver, bench::TraceLog &trace)
{
    static const QRegularExpression incoming(QStringLiteral("^ +<-- \\w+::(\\w+) +(.+)$"));
    QStringList connections;
    const QStringList lines = dumpOf(receiver, trace);
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = incoming.match(line);
        if (!match.hasMatch())
            continue;
        const QString sender = match.captured(1);
        const QString slot = match.captured(2);
        const QObject *button = child(receiver, sender.toLatin1().constData());
        connections.prepend(QStringLiteral("%1: %2 -> %3")
                                .arg(sender, signalInto(slot, dumpOf(*button, trace)), slot));
    }
    return connections;
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
