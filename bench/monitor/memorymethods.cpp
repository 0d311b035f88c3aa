#include "unitmethods.h"

#include "dispatcher.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr char kMemory[] = "/dev/mem";
constexpr quint32 kWordBytes = 4;
constexpr quint32 kPageBytes = 4096;

[[noreturn]] void fail(const char *action)
{
    throw CallError(ErrorClass::File,
                    QStringLiteral("cannot %1 %2: %3")
                        .arg(action, kMemory, QString::fromLocal8Bit(std::strerror(errno))));
}

// A word of the physical memory, mapped as the plug-in maps it: where /dev/mem is the machine's
// own, nothing else gets at what is no RAM of its kernel's.
class MappedWord
{
public:
    MappedWord(quint32 address, bool writable)
    {
        if (address % kWordBytes != 0)
            throw CallError(ErrorClass::Argument,
                            QStringLiteral("address is not a multiple of %1").arg(kWordBytes));
        const int memory = ::open(kMemory, (writable ? O_RDWR : O_RDONLY) | O_SYNC | O_CLOEXEC);
        if (memory < 0)
            fail("open");
        map(memory, address, writable);
        ::close(memory);
    }
    ~MappedWord() { ::munmap(page, kPageBytes); }
    Q_DISABLE_COPY(MappedWord)

    quint32 value() const { return *word; }
    void setValue(quint32 value) { *word = value; }

private:
    // Closes `memory` where it throws.
    void map(int memory, quint32 address, bool writable)
    {
        struct stat file = {};
        ::fstat(memory, &file);
        if (S_ISREG(file.st_mode) && off_t(address) + off_t(kWordBytes) > file.st_size) {
            ::close(memory);
            throw CallError(ErrorClass::Argument,
                            QStringLiteral("address lies beyond the memory, which has %1 bytes")
                                .arg(qint64(file.st_size)));
        }
        const quint32 offset = address % kPageBytes;
        page = ::mmap(nullptr, kPageBytes, writable ? PROT_READ | PROT_WRITE : PROT_READ,
                      MAP_SHARED, memory, off_t(address - offset));
        if (page == MAP_FAILED) {
            const int reason = errno;
            ::close(memory);
            errno = reason;
            fail("map");
        }
        word = reinterpret_cast<volatile quint32 *>(static_cast<char *>(page) + offset);
    }

    void *page = nullptr;
    volatile quint32 *word = nullptr;
};

QJsonObject readMemory(const Arguments &arguments)
{
    const quint32 word = MappedWord(arguments.address("address"), false).value();
    return {{"value", double(word)},
            {"hex", QStringLiteral("0x%1").arg(word, 8, 16, QLatin1Char('0'))}};
}

QJsonObject writeMemory(const Arguments &arguments)
{
    MappedWord(arguments.address("address"), true).setValue(arguments.address("value"));
    return {};
}

} // namespace

void addMemoryMethods(Dispatcher *dispatcher)
{
    dispatcher->add({"unit.memory.read",
                     {required("address", ParameterType::Address, "of a 32-bit word")},
                     "A word of the physical memory",
                     "address=0x9C000000",
                     direct(readMemory)});
    dispatcher->add({"unit.memory.write",
                     {required("address", ParameterType::Address, "of a 32-bit word"),
                      required("value", ParameterType::Address, "the word")},
                     "Writes a word of the physical memory",
                     "address=0x9C000000 value=0x1",
                     direct(writeMemory)});
}

} // namespace bench
