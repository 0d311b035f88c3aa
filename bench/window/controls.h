#pragma once

#include <QJsonValue>
#include <QPair>
#include <QVector>

#include <functional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QWidget;

// Controls over one value of the unit each: they show what it is, whoever changes it, and write it.
namespace bench {

class Calls;

// Shows the value at `path` now, and with a frame whenever it is another one; for as long as
// `context` is there.
void follow(Calls *calls, const QString &path, QObject *context,
            const std::function<void(const QJsonValue &)> &show);

// Draws anew when anything below `branch` ("gnss.") is another one: once a frame.
void followBranch(Calls *calls, const QString &branch, QObject *context,
                  const std::function<void()> &draw);

QCheckBox *box(Calls *calls, const QString &text, const QString &name, const QString &path);
QComboBox *choice(Calls *calls, const QString &name, const QString &path,
                  const QVector<QPair<QString, QJsonValue>> &values);
QDoubleSpinBox *number(Calls *calls, const QString &name, const QString &path, double least,
                       double most, int decimals = 0);

} // namespace bench
