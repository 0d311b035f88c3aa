#include "tests/support/unittest.h"
#include "updateunit.h"

#include <QJsonDocument>

using bench::Fault;
using tests::UpdateUnit;

namespace {

constexpr int kUpdateMilliseconds = 60000;

const QStringList kAll = {"bootloader.bin", "partition_table.bin", "gnss_demo.bin",
                          "gnss_config.bin"};
const QStringList kFirst = {"bootloader.bin"};
const QStringList kFirstTwo = {"bootloader.bin", "partition_table.bin"};
const QStringList kFirstThree = {"bootloader.bin", "partition_table.bin", "gnss_demo.bin"};
const QStringList kNone;

// How the trace tells where an update failed, from the inmost step outwards.
const QStringList kConnection = {"hdl_connect fail"};
const QStringList kImage = {"hdl_da_download fail", "hdl_download fail"};
const QStringList kPacket = QStringList{"hdl_wirte_packet fail"} + kImage;

// Bytes that lie in the flash in place of what the images would leave there.
struct Spoilt
{
    int offset;
    QByteArray bytes;
};

// What the receiver gets of an image as its first packet.
QByteArray firstPacket(const char *image)
{
    return UpdateUnit::packageFile(image).leftJustified(4096, '\xFF', true);
}

Spoilt packetWithoutByte100()
{
    return {0, firstPacket("partition_table.bin").remove(100, 1) + '\xA5'}; // the leave-taking
}

Spoilt packetWithByte100Twice()
{
    QByteArray packet = firstPacket("partition_table.bin");
    return {0, packet.insert(100, packet.at(100)).left(4096)};
}

Spoilt packetWithByte100Flipped()
{
    QByteArray packet = firstPacket("partition_table.bin");
    packet[100] = static_cast<char>(packet.at(100) ^ 1);
    return {0, packet};
}

Spoilt twoBytesSwapped()
{
    const QByteArray image = UpdateUnit::packageFile("gnss_demo.bin");
    return {0x14064, QByteArray(1, image.at(4197)) + image.at(4196)};
}

} // namespace

Q_DECLARE_METATYPE(Spoilt)

// Every kind of fault under a whole update, from the press on the screen: what the update makes
// of it, and that a healthy receiver takes the next one.
class TestUpdateFaults : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void updateFails_data();
    void updateFails();
    void updateSucceeds_data();
    void updateSucceeds();
    void refusalThatPassesIsNotSeen_data();
    void refusalThatPassesIsNotSeen();
    void hostThatIsStoppedForGoodWaitsUntilItIsReleased();

private:
    void updateWithFault(UpdateUnit &unit, const QByteArray &fault, const QString &deed);
    void updateWithoutFault(UpdateUnit &unit);
};

void TestUpdateFaults::updateWithFault(UpdateUnit &unit, const QByteArray &text,
                                       const QString &deed)
{
    QString error;
    const auto fault = Fault::fromJson(QJsonDocument::fromJson(text).object(), &error);
    QVERIFY2(fault, qPrintable(error));
    unit.openUpdatePage();
    unit.receiver.setFaults({*fault});
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
    QCOMPARE(unit.receiver.faultReports().first().deeds.value(0), deed);
}

void TestUpdateFaults::updateWithoutFault(UpdateUnit &unit)
{
    unit.receiver.clearFaults();
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QCOMPARE(unit.icon(), QColor("green"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kAll));
}

void TestUpdateFaults::updateFails_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("deed");
    QTest::addColumn<QStringList>("failed");  // steps of the trace
    QTest::addColumn<QStringList>("written"); // images that lie whole in the flash
    QTest::addColumn<Spoilt>("spoilt");

    const auto row = [](const char *name, const char *fault, const char *deed,
                        const QStringList &failed, const QStringList &written,
                        const Spoilt &spoilt = {0, QByteArray()}) {
        QTest::newRow(name) << QByteArray(fault) << QString::fromUtf8(deed) << failed << written
                            << spoilt;
    };

    row("silence", R"({"kind":"silence","step":"packet","image":2,"packet":1})",
        "packet 34 (image 2, packet 1): silent from here on", kPacket, kFirst);
    row("reset", R"({"kind":"reset","step":"packet","image":2,"packet":1})",
        "packet 34 (image 2, packet 1): the receiver resets itself", kPacket, kFirst);
    row("other rate", R"({"kind":"baud","step":"packet","image":2,"packet":1})",
        "packet 34 (image 2, packet 1): now at 9600 baud", kPacket, kFirst);
    row("noise in the middle",
        R"({"kind":"garbage","value":3,"step":"packet","image":2,"packet":1})",
        "packet 34 (image 2, packet 1): noise 04 ea 76", kPacket, kFirstTwo);

    row("status when the watchdog is switched off", R"({"kind":"status","step":"write-16"})",
        "write-16 1: status 0x0000 sent as 0x1000",
        QStringList{"hdl_brom_write16 fail", "hdl_brom_send_da fail"} + kConnection, kNone);
    row("status when stage 1 is announced",
        R"({"kind":"status","step":"load-stage-1","value":7437})",
        "load-stage-1 1: status 0x0000 sent as 0x1D0D",
        QStringList{"hdl_brom_send_da fail", "hdl_brom_send_da fail"} + kConnection, kNone);
    row("status of the jump", R"({"kind":"status","step":"jump","value":65534})",
        "jump 1: status 0x0000 sent as 0xFFFE", QStringList{"hdl_brom_jump_da fail"} + kConnection,
        kNone);
    row("status of the parameters", R"({"kind":"status","step":"parameters"})",
        "parameters 1: status 0x0000 sent as 0x1000",
        QStringList{"unknow_array fail"} + kConnection, kNone);
    row("checksum of stage 1", R"({"kind":"checksum","step":"load-stage-1"})",
        "load-stage-1 1: checksum 0x1236 sent as 0x1237",
        QStringList{"hdl_brom_send_da, checksum fail", "hdl_brom_send_da fail"} + kConnection,
        kNone);
    row("checksum of stage 2", R"({"kind":"checksum","step":"load-stage-2"})",
        "load-stage-2 1: checksum 0x505F sent as 0x505E",
        QStringList{"hdl_brom_send_da1, checksum fail", "hdl_brom_send_da fail"} + kConnection,
        kNone);
    row("sum of an image", R"({"kind":"checksum","step":"image-sum","image":2})",
        "image-sum 2 (image 2): sum 0x00059137 sent as 0x00059136", kImage, kFirstTwo);
    row("acknowledgement of a packet",
        R"({"kind":"acknowledge","step":"packet","image":2,"index":1})",
        "packet 34 (image 2, packet 1): acknowledgement 0x69 sent as 0x00", kPacket, kFirstTwo);
    row("packet refused four times",
        R"({"kind":"nack","value":3061,"times":4,"image":4,"packet":1})",
        "packet 64 (image 4, packet 1): refused with code 3061", kPacket, kFirstThree);
    row("answer twice, of a register", R"({"kind":"repeat","step":"read-16"})",
        "read-16 1: the answer is sent twice",
        QStringList{"hdl_brom_read16 fail", "hdl_brom_read16 fail", "hdl_brom_read16 fail",
                    "hdl_brom_write16 fail", "hdl_brom_send_da fail"}
            + kConnection,
        kNone);
    row("answer twice, of a packet", R"({"kind":"repeat","step":"packet","image":2})",
        "packet 34 (image 2, packet 1): the answer is sent twice", kPacket, kFirstTwo);

    row("byte lost on the way there", R"({"kind":"drop","step":"packet","image":2,"index":100})",
        "packet 34 (image 2, packet 1): byte 100 from the host, 0x6E dropped", kPacket, kFirst,
        packetWithoutByte100());
    row("byte lost on the way back",
        R"({"kind":"drop","step":"packet","image":2,"index":1,"direction":"to-host"})",
        "packet 34 (image 2, packet 1): byte 1 to the host, 0x69 dropped", kPacket, kFirstTwo);
    row("byte doubled on the way there",
        R"({"kind":"double","step":"packet","image":2,"index":100})",
        "packet 34 (image 2, packet 1): byte 100 from the host, 0x6E doubled", kImage, kFirst,
        packetWithByte100Twice());
    row("byte doubled on the way back",
        R"({"kind":"double","step":"packet","image":2,"direction":"to-host"})",
        "packet 34 (image 2, packet 1): byte 0 to the host, 0x5A doubled", kPacket, kFirstTwo);
    row("bit flipped on the way there",
        R"({"kind":"flip","step":"packet","image":2,"index":100,"value":1})",
        "packet 34 (image 2, packet 1): byte 100 from the host, 0x6E became 0x6F", kImage, kFirst,
        packetWithByte100Flipped());
    row("bit flipped on the way back",
        R"({"kind":"flip","step":"packet","image":2,"index":1,"value":1,"direction":"to-host"})",
        "packet 34 (image 2, packet 1): byte 1 to the host, 0x69 became 0x68", kPacket, kFirstTwo);
    row("byte too late on the way there",
        R"({"kind":"late","step":"packet","image":2,"index":100,"value":1000})",
        "packet 34 (image 2, packet 1): byte 100 from the host, 0x6E 1000 ms late", kPacket,
        kFirstTwo);
    row("byte too late on the way back",
        R"({"kind":"late","step":"packet","image":2,"index":1,"value":1000,"direction":"to-host"})",
        "packet 34 (image 2, packet 1): byte 1 to the host, 0x69 1000 ms late", kPacket, kFirstTwo);
    row("bytes swapped on the way back",
        R"({"kind":"swap","step":"load-stage-1","index":19,"direction":"to-host"})",
        "load-stage-1 1: byte 19 to the host, 0x12 came after 0x36",
        QStringList{"hdl_brom_send_da, checksum fail", "hdl_brom_send_da fail"} + kConnection,
        kNone);
}

void TestUpdateFaults::updateFails()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, deed);
    QFETCH(QStringList, failed);
    QFETCH(QStringList, written);
    QFETCH(Spoilt, spoilt);
    UpdateUnit unit;
    updateWithFault(unit, fault, deed);
    QCOMPARE(
        unit.lines(),
        (QStringList{"/dev/ttyS4: started", "/dev/ttyS4: reset succed", "/dev/ttyS4: failed"}));
    QCOMPARE(unit.progress(), 0);
    QCOMPARE(unit.icon(), QColor("red"));
    QCOMPARE(trace().payloads().filter(QRegularExpression("^\\w.* fail$")), failed);
    QByteArray flash = UpdateUnit::flashWith(written);
    flash.replace(spoilt.offset, spoilt.bytes.size(), spoilt.bytes);
    QTRY_VERIFY(unit.flash() == flash); // a late byte comes after the update's end

    updateWithoutFault(unit);
}

void TestUpdateFaults::updateSucceeds_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("deed");
    QTest::addColumn<Spoilt>("spoilt");

    const Spoilt nothing = {0, QByteArray()};
    QTest::newRow("noise before the synchronisation")
        << QByteArray(R"({"kind":"garbage"})") << "sync 1: noise 04 ea 76 ce 08 5e 47 0e"
        << nothing;
    QTest::newRow("XON") << QByteArray(
        R"({"kind":"flow-byte","value":17,"step":"packet","image":3,"packet":2})")
                         << "packet 36 (image 3, packet 2): sent 0x11" << nothing;
    QTest::newRow("XOFF, and XON after a while")
        << QByteArray(R"({"kind":"flow-byte","resume_ms":200,"step":"packet","image":3})")
        << "packet 35 (image 3, packet 1): sent 0x13" << nothing;
    // Qt's port takes any byte for an XON. Said when the packet is there whole: nobody would answer
    // to a part of it.
    QTest::newRow("XOFF that the answer takes back")
        << QByteArray(R"({"kind":"flow-byte","step":"packet","image":3,"index":4096})")
        << "packet 35 (image 3, packet 1): sent 0x13" << nothing;
    // The first byte of the reply to a packet is read over.
    QTest::newRow("wrong acknowledgement that nobody compares")
        << QByteArray(R"({"kind":"acknowledge","step":"packet","image":2})")
        << "packet 34 (image 2, packet 1): acknowledgement 0x5A sent as 0x00" << nothing;
    QTest::newRow("byte late on the way there")
        << QByteArray(R"({"kind":"late","step":"packet","image":2,"index":100,"value":100})")
        << "packet 34 (image 2, packet 1): byte 100 from the host, 0x6E 100 ms late" << nothing;
    QTest::newRow("byte late on the way back")
        << QByteArray(
               R"({"kind":"late","step":"packet","image":2,"index":1,"direction":"to-host"})")
        << "packet 34 (image 2, packet 1): byte 1 to the host, 0x69 50 ms late" << nothing;

    // A sum of bytes does not see their order, and one of what came not what was written: only the
    // flash tells.
    QTest::newRow("flash that does not write")
        << QByteArray(R"({"kind":"no-write","step":"packet","image":3,"packet":2})")
        << "packet 36 (image 3, packet 2): acknowledged and not written"
        << Spoilt{0x14000, QByteArray(4096, '\xFF')};
    QTest::newRow("bytes swapped on the way there")
        << QByteArray(R"({"kind":"swap","step":"packet","image":3,"packet":2,"index":100})")
        << "packet 36 (image 3, packet 2): byte 100 from the host, 0x6E came after 0x6F"
        << twoBytesSwapped();
}

void TestUpdateFaults::updateSucceeds()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, deed);
    QFETCH(Spoilt, spoilt);
    UpdateUnit unit;
    updateWithFault(unit, fault, deed);
    QCOMPARE(
        unit.lines(),
        (QStringList{"/dev/ttyS4: started", "/dev/ttyS4: reset succed", "/dev/ttyS4: succed"}));
    QCOMPARE(unit.progress(), 100);
    QCOMPARE(unit.icon(), QColor("green"));
    QByteArray flash = UpdateUnit::flashWith(kAll);
    flash.replace(spoilt.offset, spoilt.bytes.size(), spoilt.bytes);
    QVERIFY(unit.flash() == flash);

    updateWithoutFault(unit);
}

void TestUpdateFaults::refusalThatPassesIsNotSeen_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("times");
    QTest::newRow("listed, once") << 3061 << 1;
    QTest::newRow("listed, as often as is borne") << 3064 << 3;
    QTest::newRow("busy") << 3065 << 1;
    QTest::newRow("not listed, more often than any") << 7 << 9;
}

void TestUpdateFaults::refusalThatPassesIsNotSeen()
{
    QFETCH(int, code);
    QFETCH(int, times);
    UpdateUnit unit;
    updateWithFault(
        unit,
        QStringLiteral(R"({"kind":"nack","value":%1,"times":%2,"image":3,"packet":2})")
            .arg(code)
            .arg(times)
            .toUtf8(),
        QStringLiteral("packet 36 (image 3, packet 2): refused with code %1").arg(code));
    QCOMPARE(unit.receiver.faultReports().first().done, times);
    QCOMPARE(trace().payloads().filter("NACK").size(), times);
    QVERIFY(trace().payloads().contains(QStringLiteral("hdl_wirte_packet, NACK ret=%1").arg(code)));
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kAll));
    updateWithoutFault(unit);
}

// Software flow control has no time-out: where nothing more is said that would release the host,
// the update waits, and the page shows that it runs.
void TestUpdateFaults::hostThatIsStoppedForGoodWaitsUntilItIsReleased()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    Fault stop;
    stop.kind = Fault::Kind::FlowByte;
    stop.step = bench::ReceiverStep::LoadStage2;
    stop.index = 2000; // in the middle of what goes out unanswered
    unit.receiver.setFaults({stop});
    unit.press("pushButton_3");
    QTRY_COMPARE_WITH_TIMEOUT(unit.receiver.faultReports().first().deeds,
                              QStringList{"load-stage-2 1: sent 0x13"}, kUpdateMilliseconds);
    QTest::qWait(1000);
    const int received = unit.receiver.state().bytesIn;
    QTest::qWait(4000); // longer than the wait for an answer
    QCOMPARE(unit.receiver.state().bytesIn, received);
    QVERIFY(unit.updateRuns());
    QCOMPARE(unit.lines(), (QStringList{"/dev/ttyS4: started", "/dev/ttyS4: reset succed"}));

    Fault release = stop;
    release.value = 0x11;
    release.step = bench::ReceiverStep::Sync;
    release.index = 0;
    unit.receiver.setFaults({release});
    unit.receiver.setReset(true);
    unit.receiver.setReset(false);
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: failed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kNone));
    updateWithoutFault(unit);
}

TESTMODE_TEST_MAIN(TestUpdateFaults)
#include "test_update_faults.moc"
