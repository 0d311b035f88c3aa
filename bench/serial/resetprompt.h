#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace bench {

// Tells the operator when to pull a receiver's reset line by hand and when to let go. A hand is
// slower than the unit's pulse: the line is let go a while after it, and the host, which
// repeats its synchronisation for some twenty seconds, meets the receiver then.
class ResetPrompt : public QObject
{
    Q_OBJECT

public:
    // `holdTime`: for a hand to find the line.
    explicit ResetPrompt(std::chrono::milliseconds holdTime = std::chrono::seconds(3));

    // The unit drives its reset line. This object's thread.
    void follow(bool asserted);

signals:
    void told(const QString &text);

private:
    void letGo();

    QTimer hold;
    bool asserted = false;
    bool pulled = false;
};

} // namespace bench
