// The receiver's answers, whatever they are, against the host's dialogue: a whole update each time.
// Input: how many reads bring nothing, their numbers of two bytes each, then the answers.

#include "expect.h"
#include "input.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"
#include "tests/support/clock/virtualclock.h"
#include "tools/common.h"

#include <QCoreApplication>

#include <set>

using tests::Input;

namespace {

constexpr int kMostSilences = 8;

// Longer than the longest update that comes to an end with so short answers.
constexpr std::int64_t kLongestMilliseconds = 3600000;

class Worker : public ugrade_thread
{
public:
    Worker() : ugrade_thread(QStringLiteral("/dev/ttyS4")) { }
    using ugrade_thread::run;
};

// Speaks for transport and receiver.
class Answers : public QObject
{
public:
    explicit Answers(Worker *worker)
    {
        using Thread = ugrade_thread;
        constexpr auto direct = Qt::DirectConnection;
        QObject::disconnect(worker, nullptr, worker->transport(), nullptr);
        connect(
            worker, &Thread::hdl_uart_init, this,
            [](uint8_t *, uint8_t, uint8_t *status) { *status = 1; }, direct);
        connect(
            worker, &Thread::hdl_uart_get_byte, this,
            [this](uint8_t *value, uint32_t polls) { give(value, 1, polls); }, direct);
        connect(
            worker, &Thread::hdl_uart_get_data16, this,
            [this](uint16_t *value, uint32_t polls) {
                give(reinterpret_cast<uint8_t *>(value), sizeof *value, polls);
            },
            direct);
        connect(
            worker, &Thread::hdl_uart_get_data32, this,
            [this](uint32_t *value, uint32_t polls) {
                give(reinterpret_cast<uint8_t *>(value), sizeof *value, polls);
            },
            direct);
        connect(
            worker, &Thread::hdl_uart_put_byte_buffer, this,
            [this](uint8_t *bytes, uint32_t count) { take(bytes, count); }, direct);
        connect(
            worker, &Thread::signals_success, this,
            [this](const QString &, bool ok) {
                ++results;
                success = ok;
            },
            direct);
    }

    void begin(Input *answers)
    {
        input = answers;
        results = 0;
        packets = 0;
        sum = 0;
        reads = 0;
        silences.clear();
        for (int count = input->byte() % (kMostSilences + 1); count > 0; --count)
            silences.insert(input->word());
    }

    int results = 0;
    bool success = false;
    int packets = 0; // sent
    quint32 sum = 0; // of all bytes of agents and images: every one was readable

private:
    void give(uint8_t *bytes, uint32_t count, uint32_t polls)
    {
        QByteArray answer;
        if (silences.count(reads++) == 0)
            answer = input->bytes(static_cast<int>(count));
        if (answer.isEmpty())
            QThread::msleep(polls);
        std::copy(answer.begin(), answer.end(), bytes);
        EndianTOEndian(bytes, static_cast<int>(count));
    }

    void take(const uint8_t *bytes, uint32_t count)
    {
        for (uint32_t i = 0; i < count; ++i)
            sum += bytes[i];
        packets += count == 4096 ? 1 : 0;
    }

    Input *input = nullptr;
    std::set<int> silences;
    int reads = 0;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // A wait reads the time of day and looks for events without end: both at their cheapest.
    qputenv("TZ", "UTC");
    qputenv("QT_NO_GLIB", "1");
    static int none = 0;
    static QCoreApplication application(none, nullptr);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    com_set = config();
    br = QStringLiteral("921600");
    downloadfile = {"\xB0", QByteArray(4096, '\x50'), QByteArray(4096, '\xA0') + '\xA1',
                    "\xC0\xC1\xC2"};
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Worker worker; // its transport's thread keeps to the machine's clock
    static Answers answers(&worker);
    Input input(data, size);
    const tests::VirtualClock clock;
    answers.begin(&input);
    worker.run();
    EXPECT(answers.results == 1);
    EXPECT(!answers.success || answers.packets >= 5);
    EXPECT(clock.milliseconds() < kLongestMilliseconds);
    return 0;
}
