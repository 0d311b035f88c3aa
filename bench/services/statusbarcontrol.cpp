#include "framework/statusbarcontrol.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"

namespace cm {

StatusBarControl *StatusBarControl::instance()
{
    static StatusBarControl control;
    return &control;
}

void StatusBarControl::sethide(bool hide)
{
    bench::journal().call(QStringLiteral("StatusBarControl"), QStringLiteral("sethide"), {hide});
    bench::unit().setStatusBarHidden(hide);
}

} // namespace cm
