#include "link.h"

#include "tests/support/clock/clockedtest.h"

using tests::Dialogue;
using tests::Link;

namespace {

constexpr char kPacket[] = "5C*4096";

// A packet that is refused with a code.
Dialogue refusal(const QString &code)
{
    return Dialogue().host(kPacket).chip("5A A5", 300).chip(code);
}

bool writePacket(Link *link)
{
    QByteArray packet = tests::bytesOf(kPacket);
    return link->worker.hdl_wirte_packet(reinterpret_cast<uint8_t *>(packet.data()), 4096, 0);
}

_hdl_image_t image(uint32_t length, uint8_t fileIndex = 2)
{
    return {0x120000, 0x08013000, length, "gnss_demo.bin", fileIndex, 0, nullptr};
}

QString word(uint32_t value)
{
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes.toHex(' ');
}

// An image that is announced and taken.
Dialogue announcement(const QString &paddedLength)
{
    return Dialogue()
        .host("5A")
        .line("drain")
        .host("B2")
        .host("08 01 30 00")
        .host(paddedLength)
        .host("00 00 10 00")
        .chip("5A")
        .chip("5A");
}

} // namespace

// Images into the receiver's flash.
class TestDownloadAgentWrite : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void commandIsAcknowledgedOrNot_data();
    void commandIsAcknowledgedOrNot();

    void packetNeedsDataOf4096Bytes_data();
    void packetNeedsDataOf4096Bytes();
    void secondReplyDecides_data();
    void secondReplyDecides();
    void listedCodeIsResentOnRequest_data();
    void listedCodeIsResentOnRequest();
    void unlistedCodeIsResentWithoutCounting_data();
    void unlistedCodeIsResentWithoutCounting();
    void fourthRefusalGivesUp_data();
    void fourthRefusalGivesUp();
    void refusalWhoseCodeNeverComesIsNoListedOne();
    void sumThatNeverComesIsNought();
    void drainIsHandedThePacketsBuffer();
    void resendIsNotSentWhenTheAgentDoesNotAskForIt_data();
    void resendIsNotSentWhenTheAgentDoesNotAskForIt();
    void busyAgentIsWaitedFor();
    void busyAgentThatFallsSilentEndsThePacket();
    void silentAgentEndsThePacket_data();
    void silentAgentEndsThePacket();

    void imageIsPaddedToPackets_data();
    void imageIsPaddedToPackets();
    void packetsArePausedBetween();
    void imageComesFromTheFieldOfItsIndex_data();
    void imageComesFromTheFieldOfItsIndex();
    void imageThatIsNotThereIsRefused_data();
    void imageThatIsNotThereIsRefused();
    void emptyImageGoesOutErased();
    void imageFails_data();
    void imageFails();
    void wrongSumIsLoggedWithBoth();
    void sumOfSeveralPacketsRunsOn();

    void emptyListFails();
    void listIsWrittenInOrder();
    void failureInTheSecondImageStopsTheList();
};

void TestDownloadAgentWrite::commandIsAcknowledgedOrNot_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("result");
    QTest::addColumn<uint32_t>("error");
    QTest::newRow("acknowledged") << "5A" << true << 7u;
    QTest::newRow("refused") << "A5 00 00 0B F9" << false << 0x0BF9u;
    QTest::newRow("another byte") << "69" << false << 7u;
    QTest::newRow("silent") << "" << false << 7u;
}

void TestDownloadAgentWrite::commandIsAcknowledgedOrNot()
{
    QFETCH(QString, answer);
    QFETCH(bool, result);
    QFETCH(uint32_t, error);
    Link link(answer.isEmpty() ? Dialogue() : Dialogue().chip(answer));
    uint32_t code = 7;
    QCOMPARE(link.worker.hdl_da_check_cmd_arg(&code), result);
    QCOMPARE(code, error);
    QCOMPARE(link.chip.verdict(), QString());
}

void TestDownloadAgentWrite::packetNeedsDataOf4096Bytes_data()
{
    QTest::addColumn<bool>("data");
    QTest::addColumn<uint32_t>("length");
    QTest::newRow("no data") << false << 4096u;
    QTest::newRow("nothing") << true << 0u;
    QTest::newRow("4095") << true << 4095u;
    QTest::newRow("4097") << true << 4097u;
}

void TestDownloadAgentWrite::packetNeedsDataOf4096Bytes()
{
    QFETCH(bool, data);
    QFETCH(uint32_t, length);
    QByteArray packet(4097, 'x');
    Link link;
    uint8_t *bytes = data ? reinterpret_cast<uint8_t *>(packet.data()) : nullptr;
    QVERIFY(!link.worker.hdl_wirte_packet(bytes, length, 0));
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"hdl_wirte_packet fail, invalid parameter"}));
    QVERIFY(link.chip.sent().isEmpty());
}

void TestDownloadAgentWrite::secondReplyDecides_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("result");
    QTest::newRow("taken") << "5A 69" << true;
    QTest::newRow("taken twice") << "69 69" << true;
    QTest::newRow("refused for good") << "5A 96" << false;
    QTest::newRow("neither") << "69 5A" << false;
}

void TestDownloadAgentWrite::secondReplyDecides()
{
    QFETCH(QString, reply);
    QFETCH(bool, result);
    Link link(Dialogue().host(kPacket).chip(reply, 300));
    QList<uint32_t> writes; // one each packet
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte_buffer, this,
            [&writes](uint8_t *, uint32_t count) { writes << count; });
    QCOMPARE(writePacket(&link), result);
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(writes, QList<uint32_t>({4096}));
    const QStringList bytes = reply.split(' ');
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"hdl_wirte_packet, response=0x" + bytes.at(0),
                          "hdl_wirte_packet, response=0x" + bytes.at(1)}));
}

void TestDownloadAgentWrite::listedCodeIsResentOnRequest_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("number");
    QTest::newRow("3061") << "00 00 0B F5" << 3061;
    QTest::newRow("3062") << "00 00 0B F6" << 3062;
    QTest::newRow("3063") << "00 00 0B F7" << 3063;
    QTest::newRow("3064") << "00 00 0B F8" << 3064;
}

void TestDownloadAgentWrite::listedCodeIsResentOnRequest()
{
    QFETCH(QString, code);
    QFETCH(int, number);
    Link link(refusal(code).chip("5A").host("69").host(kPacket).chip("5A 69", 300));
    QVERIFY(writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"hdl_wirte_packet, response=0x5A", "hdl_wirte_packet, response=0xA5",
                          QString("hdl_wirte_packet, NACK ret=%1").arg(number),
                          "hdl_wirte_packet, response=0x5A", "hdl_wirte_packet, response=0x69"}));
}

void TestDownloadAgentWrite::unlistedCodeIsResentWithoutCounting_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("0") << "00 00 00 00";
    QTest::newRow("3060") << "00 00 0B F4";
    QTest::newRow("3066") << "00 00 0B FA";
    QTest::newRow("all ones") << "FF FF FF FF";
}

void TestDownloadAgentWrite::unlistedCodeIsResentWithoutCounting()
{
    QFETCH(QString, code);
    Dialogue dialogue;
    for (int i = 0; i < 200; ++i)
        dialogue.add(refusal(code));
    Link link(dialogue.host(kPacket).chip("5A 69", 300));
    QVERIFY(writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestDownloadAgentWrite::fourthRefusalGivesUp_data()
{
    QTest::addColumn<QStringList>("codes"); // in turn, each with what ends a busy agent's waiting
    QTest::addColumn<int>("unlisted");      // before each
    QTest::newRow("3061") << QStringList{"00 00 0B F5"} << 0;
    QTest::newRow("3062") << QStringList{"00 00 0B F6"} << 0;
    QTest::newRow("3063") << QStringList{"00 00 0B F7"} << 0;
    QTest::newRow("3064") << QStringList{"00 00 0B F8"} << 0;
    QTest::newRow("3065") << QStringList{"00 00 0B F9 E1 00"} << 0;
    QTest::newRow("all of them") << QStringList{"00 00 0B F9 00", "00 00 0B F8", "00 00 0B F7",
                                                "00 00 0B F6"}
                                 << 0;
    QTest::newRow("between others") << QStringList{"00 00 0B F5", "00 00 0B F9 E1 E1 69"} << 2;
}

void TestDownloadAgentWrite::fourthRefusalGivesUp()
{
    QFETCH(QStringList, codes);
    QFETCH(int, unlisted);
    Dialogue dialogue;
    for (int i = 0; i < 4; ++i) {
        for (int other = 0; other < unlisted; ++other)
            dialogue.add(refusal("00 00 0B FA"));
        dialogue.add(refusal(codes.at(i % codes.size())));
        if (i < 3)
            dialogue.chip("5A").host("69");
    }
    Link link(dialogue.host("A5"));
    QVERIFY(!writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(link.chip.unansweredPolls().isEmpty());
}

void TestDownloadAgentWrite::refusalWhoseCodeNeverComesIsNoListedOne()
{
    Link link(Dialogue().host(kPacket).chip("5A A5", 300).host(kPacket).chip("5A 69", 300));
    QVERIFY(writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(link.chip.unansweredPolls(), QVector<quint32>{3000});
    QVERIFY(trace().lines().contains("hdl_wirte_packet, NACK ret=0"));
}

void TestDownloadAgentWrite::sumThatNeverComesIsNought()
{
    Link link(announcement("00 00 10 00")
                  .host("01*4096")
                  .chip("5A 69", 300)
                  .chip("5A")
                  .host("00 00 10 00"));
    downloadfile.app_bin = QByteArray(4096, 1);
    _hdl_image_t record = image(4096);
    QVERIFY(!link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.unansweredPolls(), (QVector<quint32>{900, 3000}));
    QCOMPARE(tests::logTexts(trace().lines()).last(),
             QString("DA Download Imgae (gnss_demo.bin) CheckSum Fail, 0x00001000 != 0x00000000"));
}

// Which the transport shows, and no other: it holds a packet.
void TestDownloadAgentWrite::drainIsHandedThePacketsBuffer()
{
    Link link(announcement("00 00 10 00").host("01*4096").chip("5A 96", 300));
    downloadfile.app_bin = QByteArray(4096, 1);
    const uint8_t *drained = nullptr;
    QByteArray content;
    connect(&link.worker, &ugrade_thread::hdl_uart_get_bytes, this, [&](const uint8_t *buffer) {
        drained = buffer;
        content = QByteArray(reinterpret_cast<const char *>(buffer), 4096);
    });
    const uint8_t *sent = nullptr;
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte_buffer, this,
            [&sent](const uint8_t *buffer) { sent = buffer; });
    _hdl_image_t record = image(4096);
    QVERIFY(!link.worker.hdl_da_download(&record));
    QVERIFY(drained != nullptr);
    QCOMPARE(drained, sent);
    QCOMPARE(content, QByteArray(4096, '\0'));
}

void TestDownloadAgentWrite::resendIsNotSentWhenTheAgentDoesNotAskForIt_data()
{
    QTest::addColumn<QString>("answer");
    QTest::newRow("another byte") << "69";
    QTest::newRow("silent") << "";
}

void TestDownloadAgentWrite::resendIsNotSentWhenTheAgentDoesNotAskForIt()
{
    QFETCH(QString, answer);
    Dialogue dialogue = refusal("00 00 0B F5");
    if (!answer.isEmpty())
        dialogue.chip(answer);
    Link link(dialogue);
    QVERIFY(!writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestDownloadAgentWrite::busyAgentIsWaitedFor()
{
    // The byte that ends the waiting is not the request to send again.
    Link link(refusal("00 00 0B F9")
                  .chip("E1 E1 E1 E1 E1 5A 5A")
                  .host("69")
                  .host(kPacket)
                  .chip("5A 69", 300));
    QVERIFY(writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(trace().lines().contains("hdl_wirte_packet, NACK ret=3065"));
}

void TestDownloadAgentWrite::busyAgentThatFallsSilentEndsThePacket()
{
    Link link(refusal("00 00 0B F9").chip("E1 E1"));
    QVERIFY(!writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(link.chip.unansweredPolls(), QVector<quint32>({3000, 3000}));
}

void TestDownloadAgentWrite::silentAgentEndsThePacket_data()
{
    QTest::addColumn<int>("refusals"); // before it falls silent
    QTest::newRow("at once") << 0;
    QTest::newRow("after one refusal") << 1;
    QTest::newRow("after five") << 5;
}

void TestDownloadAgentWrite::silentAgentEndsThePacket()
{
    QFETCH(int, refusals);
    Dialogue dialogue;
    for (int i = 0; i < refusals; ++i)
        dialogue.add(refusal("00 00 00 01"));
    Link link(dialogue.host(kPacket));
    QVERIFY(!writePacket(&link));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(link.chip.unansweredPolls(), QVector<quint32>({300, 300}));
    QCOMPARE(tests::logTexts(trace().lines()).mid(3 * refusals),
             QStringList({"hdl_wirte_packet, response=0x00", "hdl_wirte_packet, response=0x00"}));
}

void TestDownloadAgentWrite::imageIsPaddedToPackets_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QStringList>("packets");
    QTest::addColumn<QString>("paddedLength");
    QTest::addColumn<QString>("sum");
    QTest::addColumn<QStringList>("logged");
    QTest::newRow("1") << 1 << QStringList({"01 FF*4095"}) << "00 00 10 00"
                       << "00 0F EF 02" << QStringList({"packet 1/1 1"});
    QTest::newRow("4095") << 4095 << QStringList({"01*4095 FF"}) << "00 00 10 00"
                          << "00 00 10 FE" << QStringList({"packet 1/1 4095"});
    QTest::newRow("4096") << 4096 << QStringList({"01*4096"}) << "00 00 10 00"
                          << "00 00 10 00" << QStringList({"packet 1/1 4096"});
    QTest::newRow("4097") << 4097 << QStringList({"01*4096", "01 FF*4095"}) << "00 00 20 00"
                          << "00 0F FF 02" << QStringList({"packet 1/2 4096", "packet 2/2 1"});
    QTest::newRow("8191") << 8191 << QStringList({"01*4096", "01*4095 FF"}) << "00 00 20 00"
                          << "00 00 20 FE" << QStringList({"packet 1/2 4096", "packet 2/2 4095"});
    QTest::newRow("8192") << 8192 << QStringList({"01*4096", "01*4096"}) << "00 00 20 00"
                          << "00 00 20 00" << QStringList({"packet 1/2 4096", "packet 2/2 4096"});
    QTest::newRow("8193") << 8193 << QStringList({"01*4096", "01*4096", "01 FF*4095"})
                          << "00 00 30 00"
                          << "00 10 0F 02"
                          << QStringList({"packet 1/3 4096", "packet 2/3 4096", "packet 3/3 1"});
}

void TestDownloadAgentWrite::imageIsPaddedToPackets()
{
    QFETCH(int, length);
    QFETCH(QStringList, packets);
    QFETCH(QString, paddedLength);
    QFETCH(QString, sum);
    QFETCH(QStringList, logged);
    Dialogue dialogue = announcement(paddedLength);
    for (const QString &packet : qAsConst(packets))
        dialogue.host(packet).chip("5A 69", 300);
    downloadfile.app_bin = QByteArray(length, 1);
    Link link(dialogue.chip("5A").host(sum).chip("5A", 900));
    QList<uint32_t> writes; // one each packet
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte_buffer, this,
            [&writes](uint8_t *, uint32_t count) { writes << count; });

    _hdl_image_t record = image(static_cast<uint32_t>(length));
    QVERIFY(link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(writes, QVector<uint32_t>(packets.size(), 4096).toList());

    QStringList expected = {"DA Download CMD, Check Range success",
                            "DA Download CMD, Check Range success"};
    for (const QString &packet : qAsConst(logged))
        expected << "hdl_da_download (gnss_demo.bin) " + packet << "hdl_wirte_packet, response=0x5A"
                 << "hdl_wirte_packet, response=0x69"
                 << "hdl_wirte_packet success";
    expected << "DA Write Image Packets success";
    QCOMPARE(tests::logTexts(trace().lines()), expected);
}

void TestDownloadAgentWrite::packetsArePausedBetween()
{
    Dialogue dialogue = announcement(word(50 * 4096));
    for (int i = 0; i < 50; ++i)
        dialogue.host("00*4096").chip("5A 69", 300);
    downloadfile.app_bin = QByteArray(50 * 4096, 0);
    Link link(dialogue.chip("5A").host("00 00 00 00").chip("5A", 900));
    _hdl_image_t record = image(50 * 4096);
    QVERIFY(link.worker.hdl_da_download(&record));
    QCOMPARE(milliseconds(), 50 * 3); // after the last one, too
}

void TestDownloadAgentWrite::imageComesFromTheFieldOfItsIndex_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("packet");
    QTest::newRow("boot loader") << 0 << "B0 FF*4095";
    QTest::newRow("partition table") << 1 << "B1 FF*4095";
    QTest::newRow("application") << 2 << "B2 FF*4095";
    QTest::newRow("configuration") << 3 << "B3 FF*4095";
}

void TestDownloadAgentWrite::imageComesFromTheFieldOfItsIndex()
{
    QFETCH(int, index);
    QFETCH(QString, packet);
    downloadfile = {"\xB0", "\xB1", "\xB2", "\xB3"};
    Link link(announcement("00 00 10 00").host(packet).chip("5A 96", 300));
    _hdl_image_t record = image(1, static_cast<uint8_t>(index));
    QVERIFY(!link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestDownloadAgentWrite::imageThatIsNotThereIsRefused_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("held"); // bytes, by each of the package's fields
    QTest::addColumn<uint32_t>("length");
    QTest::newRow("no such field") << 4 << 5000 << 5000u;
    QTest::newRow("no field by far") << 255 << 5000 << 5000u;
    QTest::newRow("no such field, empty image") << 4 << 0 << 0u;
    QTest::newRow("nothing held") << 2 << 0 << 1u;
    QTest::newRow("one byte missing") << 2 << 4095 << 4096u;
    QTest::newRow("one byte missing, of several packets") << 0 << 8192 << 8193u;
    QTest::newRow("length of more bytes than a file has") << 3 << 4096 << 0x80000001u;
}

// Erased flash in its place would be reported as a success.
void TestDownloadAgentWrite::imageThatIsNotThereIsRefused()
{
    QFETCH(int, index);
    QFETCH(int, held);
    QFETCH(uint32_t, length);
    const QByteArray field(held, '\x01');
    downloadfile = {field, field, field, field};
    Link link;
    _hdl_image_t record = image(length, static_cast<uint8_t>(index));
    QVERIFY(!link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.sent(), QByteArray());
    QCOMPARE(link.chip.lineEvents(), QStringList());
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList{"hdl_da_download fail, invalid parameter"});
}

// The packet count of an empty image wraps.
void TestDownloadAgentWrite::emptyImageGoesOutErased()
{
    Link link(announcement("00 00 00 00").host("FF*4096").chip("5A 96", 300));
    _hdl_image_t record = image(0);
    QVERIFY(!link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(trace().lines().contains("hdl_da_download (gnss_demo.bin) packet 1/1048576 4096"));
}

void TestDownloadAgentWrite::imageFails_data()
{
    QTest::addColumn<QString>("stage");
    QTest::addColumn<QStringList>("logged");
    const QString range = "DA Download CMD, Check Range";
    QTest::newRow("command refused") << "command" << QStringList({range + " fail"});
    QTest::newRow("range refused") << "range" << QStringList({range + " success", range + " fail"});
    QTest::newRow("packet refused")
        << "packet"
        << QStringList({range + " success", range + " success", "hdl_wirte_packet fail"});
    QTest::newRow("not written") << "written"
                                 << QStringList({range + " success", range + " success",
                                                 "hdl_wirte_packet success",
                                                 "DA Write Image Packets fail"});
}

void TestDownloadAgentWrite::imageFails()
{
    QFETCH(QString, stage);
    QFETCH(QStringList, logged);
    Dialogue dialogue = Dialogue()
                            .host("5A")
                            .line("drain")
                            .host("B2")
                            .host("08 01 30 00")
                            .host("00 00 10 00")
                            .host("00 00 10 00");
    if (stage == "command")
        dialogue.chip("A5 00 00 0B B8");
    else if (stage == "range")
        dialogue.chip("5A A5 00 00 0B B9");
    else if (stage == "packet")
        dialogue.chip("5A 5A").host("22*4096").chip("5A 96", 300);
    else
        dialogue.chip("5A 5A").host("22*4096").chip("5A 69", 300).chip("A5 00 00 0B BA");
    downloadfile.app_bin = QByteArray(4096, 0x22);
    Link link(dialogue);
    _hdl_image_t record = image(4096);
    QVERIFY(!link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(link.chip.unansweredPolls().isEmpty());
    QCOMPARE(trace().lines().filter(QRegularExpression("success|fail")), logged);
}

void TestDownloadAgentWrite::wrongSumIsLoggedWithBoth()
{
    Link link(announcement("00 00 10 00")
                  .host("01*4096")
                  .chip("5A 69", 300)
                  .chip("5A")
                  .host("00 00 10 00")
                  .chip("A5", 900)
                  .chip("00 00 10 01"));
    downloadfile.app_bin = QByteArray(4096, 1); // read when the image is written
    _hdl_image_t record = image(4096);
    QVERIFY(!link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()).last(),
             QString("DA Download Imgae (gnss_demo.bin) CheckSum Fail, 0x00001000 != 0x00001001"));
}

void TestDownloadAgentWrite::sumOfSeveralPacketsRunsOn()
{
    Dialogue dialogue = announcement(word(5 * 4096));
    for (int i = 0; i < 5; ++i)
        dialogue.host("FF*4096").chip("5A 69", 300);
    downloadfile.app_bin = QByteArray(5 * 4096, '\xFF');
    Link link(dialogue.chip("5A").host("00 4F B0 00").chip("5A", 900)); // 5 times 0x000FF000
    _hdl_image_t record = image(5 * 4096);
    QVERIFY(link.worker.hdl_da_download(&record));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestDownloadAgentWrite::emptyListFails()
{
    Link link;
    QVERIFY(!link.worker.hdl_download(nullptr));
    QVERIFY(tests::logTexts(trace().lines()).isEmpty());
}

void TestDownloadAgentWrite::listIsWrittenInOrder()
{
    const auto written = [](const QString &byte) {
        return announcement("00 00 10 00").host(byte + " FF*4095").chip("5A 69", 300).chip("5A");
    };
    downloadfile.app_bin = "\x11";
    downloadfile.config_bin = "\x22";
    Link link(written("11")
                  .host("00 0F EF 12")
                  .chip("5A", 900)
                  .add(written("22"))
                  .host("00 0F EF 23")
                  .chip("5A", 900));
    _hdl_image_t second = {0, 0x08013000, 1, "second.bin", 3, 0, nullptr};
    _hdl_image_t first = {0, 0x08013000, 1, "first.bin", 2, 0, &second};
    QVERIFY(link.worker.hdl_download(&first));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(trace().lines().filter(QRegularExpression("^Start|^hdl_da_download s")),
             QStringList({"Start Download Image (first.bin)", "hdl_da_download success",
                          "Start Download Image (second.bin)", "hdl_da_download success"}));
}

void TestDownloadAgentWrite::failureInTheSecondImageStopsTheList()
{
    downloadfile.app_bin = "\x11";
    downloadfile.config_bin = "\x22";
    Link link(announcement("00 00 10 00")
                  .host("11 FF*4095")
                  .chip("5A 69", 300)
                  .chip("5A")
                  .host("00 0F EF 12")
                  .chip("5A", 900)
                  .add(announcement("00 00 10 00"))
                  .host("22 FF*4095")
                  .chip("5A 96", 300));
    _hdl_image_t third = {0, 0x08013000, 1, "third.bin", 2, 0, nullptr};
    _hdl_image_t second = {0, 0x08013000, 1, "second.bin", 3, 0, &third};
    _hdl_image_t first = {0, 0x08013000, 1, "first.bin", 2, 0, &second};
    QVERIFY(!link.worker.hdl_download(&first));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()).last(), QString("hdl_da_download fail"));
    QVERIFY(trace().lines().filter("third.bin").isEmpty());
}

TESTMODE_TEST_MAIN(TestDownloadAgentWrite)
#include "test_download_agent_write.moc"
