// A unit's document, as --unit reads it from a file and unit.set from its client. Input: the file.

#include "expect.h"

#include "bench/unit/headunit.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// The input as a file of that content.
class MemoryFile
{
public:
    MemoryFile(const uint8_t *data, size_t size) : descriptor(::memfd_create("unit", MFD_CLOEXEC))
    {
        EXPECT(::write(descriptor, data, size) == static_cast<ssize_t>(size));
    }
    ~MemoryFile() { ::close(descriptor); }
    Q_DISABLE_COPY_MOVE(MemoryFile)

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(descriptor); }

private:
    int descriptor;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static int none = 0;
    static QCoreApplication application(none, nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static bench::UnitDocument document(bench::pathsOf(&bench::unit()));
    bench::unit().powerOn();
    const QJsonValue before = *document.value(QString());

    const MemoryFile file(data, size);
    const QString trouble = bench::loadUnitFile(&document, file.path());
    const QJsonValue after = *document.value(QString());
    // Refused whole, or taken.
    EXPECT(trouble.isEmpty() || after == before);
    EXPECT(!trouble.contains(QLatin1Char('\n')));
    // What the unit says of itself it takes back.
    EXPECT(document.setValue(QString(), after).kind == bench::UnitDocument::Problem::None);
    EXPECT(*document.value(QString()) == after);
    return 0;
}
