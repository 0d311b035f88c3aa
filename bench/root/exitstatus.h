#pragma once

namespace bench {

// Exit statuses of the bench's programs; never changed once published.
enum ExitStatus : int {
    kDone = 0,
    kCheckFailed = 1,
    kUsage = 2,
    kNotThere = 3, // a named file or device is not there, or cannot be used
    kTimedOut = 5,
    kPrivateRootRefused = 6,
    kFault = 70, // the bench itself is at fault
};

} // namespace bench
