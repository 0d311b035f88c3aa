#include "registerwatch.h"

#include <QAbstractEventDispatcher>
#include <QFile>

#include <algorithm>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr quint32 kPageBytes = 4096;
const QString kPlugin = QStringLiteral("plug-in");

} // namespace

RegisterWatch::RegisterWatch(const QString &memory, QObject *parent)
    : QObject(parent), nextWriter(kPlugin)
{
    clock.start();
    if (!map(memory))
        return;
    for (const RegisterWord &named : registers()) {
        RegisterState state;
        state.value = *word(named.address);
        states.append(state);
    }
    if (QAbstractEventDispatcher *loop = QAbstractEventDispatcher::instance())
        connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, &RegisterWatch::look);
}

RegisterWatch::~RegisterWatch()
{
    if (pages != nullptr)
        ::munmap(pages, length);
}

bool RegisterWatch::map(const QString &memory)
{
    firstAddress = registers().first().address / kPageBytes * kPageBytes;
    quint32 end = 0;
    for (const RegisterWord &named : registers())
        end = std::max(end, (named.address / kPageBytes + 1) * kPageBytes);
    length = end - firstAddress;

    const int file = ::open(QFile::encodeName(memory).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat kind = {};
    const bool simulated =
        ::fstat(file, &kind) == 0 && S_ISREG(kind.st_mode) && kind.st_size >= off_t(end);
    void *mapped = simulated
        ? ::mmap(nullptr, length, PROT_READ, MAP_SHARED, file, off_t(firstAddress))
        : MAP_FAILED;
    ::close(file);
    if (mapped != MAP_FAILED)
        pages = mapped;
    return pages != nullptr;
}

const volatile quint32 *RegisterWatch::word(quint32 address) const
{
    return reinterpret_cast<const volatile quint32 *>(static_cast<const char *>(pages)
                                                      + (address - firstAddress));
}

const QVector<RegisterState> &RegisterWatch::look()
{
    QVector<int> rows;
    for (int row = 0; row < states.size(); ++row) {
        RegisterState &state = states[row];
        const quint32 value = *word(registers().at(row).address);
        if (value == state.value)
            continue;
        state = {value, state.value, nextWriter, clock.elapsed()};
        rows.append(row);
    }
    nextWriter = kPlugin;
    for (const int row : qAsConst(rows))
        emit changed(row);
    return states;
}

void RegisterWatch::nameWriter(const QString &writer)
{
    look(); // what stands there already is another's
    nextWriter = writer;
}

} // namespace bench
