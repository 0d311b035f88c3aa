#include "line.h"
#include "link.h"

#include "gnss_download/serial_thread.h"
#include "tests/support/clock/clockedtest.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <memory>

using tests::Dialogue;
using tests::fillPackage;
using tests::goodDialogue;
using tests::Line;
using tests::Link;

namespace {

// Up to and with the first packet, which nobody has answered yet.
Dialogue untilAPacket()
{
    return goodDialogue().before("bootloader.bin packet 1").host("B0 FF*4095");
}

int packetsIn(const QByteArray &sent)
{
    return sent.count(QByteArray(4095, '\xFF'));
}

} // namespace

// The process ends while a worker is at its update.
class TestWorkerEnds : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void init();

    void updateThatIsWritingFinishes_data();
    void updateThatIsWritingFinishes();
    void refusalWithoutEndIsBounded();
    void refusalWithoutEndIsBoundedInTime_data();
    void refusalWithoutEndIsBoundedInTime();
    void busyWithoutEndIsBounded();
    void emptyImageIsGivenUp();
    void endOfTheApplicationWaitsForTheUpdate();

    void synchronisationIsGivenUp_data();
    void synchronisationIsGivenUp();
    void alternativeSenderEnds();
    void silentReceiverIsGivenUp();
    void stoppedLineIsGivenUp();
    void idleTransportEndsWithTheWorker();

private:
    void interruptAt(ugrade_thread *worker, int packet);
};

void TestWorkerEnds::init()
{
    ClockedTest::init();
    fillPackage();
}

// In the worker's thread, as the packet goes out.
void TestWorkerEnds::interruptAt(ugrade_thread *worker, int packet)
{
    auto count = std::make_shared<int>(0);
    connect(
        worker, &ugrade_thread::hdl_uart_put_byte_buffer, this,
        [worker, packet, count](uint8_t *, uint32_t length) {
            if (length == 4096 && ++*count == packet)
                worker->requestInterruption();
        },
        Qt::DirectConnection);
}

void TestWorkerEnds::updateThatIsWritingFinishes_data()
{
    QTest::addColumn<QString>("refusal");
    QTest::addColumn<int>("times");
    QTest::addColumn<QString>("then"); // what the receiver says before the packet comes again
    QTest::addColumn<bool>("agreed");
    QTest::newRow("nothing refused") << "" << 0 << "" << false;
    QTest::newRow("once, unlisted") << "00 00 00 07" << 1 << "" << false;
    QTest::newRow("often, unlisted") << "00 00 00 07" << 99 << "" << false;
    QTest::newRow("listed") << "00 00 0B F5" << 1 << "5A" << true;
    QTest::newRow("listed, as often as is borne") << "00 00 0B F8" << 3 << "5A" << true;
    QTest::newRow("busy") << "00 00 0B F9" << 1 << "E1 E1 E1 E0 5A" << true;
    QTest::newRow("busy for long") << "00 00 0B F9" << 1 << "E1*90 E0 5A" << true;
}

void TestWorkerEnds::updateThatIsWritingFinishes()
{
    QFETCH(QString, refusal);
    QFETCH(int, times);
    QFETCH(QString, then);
    QFETCH(bool, agreed);
    // The first packet is refused; from there on all goes well.
    Dialogue dialogue = goodDialogue().before("bootloader.bin packet 1");
    for (int i = 0; i < times; ++i) {
        dialogue.host("B0 FF*4095").chip("5A A5", 300).chip(refusal);
        if (!then.isEmpty())
            dialogue.chip(then);
        if (agreed)
            dialogue.host("69");
    }
    dialogue.add(goodDialogue().from("bootloader.bin packet 1"));
    Link link(dialogue);
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    interruptAt(&link.worker, 1);
    link.worker.start();
    QVERIFY(link.worker.wait(30000));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", true}));
}

void TestWorkerEnds::refusalWithoutEndIsBounded()
{
    Link link(goodDialogue().before("bootloader.bin packet 1"));
    link.chip.repeat(Dialogue().host("B0 FF*4095").chip("5A A5", 300).chip("00 00 00 07"));
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    interruptAt(&link.worker, 500); // nothing bounds it before
    link.worker.start();
    QVERIFY(link.worker.wait(30000));
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", false}));
    QCOMPARE(packetsIn(link.chip.sent()), 500 + 100);
    QVERIFY(link.chip.sent().endsWith(tests::bytesOf("A5 D9 00")));
}

void TestWorkerEnds::refusalWithoutEndIsBoundedInTime_data()
{
    QTest::addColumn<int>("packetTakes"); // milliseconds
    QTest::addColumn<int>("packets");     // until they took more than 5000 after the first
    QTest::newRow("at 5001") << 1667 << 1 + 3;
    QTest::newRow("not yet at 5000") << 100 << 1 + 51;
}

void TestWorkerEnds::refusalWithoutEndIsBoundedInTime()
{
    QFETCH(int, packetTakes);
    QFETCH(int, packets);
    Link link(goodDialogue().before("bootloader.bin packet 1"));
    link.chip.repeat(Dialogue().host("B0 FF*4095").chip("5A A5", 300).chip("00 00 00 07"));
    interruptAt(&link.worker, 1);
    connect(
        &link.worker, &ugrade_thread::hdl_uart_put_byte_buffer, this,
        [packetTakes](uint8_t *, uint32_t length) {
            if (length == 4096)
                QThread::msleep(static_cast<unsigned long>(packetTakes));
        },
        Qt::DirectConnection);
    link.worker.start();
    QVERIFY(link.worker.wait());
    QCOMPARE(packetsIn(link.chip.sent()), packets);
}

void TestWorkerEnds::busyWithoutEndIsBounded()
{
    Link link(untilAPacket().chip("5A A5", 300).chip("00 00 0B F9"));
    link.chip.repeat(Dialogue().chip("E1"));
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    int reads = 0;
    connect(
        &link.worker, &ugrade_thread::hdl_uart_get_byte, this,
        [&](uint8_t *byte) {
            if (*byte == 0xE1 && ++reads == 500)
                link.worker.requestInterruption();
        },
        Qt::DirectConnection);
    link.worker.start();
    QVERIFY(link.worker.wait(30000));
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", false}));
    QVERIFY2(reads >= 500 && reads <= 500 + 102, qPrintable(QString::number(reads)));
    QVERIFY(link.chip.sent().endsWith(tests::bytesOf("A5 D9 00")));
}

// A million packets of an empty image do not end within a day.
void TestWorkerEnds::emptyImageIsGivenUp()
{
    downloadfile.bootloader_bin.clear();
    Link link(goodDialogue()
                  .before("bootloader.bin")
                  .host("5A")
                  .line("drain")
                  .host("B2")
                  .host("08 03 00 00")
                  .host("00 00 00 00")
                  .host("00 00 10 00")
                  .chip("5A")
                  .chip("5A"));
    link.chip.repeat(Dialogue().host("FF*4096").chip("5A 69", 300));
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    interruptAt(&link.worker, 5);
    link.worker.start();
    QVERIFY(link.worker.wait(10000));
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", false}));
    QCOMPARE(link.chip.sent().count('\xFF'), 5 * 4096);
}

void TestWorkerEnds::endOfTheApplicationWaitsForTheUpdate()
{
    Link link(goodDialogue());
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    const QThread *transportThread = link.worker.transport()->thread();
    QTimer::singleShot(0, this, [&link] { link.worker.start(); });
    connect(
        &link.worker, &ugrade_thread::hdl_uart_set_baudrate, this, [] { QCoreApplication::quit(); },
        Qt::DirectConnection);
    QCoreApplication::exec();
    QVERIFY(link.worker.isFinished());
    QVERIFY(!transportThread->isRunning());
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", true}));
}

void TestWorkerEnds::synchronisationIsGivenUp_data()
{
    QTest::addColumn<int>("after"); // milliseconds
    QTest::newRow("while the first byte is repeated") << 500;
    QTest::newRow("in the rest after a failed attempt") << 5500;
}

// A receiver that says nothing, over a scripted chip: the worker's own waits.
void TestWorkerEnds::synchronisationIsGivenUp()
{
    QFETCH(int, after);
    Link link;
    link.chip.takesTime = true;
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    link.worker.start();
    QVERIFY(!link.worker.wait(static_cast<unsigned long>(after)));
    const int before = link.chip.sent().count('\xA0');
    link.worker.requestInterruption();
    QVERIFY(link.worker.wait());
    QVERIFY(link.chip.sent().count('\xA0') <= before + 1);
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", false}));
    QVERIFY(link.chip.sent().endsWith(tests::bytesOf("A5 D9 00")));
}

void TestWorkerEnds::alternativeSenderEnds()
{
    class Sender : public ugrade_thread
    {
    public:
        using ugrade_thread::ugrade_thread;
        void run() override { brom_start_task(); }
    } worker("/dev/ttyS4");
    const tests::ScriptedChip chip(&worker);
    worker.start();
    QTRY_VERIFY(!chip.sent().isEmpty());
    worker.requestInterruption();
    QVERIFY(worker.wait(2000));
}

void TestWorkerEnds::silentReceiverIsGivenUp()
{
    const Line line;
    auto worker = std::make_unique<ugrade_thread>(line.path());
    worker->start();
    QTRY_VERIFY(!line.quiet());
    const qint64 took = millisecondsOf([&worker] { worker.reset(); });
    QVERIFY2(took < 2000, qPrintable(QString::number(took)));
    QVERIFY(trace().lines().contains("hdl_connect fail"));
}

void TestWorkerEnds::stoppedLineIsGivenUp()
{
    Line line;
    auto worker = std::make_unique<ugrade_thread>(line.path());
    worker->start();
    QTRY_VERIFY(!line.quiet());
    line.sendFlowControl(0x13);
    QTest::qWait(500); // it stands in a write
    const qint64 took = millisecondsOf([&worker] { worker.reset(); });
    QVERIFY2(took < 2000, qPrintable(QString::number(took)));
}

void TestWorkerEnds::idleTransportEndsWithTheWorker()
{
    const Line line;
    ugrade_thread worker(line.path());
    QThread *thread = worker.transport()->thread();
    worker.start();
    QTRY_VERIFY(!line.quiet());
    QMetaObject::invokeMethod(qApp, "aboutToQuit");
    QVERIFY(worker.isFinished());
    QVERIFY(thread->isFinished());
}

TESTMODE_TEST_MAIN(TestWorkerEnds)
#include "test_worker_ends.moc"
