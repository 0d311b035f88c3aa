#include "resetprompt.h"

namespace bench {

ResetPrompt::ResetPrompt(std::chrono::milliseconds holdTime)
{
    hold.setInterval(holdTime);
    hold.setSingleShot(true);
    connect(&hold, &QTimer::timeout, this, &ResetPrompt::letGo);
}

void ResetPrompt::follow(bool nowAsserted)
{
    asserted = nowAsserted;
    if (asserted) {
        pulled = true;
        hold.start();
        emit told(QStringLiteral("pull the receiver's reset line now, and hold it"));
    } else if (!hold.isActive()) {
        letGo();
    }
}

// Not before the hand had its time, and not before the unit has let go.
void ResetPrompt::letGo()
{
    if (asserted || !pulled)
        return;
    pulled = false;
    emit told(QStringLiteral("let go of the receiver's reset line now"));
}

} // namespace bench
