#include "touch.h"

#include <QFontMetrics>
#include <QLabel>
#include <QTest>
#include <QWidget>
#include <QWindow>

namespace tests {

void tap(QWidget *target)
{
    const QPoint middle = target->mapTo(target->window(), target->rect().center());
    QTest::mouseClick(target->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier, middle);
}

bool showsItsWholeText(const QLabel *label)
{
    const QFontMetrics metrics(label->font());
    return metrics.horizontalAdvance(label->text()) <= label->contentsRect().width()
        && metrics.height() <= label->contentsRect().height();
}

} // namespace tests
