#include "tour.h"

namespace bench {

namespace {

// Registers of the USB PHY, for port 0.
constexpr quint32 kDebugSelect = 0x9C000088;
constexpr quint32 kDebugRoute = 0x9C0000A0;
constexpr quint32 kSwing = 0x9C000190;
constexpr quint32 kDebugEnable = 0x9C004A8C;
constexpr quint32 kTestMode = 0x9C004A90;
constexpr quint32 kDisconnect = 0x9C004A9C;

QString hex(quint32 word)
{
    return QStringLiteral("0x%1").arg(word, 8, 16, QLatin1Char('0'));
}

} // namespace

void Tour::expectWord(quint32 address, quint32 expected)
{
    const quint32 word = memoryWord(address);
    expect(
        word == expected,
        QStringLiteral("register %1 holds %2, not %3").arg(hex(address), hex(word), hex(expected)));
}

void Tour::usbPhy()
{
    const QString value = QStringLiteral("SetupUsbForm/uphyData");
    const QString write = QStringLiteral("SetupUsbForm/writeBtn");

    step(QStringLiteral("menu: press \"USB Tid\""), [this] {
        freshWindow();
        markJournal();
        click(QStringLiteral("key_usb_tid"));
        waitFor(QStringLiteral("SetupUsbForm"), QStringLiteral("visible"), true);
        expectJournal({
            QStringLiteral("shell: echo 1 > /sys/module/usbcore/parameters/usb_logo_test_start"),
            QStringLiteral(
                "shell: echo 1 > /sys/devices/platform/ehci-platform.1/usb_speed_switch"),
        });
        picture(QStringLiteral("usb-phy"));
        return QStringLiteral("the page is shown, port 0 at high speed");
    });
    step(QStringLiteral("PHY page: write \"Test J\" at high speed"), [this, write] {
        click(QStringLiteral("test_JBtn"));
        click(write);
        expectWord(kTestMode, 9);
        return QStringLiteral("test-mode register of port 0: 9");
    });
    step(QStringLiteral("PHY page: full speed, write"), [this, write] {
        markJournal();
        click(QStringLiteral("fullBtn"));
        expectJournal({QStringLiteral(
            "shell: echo 0 > /sys/devices/platform/ehci-platform.1/usb_speed_switch")});
        waitFor(QStringLiteral("test_PacketBtn"), QStringLiteral("checked"), true);
        click(write);
        expectWord(kTestMode, 0);
        click(QStringLiteral("highBtn"));
        return QStringLiteral("\"None\" selected, test-mode register: 0");
    });
    step(QStringLiteral("PHY page: read, step and write the swing"), [this, value, write] {
        call(QStringLiteral("unit.memory.write"),
             {{"address", static_cast<double>(kSwing)}, {"value", 0x45}});
        click(QStringLiteral("useUphyBtn"));
        waitFor(value, QStringLiteral("text"), QStringLiteral("5"));
        click(QStringLiteral("uphyAddBtn"));
        waitFor(value, QStringLiteral("text"), QStringLiteral("6"));
        click(write);
        expectWord(kSwing, 0x7F7F0046);
        picture(QStringLiteral("usb-phy-parameters"));
        return QStringLiteral("5 stepped to 6, swing register: ") + hex(0x7F7F0046);
    });
    step(QStringLiteral("PHY page: step and write the disconnect threshold"), [this, value, write] {
        call(QStringLiteral("unit.memory.write"),
             {{"address", static_cast<double>(kDisconnect)}, {"value", 0x12}});
        click(QStringLiteral("uphyDisconnectBtn"));
        waitFor(value, QStringLiteral("text"), QStringLiteral("12"));
        click(QStringLiteral("uphyAddBtn"));
        click(write);
        expectWord(kDebugEnable, 1);
        expectWord(kTestMode, 7);
        expectWord(kDebugSelect, 0);
        expectWord(kDebugRoute, 0x0004100C);
        expectWord(kDisconnect, 0x13);
        return QStringLiteral("debug route opened, disconnect register: 0x13");
    });
    step(QStringLiteral("PHY page: device role, then host role"), [this] {
        click(QStringLiteral("useUphyBtn"));
        markJournal();
        click(QStringLiteral("deviceMode"));
        waitFor(QStringLiteral("port1_Btn"), QStringLiteral("visible"), false);
        click(QStringLiteral("hostMode"));
        waitFor(QStringLiteral("port1_Btn"), QStringLiteral("visible"), true);
        const QStringList roles{QStringLiteral("shell: usb_control --uphy_role 1"),
                                QStringLiteral("shell: usb_control --uphy_role 0")};
        expectJournal(roles);
        return roles.join(QStringLiteral(", "));
    });
    step(QStringLiteral("PHY page: press the return key"), [this] {
        click(QStringLiteral("returnBtn"));
        waitFor(QStringLiteral("testEntryWidget"), QStringLiteral("visible"), true);
        return QStringLiteral("the menu is shown");
    });
}

// A widget that one face of the Apple device page hides stays hidden for the
// other, so each face gets a window of its own.
void Tour::appleTest()
{
    const QString result = QStringLiteral("result_view");
    step(QStringLiteral("menu: press \"NCM Test\""), [this] {
        freshWindow();
        click(QStringLiteral("key_ncm_test"));
        waitFor(QStringLiteral("title_text"), QStringLiteral("text"), QStringLiteral("Apple Test"));
        waitFor(QStringLiteral("btn_c_udp50"), QStringLiteral("enabled"), false);
        return QStringLiteral("Apple Test, every test closed");
    });
    step(QStringLiteral("Apple page: NCM on"), [this] {
        markJournal();
        click(QStringLiteral("btn_c_ncm_sw"));
        expectJournal({QStringLiteral("LMUsbManager.switchUsbMode(6)")});
        waitFor(QStringLiteral("btn_c_udp50"), QStringLiteral("enabled"), true);
        return textOf(QStringLiteral("ncm_sw_state")) + QStringLiteral("; ")
            + textOf(QStringLiteral("title_text"));
    });
    step(QStringLiteral("Apple page: a client run, \"UDP 50\""), [this, result] {
        markJournal();
        click(QStringLiteral("btn_c_udp50"));
        waitFor(QStringLiteral("busy_text"), QStringLiteral("visible"), false, 10);
        expectJournal({QStringLiteral("LMPlatformControl.startUdp50Client()")});
        const QString report = textOf(result);
        expect(!report.isEmpty(), QStringLiteral("the result view is empty"));
        picture(QStringLiteral("apple-test"));
        return report.section(QLatin1Char('\n'), 0, 0);
    });
    step(QStringLiteral("Apple page: a server run, \"UDP\", then \"STOP\""), [this, result] {
        click(QStringLiteral("radioButton_2"));
        click(QStringLiteral("btn_s_udp"));
        const QString prompt = QStringLiteral("Please wait a moment then press <stop> button");
        expect(textOf(result) == prompt, QStringLiteral("the page says: ") + textOf(result));
        click(QStringLiteral("btn_s_stop"));
        const QString report = textOf(result);
        expect(!report.isEmpty() && report != prompt, QStringLiteral("no result is shown"));
        return report.section(QLatin1Char('\n'), 0, 0);
    });
    step(QStringLiteral("Apple page: the speed switch, twice"), [this] {
        QStringList seen;
        for (const char *label : {"ON", "OFF"}) {
            click(QStringLiteral("btn_c_usb_sw"));
            waitFor(QStringLiteral("usb_sw_state"), QStringLiteral("text"), QLatin1String(label));
            const QJsonObject file =
                call(QStringLiteral("unit.file.read"),
                     {{"path",
                       QStringLiteral("/sys/devices/platform/ehci-platform.2/usb_speed_switch")}})
                    .toObject();
            seen << QStringLiteral("%1 wrote %2")
                        .arg(label, file.value("text").toString().trimmed());
        }
        expect(seen == QStringList{"ON wrote 0", "OFF wrote 1"}, seen.join(QStringLiteral(", ")));
        return seen.join(QStringLiteral(", "));
    });
    step(QStringLiteral("Apple page: NCM off"), [this] {
        markJournal();
        click(QStringLiteral("btn_c_ncm_sw"));
        expectJournal({QStringLiteral("LMUsbManager.switchUsbMode(7)")});
        waitFor(QStringLiteral("btn_c_udp50"), QStringLiteral("enabled"), false);
        return textOf(QStringLiteral("ncm_sw_state"));
    });
}

void Tour::usbTest()
{
    step(QStringLiteral("menu: press \"USB Test\""), [this] {
        freshWindow();
        click(QStringLiteral("key_usb_test"));
        waitFor(QStringLiteral("title_text"), QStringLiteral("text"), QStringLiteral("USB Test"));
        waitFor(QStringLiteral("radioButton_usb_normal"), QStringLiteral("checked"), true);
        picture(QStringLiteral("usb-test"));
        return QStringLiteral("USB Test, certification normal");
    });
    step(QStringLiteral("USB page: the three charging modes"), [this] {
        markJournal();
        click(QStringLiteral("radioButton_cdp"));
        click(QStringLiteral("radioButton_dcp"));
        click(QStringLiteral("radioButton_sdp"));
        const QStringList told{QStringLiteral("DeviceManager.setUsbBcMode(0, 0)"),
                               QStringLiteral("DeviceManager.setUsbBcMode(0, 1)"),
                               QStringLiteral("DeviceManager.setUsbBcMode(0, 2)")};
        expectJournal(told);
        return told.join(QStringLiteral(", "));
    });
    step(QStringLiteral("USB page: certification \"USB MIF\""), [this] {
        markJournal();
        click(QStringLiteral("radioButton_usb_mif"));
        expectJournal({QStringLiteral("DeviceManager.setUsbCertification(77)")});
        awaitRestart();
        expectJournal({QStringLiteral("McuService.factoryReset()")});
        return QStringLiteral(
            "set at once, factory reset a second later, the unit has started anew");
    });
}

} // namespace bench
