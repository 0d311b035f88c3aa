#pragma once

#include <QByteArray>

#include <sys/types.h>

namespace tests {

// A file of this process whose reads stop working: what the kernel says when a disk is pulled, a
// sector is bad or a file is cut short under its reader. One at a time, for as long as it lives.
// Belongs into the sources of the test that uses it, because it takes the place of read().
class FaultyReads
{
public:
    // Reads of the file at `path` give its first `bytes` bytes and then fail with `error`; 0 in its
    // place is an end of the file.
    FaultyReads(const QByteArray &path, off_t bytes, int error);
    FaultyReads(const FaultyReads &) = delete;
    FaultyReads &operator=(const FaultyReads &) = delete;
    ~FaultyReads();

    // How many reads met the fault.
    int met() const;
};

} // namespace tests
