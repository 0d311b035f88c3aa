#pragma once

#include <QJsonValue>
#include <QPair>
#include <QVector>
#include <QWidget>

#include <functional>

class QFormLayout;
class QGroupBox;
class QLabel;
class QLayout;
class QSpinBox;

namespace bench {

class Calls;
class UnitModel;

// The unit beside its screen: keys, what hangs on it, and every value of its state. GUI thread;
// `calls` outlives it.
class UnitDock : public QWidget
{
    Q_OBJECT

public:
    explicit UnitDock(Calls *calls, QWidget *parent = nullptr);

    // A folder dropped onto a disk plugs it into that port.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLayout *keys();
    QLayout *disks();
    QFormLayout *choices();
    QWidget *state();
    void addChoice(QFormLayout *form, const char *title, const char *name, const QString &path,
                   const QVector<QPair<QString, QJsonValue>> &values);
    QWidget *addBox(const QString &text, const QString &name, const QString &path);
    void plug(int port, const QString &folder);
    void follow(const QString &path, const std::function<void(const QJsonValue &)> &show);

    Calls *calls;
    QLabel *result; // of the last thing done
    QSpinBox *keyCode = nullptr;
};

} // namespace bench
