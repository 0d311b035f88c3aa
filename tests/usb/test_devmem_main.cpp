#include "tests/support/unittest.h"

#include "usb/devmem_main.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

using testmode::devmem_main;

namespace {

const QString kMemory = QStringLiteral("/dev/mem");
const QString kMemoryAside = QStringLiteral("/dev/mem.aside");

unsigned int wordAt(qint64 address)
{
    unsigned int word = 0;
    QFile memory(kMemory);
    if (!memory.open(QIODevice::ReadOnly) || !memory.seek(address)
        || memory.read(reinterpret_cast<char *>(&word), sizeof word) != sizeof word)
        qFatal("cannot read the memory file");
    return word;
}

void setWordAt(qint64 address, unsigned int word)
{
    QFile memory(kMemory);
    if (!memory.open(QIODevice::ReadWrite) || !memory.seek(address)
        || memory.write(reinterpret_cast<const char *>(&word), sizeof word) != sizeof word)
        qFatal("cannot write the memory file");
}

// What the call prints to standard output.
template <typename Call>
QByteArray printedBy(Call call)
{
    QTemporaryFile paper;
    if (!paper.open())
        qFatal("cannot open a temporary file");
    std::fflush(stdout);
    const int terminal = ::dup(STDOUT_FILENO);
    ::dup2(paper.handle(), STDOUT_FILENO);
    call();
    std::fflush(stdout);
    ::dup2(terminal, STDOUT_FILENO);
    ::close(terminal);
    paper.seek(0);
    return paper.readAll();
}

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
        .size();
}

int mappingsOfTheMemory()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly))
        qFatal("cannot read the mappings");
    return maps.readAll().count("/dev/mem");
}

// The unit without its memory device, for as long as this lives.
class WithoutMemory
{
public:
    WithoutMemory()
    {
        if (!QFile::rename(kMemory, kMemoryAside))
            qFatal("cannot put the memory file aside");
    }
    ~WithoutMemory()
    {
        QFile::remove(kMemory);
        QFile::rename(kMemoryAside, kMemory);
    }
};

} // namespace

// One access to a physical address, on the private root's memory file.
class TestDevmemMain : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void readsTheWord();
    void writesTheWordAndReadsItBack();
    void writeFlagIsNoWidth();
    void touchesOneWordOnly();
    void reachesAddressesAboveTwoGibibytes();
    void printsEveryWordInHexadecimal_data();
    void printsEveryWordInHexadecimal();
    void closesItsDescriptor();
    void unmapsAPageOnlyAtOffsetZero();
    void openFailurePrintsWithoutLineEnd();
    void mappingFailureLeavesTheDescriptorOpen();
    void opensForBothWaysWithoutBlocking();
    void descriptorZeroIsNotClosed();
};

void TestDevmemMain::readsTheWord()
{
    setWordAt(0x9C000190, 0x00112233);
    unsigned int value = 5;
    printedBy([&] { devmem_main(0x9C000000, 0x190, 0, &value); });
    QCOMPARE(value, 0x00112233u);
    QCOMPARE(wordAt(0x9C000190), 0x00112233u);
}

void TestDevmemMain::writesTheWordAndReadsItBack()
{
    setWordAt(0x9C004A90, 0);
    unsigned int value = 0xCAFE0007;
    printedBy([&] { devmem_main(0x9C004000, 0xA90, 1, &value); });
    QCOMPARE(value, 0xCAFE0007u);
    QCOMPARE(wordAt(0x9C004A90), 0xCAFE0007u);
}

void TestDevmemMain::writeFlagIsNoWidth()
{
    for (const char flag : {'\x01', '\x08', 'w', '\xFF'}) {
        setWordAt(0x9C004A90, 0x55555555);
        unsigned int value = 0xFFEEDDCC;
        printedBy([&] { devmem_main(0x9C004000, 0xA90, flag, &value); });
        QCOMPARE(wordAt(0x9C004A90), 0xFFEEDDCCu);
    }
}

void TestDevmemMain::touchesOneWordOnly()
{
    setWordAt(0x9C00018C, 0x11111111);
    setWordAt(0x9C000194, 0x22222222);
    unsigned int value = 0xFFFFFFFF;
    printedBy([&] { devmem_main(0x9C000000, 0x190, 1, &value); });
    QCOMPARE(wordAt(0x9C00018C), 0x11111111u);
    QCOMPARE(wordAt(0x9C000194), 0x22222222u);
}

void TestDevmemMain::reachesAddressesAboveTwoGibibytes()
{
    QCOMPARE(static_cast<int>(sizeof(off_t)), 8);
    setWordAt(0x1C000190, 0x0BAD0BAD);
    setWordAt(0x9C000190, 0x600D600D);
    unsigned int value = 0;
    printedBy([&] { devmem_main(0x9C000000, 0x190, 0, &value); });
    QCOMPARE(value, 0x600D600Du);
}

void TestDevmemMain::printsEveryWordInHexadecimal_data()
{
    QTest::addColumn<unsigned int>("word");
    QTest::addColumn<char>("write");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("zero read") << 0u << '\0' << QByteArray("0x0 \n");
    QTest::newRow("small read") << 0x1Fu << '\0' << QByteArray("0x1f \n");
    QTest::newRow("whole word written") << 0x7F7F4533u << '\1' << QByteArray("0x7f7f4533 \n");
    QTest::newRow("highest bit written") << 0xFFFFFFFEu << '\1' << QByteArray("0xfffffffe \n");
}

void TestDevmemMain::printsEveryWordInHexadecimal()
{
    QFETCH(unsigned int, word);
    QFETCH(char, write);
    setWordAt(0x9C000190, write != 0 ? 0 : word);
    QTEST(printedBy([&] { devmem_main(0x9C000000, 0x190, write, &word); }), "line");
}

void TestDevmemMain::closesItsDescriptor()
{
    const int before = openDescriptors();
    unsigned int value = 0;
    printedBy([&] { devmem_main(0x9C000000, 0x190, 0, &value); });
    QCOMPARE(openDescriptors(), before);
}

void TestDevmemMain::unmapsAPageOnlyAtOffsetZero()
{
    const int before = mappingsOfTheMemory();
    unsigned int value = 0;
    printedBy([&] { devmem_main(0x9C003000, 0, 0, &value); });
    QCOMPARE(mappingsOfTheMemory(), before);
    printedBy([&] { devmem_main(0x9C003000, 4, 0, &value); });
    QCOMPARE(mappingsOfTheMemory(), before + 1);
}

void TestDevmemMain::openFailurePrintsWithoutLineEnd()
{
    const WithoutMemory without;
    const int before = openDescriptors();
    unsigned int value = 0x1234;
    QCOMPARE(printedBy([&] { devmem_main(0x9C000000, 0x190, 1, &value); }),
             QByteArray("open(/dev/mem) failed."));
    QCOMPARE(value, 0x1234u);
    QCOMPARE(openDescriptors(), before);
}

void TestDevmemMain::mappingFailureLeavesTheDescriptorOpen()
{
    // A device that can be opened and not be mapped.
    const WithoutMemory without;
    QVERIFY(QFile::link(QStringLiteral("/dev/null"), kMemory));
    const int before = openDescriptors();
    unsigned int value = 0x1234;
    QCOMPARE(printedBy([&] { devmem_main(0x9C000000, 0x190, 1, &value); }),
             QByteArray("mmap failed\n"));
    QCOMPARE(value, 0x1234u);
    QCOMPARE(openDescriptors(), before + 1);
}

// Seen on the descriptor that a failed mapping leaves behind.
void TestDevmemMain::opensForBothWaysWithoutBlocking()
{
    const WithoutMemory without;
    QVERIFY(QFile::link(QStringLiteral("/dev/null"), kMemory));
    unsigned int value = 0;
    int opened = -1;
    printedBy([&] {
        opened = ::dup(STDOUT_FILENO); // the number that the next file gets
        ::close(opened);
        devmem_main(0x9C000000, 0x190, 0, &value);
    });
    const int flags = ::fcntl(opened, F_GETFL);
    QVERIFY(flags != -1);
    QCOMPARE(flags & O_ACCMODE, O_RDWR);
    QCOMPARE(flags & O_NONBLOCK, O_NONBLOCK);
    ::close(opened);
}

void TestDevmemMain::descriptorZeroIsNotClosed()
{
    setWordAt(0x9C000190, 0x00112233);
    unsigned int value = 0;
    bool stayedOpen = false;
    const int input = ::dup(STDIN_FILENO);
    printedBy([&] {
        ::close(STDIN_FILENO);
        devmem_main(0x9C000000, 0x190, 0, &value);
        stayedOpen = ::fcntl(STDIN_FILENO, F_GETFL) != -1;
        ::dup2(input, STDIN_FILENO);
    });
    ::close(input);
    QCOMPARE(value, 0x00112233u);
    QVERIFY(stayedOpen);
}

TESTMODE_TEST_MAIN(TestDevmemMain)
#include "test_devmem_main.moc"
