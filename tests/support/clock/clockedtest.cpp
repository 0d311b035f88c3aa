#include "clockedtest.h"

namespace tests {

void ClockedTest::init()
{
    ownClock.emplace();
    UnitTest::init();
}

void ClockedTest::cleanup()
{
    UnitTest::cleanup();
    ownClock.reset();
}

} // namespace tests
