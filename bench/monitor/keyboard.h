#pragma once

#include <QString>

class QComboBox;
class QWidget;

namespace bench {

// Input beyond single touches, as a person would make it. GUI thread. The
// `finger` functions of the same widget must have let it through before.

// The widget that takes the keys of a text field, a spin box or an editable
// combo box. Throws WrongKind for others, Disabled for a read-only field.
QWidget *textFieldOf(QWidget *target);

// Replaces the field's text by key events; returns what the field holds then.
QString typeText(QWidget *field, const QString &text);

// Row of the item with that text. Throws NotFound or Disabled.
int rowOfItem(const QComboBox *combo, const QString &text);

// Takes the item of that row from the open list of the combo box.
void takeItem(QComboBox *combo, int row);

} // namespace bench
