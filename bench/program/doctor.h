#pragma once

namespace bench {

// --doctor: looks whether this machine has what the bench needs and prints a line for each need,
// with the cure where one is not met. Returns the exit status: 0, or 6 with a need that is not met.
int examineMachine();

} // namespace bench
