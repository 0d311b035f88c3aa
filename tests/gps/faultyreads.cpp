#include "faultyreads.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Fault
{
    bool armed = false;
    dev_t device = 0;
    ino_t file = 0;
    off_t bytes = 0;
    int error = 0;
    int met = 0;
};

thread_local Fault fault; // other threads read as ever

ssize_t kernelRead(int descriptor, void *buffer, size_t count)
{
    return ::syscall(SYS_read, descriptor, buffer, count);
}

bool isTheFile(int descriptor)
{
    struct stat found = {};
    return ::fstat(descriptor, &found) == 0 && found.st_dev == fault.device
        && found.st_ino == fault.file;
}

} // namespace

// The program's own comes before the C library's, for the libraries too.
extern "C" ssize_t read(int descriptor, void *buffer, size_t count)
{
    if (!fault.armed || !isTheFile(descriptor))
        return kernelRead(descriptor, buffer, count);
    const off_t left = fault.bytes - ::lseek(descriptor, 0, SEEK_CUR);
    if (left > 0)
        return kernelRead(descriptor, buffer, std::min(count, static_cast<size_t>(left)));
    ++fault.met;
    if (fault.error == 0)
        return 0;
    errno = fault.error;
    return -1;
}

namespace tests {

FaultyReads::FaultyReads(const QByteArray &path, off_t bytes, int error)
{
    struct stat file = {};
    fault = Fault();
    fault.armed = ::stat(path.constData(), &file) == 0;
    fault.device = file.st_dev;
    fault.file = file.st_ino;
    fault.bytes = bytes;
    fault.error = error;
}

FaultyReads::~FaultyReads()
{
    fault.armed = false;
}

int FaultyReads::met() const
{
    return fault.met;
}

} // namespace tests
