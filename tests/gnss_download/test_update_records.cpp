#include "link.h"

#include "tests/support/unittest.h"

using tests::Link;

namespace {

// What the worker hands from step to step, as it was then.
struct Handed
{
    hdl_da_info_t info = {};
    hdl_da_report_t report = {};
    QList<_hdl_image_t> images;
};

Handed handed;

} // namespace

// In the place of the worker's own two steps, which the linker is told to let go.
extern "C" bool
connectInstead(ugrade_thread *, const hdl_da_info_t *info, hdl_da_report_t *report) __asm__(
    "__wrap__ZN13ugrade_thread11hdl_connectEPK13hdl_da_info_tP15hdl_da_report_t");
extern "C" bool downloadInstead(ugrade_thread *, _hdl_image_t *list) __asm__(
    "__wrap__ZN13ugrade_thread12hdl_downloadEP12_hdl_image_t");

bool connectInstead(ugrade_thread *, const hdl_da_info_t *info, hdl_da_report_t *report)
{
    handed.info = *info;
    handed.report = *report;
    return true;
}

bool downloadInstead(ugrade_thread *, _hdl_image_t *list)
{
    for (const _hdl_image_t *image = list; image != nullptr; image = image->next)
        handed.images << *image;
    return true;
}

// The records that an update is made of, with the fields that nobody reads.
class TestUpdateRecords : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();

    void agentIsLoadedWhereTheReceiverTakesIt();
    void reportBeginsEmpty();
    void imageIsDescribed_data();
    void imageIsDescribed();
};

void TestUpdateRecords::init()
{
    UnitTest::init();
    handed = Handed();
    downloadfile = {QByteArray(11, 'b'), QByteArray(22, 'p'), QByteArray(33, 'a'),
                    QByteArray(44, 'c')};
    Link link;
    link.worker.start();
    QVERIFY(link.worker.wait());
    QCOMPARE(handed.images.size(), 4);
}

void TestUpdateRecords::agentIsLoadedWhereTheReceiverTakesIt()
{
    QCOMPARE(handed.info.aux_addr, 0x00100000u);
    QCOMPARE(handed.info.da_addr, 0x04204000u);
    QCOMPARE(handed.info.da_len, 2458u);
}

void TestUpdateRecords::reportBeginsEmpty()
{
    QCOMPARE(handed.report.hw_code, uint16_t(0));
    QCOMPARE(handed.report.hw_subcode, uint16_t(0));
    for (const uint16_t word : handed.report.flash_id)
        QCOMPARE(word, uint16_t(0));
    QCOMPARE(handed.report.flash_base_addr, 0u);
    QCOMPARE(handed.report.flash_size, 0u);
}

void TestUpdateRecords::imageIsDescribed_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<uint32_t>("address");
    QTest::addColumn<uint32_t>("region");
    QTest::addColumn<uint32_t>("length");
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("bootFlag");
    QTest::newRow("bootloader.bin") << 0 << 0x08030000u << 0x110000u << 11u << 0 << 1;
    QTest::newRow("partition_table.bin") << 1 << 0x08000000u << 0x1F0000u << 22u << 1 << 0;
    QTest::newRow("gnss_demo.bin") << 2 << 0x08013000u << 0x120000u << 33u << 2 << 0;
    QTest::newRow("gnss_config.bin") << 3 << 0x083FF000u << 0x200000u << 44u << 3 << 0;
}

void TestUpdateRecords::imageIsDescribed()
{
    QFETCH(int, place);
    QFETCH(uint32_t, address);
    QFETCH(uint32_t, region);
    QFETCH(uint32_t, length);
    QFETCH(int, field);
    QFETCH(int, bootFlag);
    const _hdl_image_t &image = handed.images.at(place);
    QCOMPARE(image.name, QTest::currentDataTag());
    QCOMPARE(image.flash_addr, address);
    QCOMPARE(image.image_region, region);
    QCOMPARE(image.length, length);
    QCOMPARE(int(image.file_index), field);
    QCOMPARE(int(image.boot_flag), bootFlag);
}

TESTMODE_TEST_MAIN(TestUpdateRecords)
#include "test_update_records.moc"
