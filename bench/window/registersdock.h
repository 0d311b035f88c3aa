#pragma once

#include "frame.h"

#include <QJsonObject>
#include <QVector>
#include <QWidget>

class QTreeWidget;
class QTreeWidgetItem;

namespace bench {

class Calls;

// The USB PHYs' registers by name and field: what they hold and held, who wrote last. A value is
// written by typing into it. GUI thread; `calls` outlives it.
class RegistersDock : public QWidget
{
    Q_OBJECT

public:
    enum Column { Name, Value, Meaning, Before, Writer };

    explicit RegistersDock(Calls *calls, QWidget *parent = nullptr);

private:
    void draw();
    void show(const QJsonObject &word);
    void remember(const QJsonObject &word);
    void write(QTreeWidgetItem *item, int column);
    QTreeWidgetItem *itemOf(const QString &name);

    Calls *calls;
    Frame frame;
    QVector<QJsonObject> news; // words that were written, in their order
    QTreeWidget *tree;
};

} // namespace bench
