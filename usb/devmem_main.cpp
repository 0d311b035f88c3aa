#include "devmem_main.h"

#include "tools/debugtrace.h"

#include <cstdint>
#include <cstdio>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace testmode {

namespace {

constexpr size_t kPageBytes = 4096;

static_assert(sizeof(off_t) == 8, "the registers lie above the reach of a signed 32-bit offset");

int memoryFile = 0;

} // namespace

void devmem_main(unsigned int pageBase, unsigned int offset, char write, unsigned int *value)
{
    memoryFile = ::open("/dev/mem", O_RDWR | O_NONBLOCK);
    if (memoryFile < 0) {
        std::printf("open(/dev/mem) failed.");
        return;
    }

    void *page = ::mmap(nullptr, kPageBytes, PROT_READ | PROT_WRITE, MAP_SHARED, memoryFile,
                        static_cast<off_t>(pageBase));
    if (page == MAP_FAILED) {
        std::puts("mmap failed"); // kept: the descriptor stays open
        return;
    }

    // Volatile: what is loaded is the register's answer, not what was stored.
    auto *word = reinterpret_cast<volatile unsigned int *>(static_cast<uint8_t *>(page) + offset);
    if (write != 0)
        *word = *value;
    std::printf("0x%x \n", *word);
    *value = *word;

    if (memoryFile != 0)
        ::close(memoryFile);
    // Kept: unmapping starts at the word, which the kernel refuses unless the offset
    // is 0, so the page stays mapped until the process ends.
    ::munmap(static_cast<uint8_t *>(page) + offset, kPageBytes);
}

} // namespace testmode
