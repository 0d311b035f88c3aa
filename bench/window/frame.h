#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <functional>

namespace bench {

// Draws what has changed at most twenty times a second, and rests while nothing does. All frames
// of the window fall on the same moments, so that it is painted once for all of them.
class Frame : public QTimer
{
public:
    static constexpr int kMilliseconds = 50;

    Frame(QObject *parent, std::function<void()> draw) : QTimer(parent)
    {
        setSingleShot(true);
        setTimerType(Qt::PreciseTimer);
        callOnTimeout(parent, std::move(draw));
    }

    void ask()
    {
        if (!isActive())
            start(kMilliseconds - int(now() % kMilliseconds));
    }

private:
    static qint64 now()
    {
        QElapsedTimer clock;
        clock.start();
        return clock.msecsSinceReference();
    }
};

} // namespace bench
