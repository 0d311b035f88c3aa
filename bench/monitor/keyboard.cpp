#include "keyboard.h"

#include "callerror.h"
#include "widgets.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextEdit>

namespace bench {

namespace {

void pressKey(const QPointer<QWidget> &receiver, int key, Qt::KeyboardModifiers modifiers = {},
              const QString &text = {})
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        if (receiver.isNull())
            return; // gone by what the key did
        QKeyEvent event(type, key, modifiers, text);
        QCoreApplication::sendEvent(receiver, &event);
    }
}

int keyOf(QChar character)
{
    if (character == QLatin1Char('\n'))
        return Qt::Key_Return;
    return character.unicode() < 0x80 ? character.toUpper().unicode() : int(Qt::Key_unknown);
}

QString textOfField(const QWidget *field)
{
    const QVariant plain = field->property("plainText");
    return plain.isValid() ? plain.toString() : field->property("text").toString();
}

} // namespace

QWidget *textFieldOf(QWidget *target)
{
    QWidget *field = target;
    if (qobject_cast<QAbstractSpinBox *>(target) != nullptr)
        field = target->findChild<QLineEdit *>();
    else if (auto *combo = qobject_cast<QComboBox *>(target))
        field = combo->lineEdit();

    if (qobject_cast<QLineEdit *>(field) == nullptr && qobject_cast<QTextEdit *>(field) == nullptr
        && qobject_cast<QPlainTextEdit *>(field) == nullptr)
        throw CallError(ErrorClass::WrongKind,
                        QStringLiteral("%1 takes no text").arg(describe(target)));
    if (field->property("readOnly").toBool())
        throw CallError(ErrorClass::Disabled,
                        QStringLiteral("%1 is read-only").arg(describe(target)));
    return field;
}

QString typeText(QWidget *widget, const QString &text)
{
    const QPointer<QWidget> field = widget;
    pressKey(field, Qt::Key_A, Qt::ControlModifier);
    if (text.isEmpty())
        pressKey(field, Qt::Key_Delete);
    for (const QChar character : text)
        pressKey(field, keyOf(character), {}, character);
    return field.isNull() ? QString() : textOfField(field);
}

int rowOfItem(const QComboBox *combo, const QString &text)
{
    const int row = combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row < 0) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items << combo->itemText(i);
        throw CallError(ErrorClass::NotFound,
                        QStringLiteral("%1 has no item %2; there are: %3")
                            .arg(describe(combo), text, items.join(QStringLiteral(", "))));
    }
    const QModelIndex index =
        combo->model()->index(row, combo->modelColumn(), combo->rootModelIndex());
    if (!(index.flags() & Qt::ItemIsEnabled) || !(index.flags() & Qt::ItemIsSelectable))
        throw CallError(ErrorClass::Disabled,
                        QStringLiteral("item %1 of %2 is disabled").arg(text, describe(combo)));
    return row;
}

void takeItem(QComboBox *combo, int row)
{
    QAbstractItemView *list = combo->view();
    list->setCurrentIndex(
        combo->model()->index(row, combo->modelColumn(), combo->rootModelIndex()));
    pressKey(list, Qt::Key_Return);
}

} // namespace bench
