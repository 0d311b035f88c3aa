#pragma once

#include <QObject>

class QWidget;

namespace benchmark {

// Measures until a widget has been painted. GUI thread.
class Painting : public QObject
{
public:
    // Microseconds from the call to the widget's painting, without what was waited meanwhile
    // (waits.h). `act` makes or shows the widget and returns it.
    template <typename Act>
    static double microseconds(Act act)
    {
        const qint64 began = elapsed();
        QWidget *widget = act();
        Painting painting;
        painting.await(widget);
        return double(elapsed() - began) / 1000;
    }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static qint64 elapsed(); // nanoseconds, without waits
    void await(QWidget *widget);

    bool painted = false;
};

} // namespace benchmark
