#pragma once

namespace cm {

class StatusBarControl
{
public:
    static StatusBarControl *instance();
    void sethide(bool);
};

} // namespace cm
