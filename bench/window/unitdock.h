#pragma once

#include <QTabWidget>

class QFormLayout;
class QLabel;
class QLayout;

namespace bench {

class Calls;
class StoresModel;

// The unit beside its screen: life cycle and keys, what hangs on it, every value of its state, and
// its settings stores. GUI thread; `calls` outlives it.
class UnitDock : public QTabWidget
{
    Q_OBJECT

public:
    explicit UnitDock(Calls *calls, QWidget *parent = nullptr);

    // A folder dropped onto a port plugs it in there.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *controls();
    QLayout *lifeCycle();
    QLayout *keys();
    QLayout *disks();
    QLayout *gains();
    QFormLayout *choices();
    QWidget *state();
    QWidget *stores();
    QLayout *newSetting(StoresModel *model);
    void tell(const QString &text);
    void plug(int port, const QString &folder);

    Calls *calls;
    QLabel *result; // of the last thing done
};

} // namespace bench
