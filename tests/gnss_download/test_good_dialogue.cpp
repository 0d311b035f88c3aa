#include "link.h"

#include "tests/support/unittest.h"

#include <QSignalSpy>

using tests::Dialogue;
using tests::Link;

// A whole good update against the dialogue that is written out in good_dialogue.txt.
class TestGoodDialogue : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();

    void bytesGoAsWrittenOut();
    void imagesAreLoggedInOrder();
    void failureInTheSecondImageLeavesTheOthers();
    void failedEndDoesNotSpoilTheUpdate();
    void refusedConnectionIsLoggedAndEnded();
    void refusedGreetingGoesOnToTheDownload();
    void emptyPackageIsAnnouncedAllTheSame();
    void twoWorkersInARow();
    void answersHoldNoFlowControlBytes();
};

namespace {

Dialogue goodDialogue()
{
    return Dialogue::read(tests::fixture("good_dialogue.txt"));
}

void fillPackage()
{
    downloadfile.bootloader_bin = QByteArray("\xB0");
    downloadfile.partition_bin = QByteArray(4096, '\x50');
    downloadfile.app_bin = QByteArray(4096, '\xA0') + '\xA1';
    downloadfile.config_bin = QByteArray("\xC0\xC1\xC2");
}

// Runs the worker to its end; the result that it reported, or null.
QVariantList update(Link *link)
{
    QSignalSpy results(&link->worker, &ugrade_thread::signals_success);
    link->worker.start(QThread::TimeCriticalPriority);
    if (!link->worker.wait(60000) || results.size() != 1)
        return {};
    return results.first();
}

} // namespace

void TestGoodDialogue::init()
{
    UnitTest::init();
    fillPackage();
}

void TestGoodDialogue::bytesGoAsWrittenOut()
{
    Link link(goodDialogue());
    QSignalSpy reset(&link.worker, &ugrade_thread::signals_reset_success);
    QSignalSpy transferred(&link.worker, &ugrade_thread::signal_TransferData);
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", true}));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(link.chip.unansweredPolls().isEmpty());
    QCOMPARE(reset.size(), 1);
    QCOMPARE(reset.first(), QVariantList({"/dev/ttyS4"}));
    QVERIFY(transferred.isEmpty());
}

void TestGoodDialogue::imagesAreLoggedInOrder()
{
    Link link(goodDialogue());
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", true}));
    const QStringList texts = tests::logTexts(trace().lines());
    QCOMPARE(texts.filter(QRegularExpression(
                 "^Start|hdl_connect s|hdl_da_download s|hdl_download|hdl_disconnect")),
             QStringList({"hdl_connect success", "Start Download Image (bootloader.bin)",
                          "hdl_da_download success", "Start Download Image (partition_table.bin)",
                          "hdl_da_download success", "Start Download Image (gnss_demo.bin)",
                          "hdl_da_download success", "Start Download Image (gnss_config.bin)",
                          "hdl_da_download success", "hdl_download success",
                          "hdl_disconnect disconnect_type=0"}));
    QVERIFY(texts.contains("hdl_brom_send_da 0x00100000 0x04204000 2458"));
    QVERIFY(texts.contains("hdl_brom_send_da 0x00100000 0x04204000 39148"));
    QVERIFY(texts.contains("hdl_da_download (gnss_demo.bin) packet 2/2 1"));
    QVERIFY(texts.filter("fail").isEmpty());
}

void TestGoodDialogue::failureInTheSecondImageLeavesTheOthers()
{
    const QString step = "partition_table.bin packet 1";
    Link link(goodDialogue()
                  .before(step)
                  .host("50*4096")
                  .chip("5A 96", 300)
                  .host("A5")
                  .chip("5A")
                  .host("D9 00")
                  .chip("5A")
                  .line("close"));
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", false}));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(trace().lines().contains("hdl_download fail"));
}

void TestGoodDialogue::failedEndDoesNotSpoilTheUpdate()
{
    Link link(goodDialogue());
    link.chip.goSilentAt("disconnect");
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", true}));
    QCOMPARE(link.chip.lineEvents().last(), QString("close"));
}

void TestGoodDialogue::refusedConnectionIsLoggedAndEnded()
{
    Link link(
        goodDialogue().before("jump status").chip("10 00").host("A5").host("D9 00").line("close"));
    QSignalSpy reset(&link.worker, &ugrade_thread::signals_reset_success);
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", false}));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(reset.size(), 1);
    const QStringList texts = tests::logTexts(trace().lines());
    QCOMPARE(texts.mid(texts.size() - 2),
             QStringList({"hdl_connect fail", "hdl_disconnect disconnect_type=0"}));
}

void TestGoodDialogue::refusedGreetingGoesOnToTheDownload()
{
    // The result of the load before it is what the connection returns.
    Link link(goodDialogue()
                  .before("greeting 1 status")
                  .chip("10 00")
                  .host("5A")
                  .line("drain")
                  .host("B2")
                  .host("08 03 00 00")
                  .host("00 00 10 00")
                  .host("00 00 10 00")
                  .chip("A5 00 00 0B B8")
                  .host("A5")
                  .chip("5A")
                  .host("D9 00")
                  .chip("5A")
                  .line("close"));
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", false}));
    QCOMPARE(link.chip.verdict(), QString());
    const QStringList texts = tests::logTexts(trace().lines());
    QCOMPARE(texts.mid(texts.indexOf("hdl_brom_read16 fail")),
             QStringList({"hdl_brom_read16 fail", "hdl_connect success",
                          "Start Download Image (bootloader.bin)",
                          "DA Download CMD, Check Range fail", "hdl_da_download fail",
                          "hdl_download fail", "hdl_disconnect disconnect_type=0"}));
}

void TestGoodDialogue::emptyPackageIsAnnouncedAllTheSame()
{
    downloadfile = file();
    // Nobody looks at the images before the receiver does.
    Link link(goodDialogue()
                  .before("bootloader.bin")
                  .host("5A")
                  .line("drain")
                  .host("B2")
                  .host("08 03 00 00")
                  .host("00 00 00 00")
                  .host("00 00 10 00")
                  .chip("5A A5 00 00 0B C2")
                  .host("A5")
                  .chip("5A")
                  .host("D9 00")
                  .chip("5A")
                  .line("close"));
    QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", false}));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(trace().lines().contains("hdl_connect success"));
    QVERIFY(trace().lines().contains("hdl_download fail"));
}

void TestGoodDialogue::twoWorkersInARow()
{
    for (int i = 0; i < 2; ++i) {
        fillPackage();
        Link link(goodDialogue());
        QCOMPARE(update(&link), QVariantList({"/dev/ttyS4", true}));
        QCOMPARE(link.chip.verdict(), QString());
    }
}

void TestGoodDialogue::answersHoldNoFlowControlBytes()
{
    // With software flow control the host would never see them.
    const Dialogue dialogue = goodDialogue();
    for (const tests::Frame &frame : dialogue.frames()) {
        if (frame.who == tests::Frame::Chip)
            QVERIFY2(!frame.bytes.contains('\x11') && !frame.bytes.contains('\x13'),
                     qPrintable(frame.step));
    }
}

TESTMODE_TEST_MAIN(TestGoodDialogue)
#include "test_good_dialogue.moc"
