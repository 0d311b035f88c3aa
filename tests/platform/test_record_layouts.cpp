#include "tests/support/unittest.h"

#include "framework/events.h"
#include "gnss_download/download_types.h"
#include "gnss_download/serialsettings.h"
#include "gnss_download/uart_types.h"
#include "gpsservice/krnminfo.h"
#include "kraudio/audioservice.h"

#include <cstddef>
#include <type_traits>

// The records that plug-in, services and receiver's protocol hand one another by value, on the
// processor that this test was compiled for: units are of 32 bits.
class TestRecordLayouts : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void statusRecord();
    void downloadRecords();
    void imageRecord();
    void events();
    void scalarsOfTheDownload();
};

namespace {

constexpr bool k32Bits = sizeof(void *) == 4;

template <typename T>
void isPlain()
{
    static_assert(std::is_trivially_copyable<T>::value, "handed on as bytes");
    static_assert(std::is_standard_layout<T>::value, "its offsets are known");
}

} // namespace

void TestRecordLayouts::statusRecord()
{
    isPlain<krnmINFO>();
    QCOMPARE(sizeof(krnmINFO), size_t(760));
    QCOMPARE(alignof(krnmINFO), size_t(8)); // by its doubles, on ARM as on a PC
    QCOMPARE(offsetof(krnmINFO, utcYear), size_t(4));
    QCOMPARE(offsetof(krnmINFO, utcSecond), size_t(24));
    QCOMPARE(offsetof(krnmINFO, latitude), size_t(64));
    QCOMPARE(offsetof(krnmINFO, longitude), size_t(72));
    QCOMPARE(offsetof(krnmINFO, speed), size_t(88));
    QCOMPARE(offsetof(krnmINFO, satellitesInUse), size_t(112));
    QCOMPARE(offsetof(krnmINFO, satellitesInView), size_t(116));
    QCOMPARE(offsetof(krnmINFO, satellites), size_t(120));
    QCOMPARE(sizeof(krnmSatellite), size_t(20));
    QCOMPARE(alignof(krnmSatellite), size_t(4));
    QCOMPARE(offsetof(krnmSatellite, signal), size_t(16));
    QCOMPARE(sizeof(krnmDuration), size_t(24));
    QCOMPARE(offsetof(krnmDuration, hours), size_t(12));
    QCOMPARE(offsetof(krnmDuration, seconds), size_t(20));
    QCOMPARE(sizeof(krMicConfig), size_t(12));
    QCOMPARE(alignof(krMicConfig), size_t(4));
}

void TestRecordLayouts::downloadRecords()
{
    isPlain<hdl_da_info_t>();
    QCOMPARE(sizeof(hdl_da_info_t), size_t(12));
    QCOMPARE(alignof(hdl_da_info_t), size_t(4));
    QCOMPARE(offsetof(hdl_da_info_t, aux_addr), size_t(0));
    QCOMPARE(offsetof(hdl_da_info_t, da_addr), size_t(4));
    QCOMPARE(offsetof(hdl_da_info_t, da_len), size_t(8));

    isPlain<hdl_da_report_t>();
    QCOMPARE(sizeof(hdl_da_report_t), size_t(20));
    QCOMPARE(offsetof(hdl_da_report_t, hw_code), size_t(0));
    QCOMPARE(offsetof(hdl_da_report_t, hw_subcode), size_t(2));
    QCOMPARE(offsetof(hdl_da_report_t, flash_id), size_t(4));
    QCOMPARE(offsetof(hdl_da_report_t, flash_base_addr), size_t(12));
    QCOMPARE(offsetof(hdl_da_report_t, flash_size), size_t(16));
}

// It holds two pointers, so it has two layouts.
void TestRecordLayouts::imageRecord()
{
    isPlain<_hdl_image_t>();
    QCOMPARE(offsetof(_hdl_image_t, image_region), size_t(0));
    QCOMPARE(offsetof(_hdl_image_t, flash_addr), size_t(4));
    QCOMPARE(offsetof(_hdl_image_t, length), size_t(8));
    QCOMPARE(offsetof(_hdl_image_t, name), size_t(k32Bits ? 12 : 16));
    QCOMPARE(offsetof(_hdl_image_t, file_index), size_t(k32Bits ? 16 : 24));
    QCOMPARE(offsetof(_hdl_image_t, boot_flag), size_t(k32Bits ? 17 : 25));
    QCOMPARE(offsetof(_hdl_image_t, next), size_t(k32Bits ? 20 : 32));
    QCOMPARE(sizeof(_hdl_image_t), size_t(k32Bits ? 24 : 40));
}

void TestRecordLayouts::events()
{
    const TouchEvent event(static_cast<Qx::Touch>(9), -1, -1);
    const auto *start = reinterpret_cast<const char *>(&event);
    QCOMPARE(sizeof(QEvent), size_t(k32Bits ? 12 : 24));
    QCOMPARE(reinterpret_cast<const char *>(&event.payload) - start, k32Bits ? 12 : 24);
    QCOMPARE(reinterpret_cast<const char *>(&event.value) - start, k32Bits ? 16 : 32);
    QCOMPARE(sizeof event, size_t(k32Bits ? 20 : 40));
    QCOMPARE(sizeof(TaskEvent), sizeof event);
}

void TestRecordLayouts::scalarsOfTheDownload()
{
    QCOMPARE(sizeof(hal_uart_baudrate_t), size_t(4));
    QCOMPARE(sizeof(HDL_DISCONNECT_TYPE), size_t(4));
    QCOMPARE(offsetof(UARTType, length), sizeof(void *)); // behind the byte array
    QCOMPARE(sizeof(UARTType::length), size_t(4));
    QCOMPARE(sizeof(off_t), size_t(8)); // registers above 2 GiB
}

TESTMODE_TEST_MAIN(TestRecordLayouts)
#include "test_record_layouts.moc"
