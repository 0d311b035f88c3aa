#include "bench/receiver/flash.h"
#include "tests/support/unittest.h"

using bench::chip::Flash;

class TestFlash : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void isErasedAtFirst();
    void knowsItsRange_data();
    void knowsItsRange();
    void readsNothingOutsideItsRange();
    void replacesWholeSectors();
    void tellsTheImageThatIsOverwritten();
    void takesAWholeContentOfItsSizeOnly();
};

namespace {

QByteArray sector(char byte)
{
    return QByteArray(4096, byte);
}

} // namespace

void TestFlash::isErasedAtFirst()
{
    const Flash flash;
    QCOMPARE(flash.read(0x08000000, 0x400000), QByteArray(0x400000, '\xFF'));
}

void TestFlash::knowsItsRange_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<quint32>("length");
    QTest::addColumn<bool>("inside");
    QTest::newRow("all of it") << 0x08000000U << 0x00400000U << true;
    QTest::newRow("one byte more") << 0x08000000U << 0x00400001U << false;
    QTest::newRow("from one byte before") << 0x07FFFFFFU << 1U << false;
    QTest::newRow("the last byte") << 0x083FFFFFU << 1U << true;
    QTest::newRow("past the last byte") << 0x083FFFFFU << 2U << false;
    QTest::newRow("nothing, at the end") << 0x08400000U << 0U << true;
    QTest::newRow("from behind the end") << 0x08400000U << 1U << false;
    QTest::newRow("a length that wraps") << 0x08001000U << 0xFFFFF000U << false;
    QTest::newRow("an address that wraps") << 0xFFFFF000U << 0x1000U << false;
}

void TestFlash::knowsItsRange()
{
    QFETCH(quint32, address);
    QFETCH(quint32, length);
    QTEST(Flash::contains(address, length), "inside");
}

void TestFlash::readsNothingOutsideItsRange()
{
    const Flash flash;
    QCOMPARE(flash.read(0x083FFFFF, 1).size(), 1);
    QCOMPARE(flash.read(0x083FFFFF, 2).size(), 0);
    QCOMPARE(flash.read(0x07FFFFFF, 1).size(), 0);
    QCOMPARE(flash.read(0x08000000, -1).size(), 0);
}

void TestFlash::replacesWholeSectors()
{
    Flash flash;
    flash.writeSector(0x08001000, sector('\x0F'), 1);
    flash.writeSector(0x08001000, sector('\xF0'), 1);
    QCOMPARE(flash.read(0x08000000, 3 * 4096), sector('\xFF') + sector('\xF0') + sector('\xFF'));
}

void TestFlash::tellsTheImageThatIsOverwritten()
{
    Flash flash;
    QCOMPARE(flash.writeSector(0x08001000, sector('a'), 1), 0);
    QCOMPARE(flash.writeSector(0x08001000, sector('b'), 1), 0);
    QCOMPARE(flash.writeSector(0x08002000, sector('c'), 2), 0);
    QCOMPARE(flash.writeSector(0x08001000, sector('d'), 2), 1);
    flash.forgetImages();
    QCOMPARE(flash.writeSector(0x08001000, sector('e'), 1), 0);
    QCOMPARE(flash.read(0x08001000, 4096), sector('e'));
}

void TestFlash::takesAWholeContentOfItsSizeOnly()
{
    Flash flash;
    const QByteArray whole = QByteArray(0x3FFFFF, '\x11') + '\x22';
    QVERIFY(flash.load(whole));
    QCOMPARE(flash.read(0x08000000, 0x400000), whole);
    QVERIFY(!flash.load(whole + 'x'));
    QVERIFY(!flash.load(whole.left(0x3FFFFF)));
    QCOMPARE(flash.read(0x08000000, 0x400000), whole);
}

TESTMODE_TEST_MAIN(TestFlash)
#include "test_flash.moc"
