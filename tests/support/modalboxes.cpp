#include "modalboxes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QTimer>
#include <QtTest>

#include <utility>

namespace tests {

namespace {

QString labelled(const QString &title, const QString &text)
{
    return title + QStringLiteral(": ") + text;
}

} // namespace

ModalBoxes::ModalBoxes()
{
    qApp->installEventFilter(this);
}

void ModalBoxes::expect(const QString &title, const QString &text)
{
    expected << labelled(title, text);
}

bool ModalBoxes::eventFilter(QObject *watched, QEvent *event)
{
    auto *box = event->type() == QEvent::Show ? qobject_cast<QMessageBox *>(watched) : nullptr;
    if (box != nullptr) {
        // Its own event loop starts only after it is shown: it is answered from there.
        const QPointer<QMessageBox> shown = box;
        QTimer::singleShot(0, this, [this, shown] {
            if (shown)
                answer(shown);
        });
    }
    return QObject::eventFilter(watched, event);
}

void ModalBoxes::answer(QMessageBox *box)
{
    Box said;
    said.title = box->windowTitle();
    said.text = box->text();
    said.icon = box->icon();
    said.modal = box->isModal();
    said.parent = box->parentWidget();
    const QList<QAbstractButton *> buttons = box->buttons();
    for (const QAbstractButton *button : buttons)
        said.buttons << button->text().remove(QLatin1Char('&'));
    boxes << said;

    const QString words = labelled(said.title, said.text);
    if (expected.value(0) == words)
        expected.removeFirst();
    else
        QTest::qFail(qPrintable("a message box nobody expected: " + words), __FILE__, __LINE__);
    if (const auto action = std::exchange(instead, nullptr))
        action();
    else if (buttons.isEmpty())
        box->reject();
    else
        buttons.first()->click();
}

} // namespace tests
