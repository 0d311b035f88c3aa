#pragma once

#include <QObject>

#include <functional>

namespace bench {

// Delivers input from the event loop, and reports once: when the delivery has
// returned, or as soon as a dialog or a pop-up that it opened stands, whichever
// is first. Deletes itself. GUI thread.
class InputRun : public QObject
{
    Q_OBJECT

public:
    using Step = std::function<void()>;

    static void start(Step deliver, Step report);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    InputRun(Step deliver, Step report);
    void run();
    void reportOnce();

    Step deliver;
    Step report;
};

} // namespace bench
