#pragma once

#include <QTimer>

#include <functional>

namespace bench {

// Draws what has changed at most twenty times a second, and rests while nothing does.
class Frame : public QTimer
{
public:
    static constexpr int kMilliseconds = 50;

    Frame(QObject *parent, std::function<void()> draw) : QTimer(parent)
    {
        setSingleShot(true);
        setInterval(kMilliseconds);
        callOnTimeout(parent, std::move(draw));
    }

    void ask()
    {
        if (!isActive())
            start();
    }
};

} // namespace bench
