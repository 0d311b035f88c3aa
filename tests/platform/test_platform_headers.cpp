#include "tests/support/unittest.h"

#include "framework/appplugin.h"
#include "framework/colorgroup.h"
#include "framework/events.h"
#include "framework/windowinterface.h"
#include "kraudio/audioservice.h"
#include "lm_usb/lmusbmanager.h"
#include "lmplfctrl/lmplatformcontrol.h"
#include "mem/settingscache.h"
#include "mem/settingsfunc.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

// What plug-in and unit were built against apart from each other: the order of
// virtual functions and the layout of what passes between them.
class TestPlatformHeaders : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void pluginOperationsStandInOrder();
    void windowOperationsStandInOrder();
    void networkTestsStandInOrder();
    void interfaceHasItsName();
    void textsGoByValue();
    void eventHoldsPayloadBeforeValue();
    void touchEventCarriesFourNumbers();
    void taskEventCarriesNothing();
    void microphoneConfigurationIsThreeFloats();
    void managerIsMadeForItsVersion();
};

namespace {

// Where a virtual function stands in its class's table, from 0.
template <typename Function>
int slotOf(Function function)
{
    static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t), "common C++ ABI");
    std::ptrdiff_t words[2];
    std::memcpy(words, &function, sizeof words);
    // The mark of a virtual function is in the lowest bit here or, on ARM, in the second word.
    return static_cast<int>((words[0] & ~std::ptrdiff_t(1)) / std::ptrdiff_t(sizeof(void *)));
}

template <typename T>
std::ptrdiff_t offsetIn(const QEvent &event, const T &field)
{
    return reinterpret_cast<const char *>(&field) - reinterpret_cast<const char *>(&event);
}

} // namespace

void TestPlatformHeaders::pluginOperationsStandInOrder()
{
    QCOMPARE(slotOf(&AppPlugin::create), 0);
    QCOMPARE(slotOf(&AppPlugin::windowInterfaceID), 1);
    QCOMPARE(slotOf(&AppPlugin::sourceInterfaceID), 2);
    QCOMPARE(slotOf(&AppPlugin::requestWindowInterface), 3);
    QCOMPARE(slotOf(&AppPlugin::requestSourceInterface), 4);
}

void TestPlatformHeaders::windowOperationsStandInOrder()
{
    QCOMPARE(slotOf(&WindowInterface::onCreate), 0);
    QCOMPARE(slotOf(&WindowInterface::onDestroy), 1);
    QCOMPARE(slotOf(&WindowInterface::onShow), 2);
    QCOMPARE(slotOf(&WindowInterface::backEvent), 3);
    QCOMPARE(slotOf(&WindowInterface::keyEvent), 4);
    QCOMPARE(slotOf(&WindowInterface::name), 5);
}

void TestPlatformHeaders::networkTestsStandInOrder()
{
    using Control = lmplfctrl::LMPlatformControl;
    const int first = slotOf(&Control::startTcpServer);
    QCOMPARE(slotOf(&Control::startUdpServer), first + 1);
    QCOMPARE(slotOf(&Control::stopNetTest), first + 2);
    QCOMPARE(slotOf(&Control::startUdp50Client), first + 3);
    QCOMPARE(slotOf(&Control::startUdp100Client), first + 4);
    QCOMPARE(slotOf(&Control::startTcpClient), first + 5);
}

void TestPlatformHeaders::interfaceHasItsName()
{
    QCOMPARE(qobject_interface_iid<AppPlugin *>(), "com.corvane.Plugin.AppPlugin/1.0");
}

// Part of the names that a library exports.
void TestPlatformHeaders::textsGoByValue()
{
    static_assert(
        std::is_same_v<decltype(&ColorGroup::setFontColor), void (*)(QFont &, QString, int, int)>,
        "the group");
    using ReadBool = decltype(static_cast<bool (mem::SettingsCache::*)(QString, bool)>(
        &mem::SettingsCache::getValue));
    static_assert(std::is_member_function_pointer_v<ReadBool>, "the key");
    static_assert(std::is_same_v<decltype(&mem::SettingsFunc::getValue),
                                 bool (mem::SettingsFunc::*)(QString, bool)>,
                  "the key");
}

void TestPlatformHeaders::eventHoldsPayloadBeforeValue()
{
    const TaskEvent event(Qx::TaskIdle);
    const std::ptrdiff_t payload = offsetIn(event, event.payload);
    QCOMPARE(payload, std::ptrdiff_t(sizeof(QEvent)));
    QCOMPARE(offsetIn(event, event.value), payload + std::ptrdiff_t(sizeof(QByteArray)));
    static_assert(sizeof event.value == 4, "the value has 32 bits");
    static_assert(std::is_base_of<QEvent, SimpleEvent<Qx::Touch>>::value, "an event of Qt");
    static_assert(std::is_base_of<SimpleEvent<Qx::Touch>, TouchEvent>::value, "a simple event");
    static_assert(sizeof(TouchEvent) == sizeof(SimpleEvent<Qx::Touch>), "no field of its own");
    static_assert(sizeof(TaskEvent) == sizeof(SimpleEvent<Qx::TaskEvt>), "no field of its own");
}

void TestPlatformHeaders::touchEventCarriesFourNumbers()
{
    const TouchEvent event(static_cast<Qx::Touch>(3), 700, -2);
    QCOMPARE(static_cast<int>(event.type()), 1008);
    QCOMPARE(static_cast<int>(event.value), 3);
    const qint32 words[4] = {1008, 3, 700, -2};
    QCOMPARE(event.payload, QByteArray(reinterpret_cast<const char *>(words), 16));
}

void TestPlatformHeaders::taskEventCarriesNothing()
{
    const TaskEvent event(static_cast<Qx::TaskEvt>(5));
    QCOMPARE(static_cast<int>(event.type()), 1009);
    QCOMPARE(static_cast<int>(event.value), 5);
    QVERIFY(event.payload.isEmpty());
}

void TestPlatformHeaders::microphoneConfigurationIsThreeFloats()
{
    QCOMPARE(sizeof(krMicConfig), size_t(12));
    QCOMPARE(offsetof(krMicConfig, opGain), size_t(0));
    QCOMPARE(offsetof(krMicConfig, pgaGain), size_t(4));
    QCOMPARE(offsetof(krMicConfig, uplinkGain), size_t(8));
}

void TestPlatformHeaders::managerIsMadeForItsVersion()
{
    QVERIFY(lm_usb::LMUsbManager::GetInstance() != nullptr);
    QCOMPARE(bench::journal().texts(), QStringList{R"(LMUsbManager.create("2.12"))"});
}

TESTMODE_TEST_MAIN(TestPlatformHeaders)
#include "test_platform_headers.moc"
