#pragma once

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
    void show(const QJsonObject &word);
    void write(QTreeWidgetItem *item, int column);
    QTreeWidgetItem *itemOf(const QString &name);

    Calls *calls;
    QTreeWidget *tree;
};

} // namespace bench
