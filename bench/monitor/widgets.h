#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QVector>

class QDialog;
class QWidget;

namespace bench {

// The widgets of the unit: those on its screen and those of the windows that
// stand over it (message boxes, dialogs, the lists of combo boxes). GUI thread.

// The one widget of that name: an objectName, or "ancestor/objectName" with the
// ancestor's name or class. Throws CallError with NotFound or Ambiguous.
QWidget *findWidget(QWidget *screen, const QString &path);
// Null where there is none yet.
QWidget *lookForWidget(QWidget *screen, const QString &path);

// Its name, or its class where it has none.
QString describe(const QWidget *widget);

// Name, class, text, visible, enabled, checked and geometry.
QJsonObject widgetState(const QWidget *widget);

// The state with that of all its children.
QJsonObject widgetTree(const QWidget *widget);

// The texts of a combo box's items, or of the rows of a list or table; null for others.
QJsonValue widgetItems(QWidget *widget);

// A value of widgetState, or a property of the widget's class. Throws NotFound.
QJsonValue widgetProperty(const QWidget *widget, const QString &name);

// Windows that stand over the screen, the topmost last.
QVector<QWidget *> windowsOver(QWidget *screen);

// Dialogs and message boxes among them.
QVector<QDialog *> openBoxes(QWidget *screen);

// Text of a button without the mark of its short cut.
QString plainText(QString text);

} // namespace bench
