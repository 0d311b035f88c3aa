// A host's bytes against the simulated receiver. Input: settings, the longest piece that comes at
// once, up to three faults, then what comes over the line.

#include "expect.h"
#include "input.h"

#include "bench/receiver/chip.h"
#include "tests/support/clock/virtualclock.h"

#include <QCoreApplication>
#include <QThread>

using bench::Fault;
using tests::Input;

namespace {

// Rests that nothing comes between. A receiver that a fault resets whenever it begins rests for
// ever: this ends it.
constexpr int kMostRests = 1000;

// Brings bytes where they are waited for, and after them the end of the receiver's thread.
class FuzzedLine : public bench::chip::Line
{
public:
    void bring(const QByteArray &fromHost, int pieceBytes, bench::chip::Pins *usedPins)
    {
        bytes = fromHost;
        piece = pieceBytes;
        pins = usedPins;
        ready = false;
        rests = 0;
    }

    Event wait(int, std::optional<bench::chip::Clock::time_point> deadline, bool forBytes) override
    {
        using namespace std::chrono;
        ready = forBytes && !bytes.isEmpty();
        if (ready)
            return Event::Bytes;
        if (!deadline || ++rests > kMostRests) {
            pins->stop();
            return Event::Woken;
        }
        const auto left = duration_cast<microseconds>(*deadline - bench::chip::Clock::now());
        QThread::usleep(static_cast<unsigned long>(std::max<qint64>(1, left.count())));
        return Event::Deadline;
    }
    QByteArray read() override
    {
        if (!ready)
            return QByteArray();
        ready = false;
        rests = 0;
        const QByteArray taken = bytes.left(piece);
        bytes.remove(0, piece);
        return taken;
    }
    int write(const QByteArray &answer) const override { return answer.size(); }
    int hostBaud() const override { return 0; }
    bool hostFlowControl() const override { return true; }

private:
    QByteArray bytes;
    int piece = 1;
    bool ready = false;
    int rests = 0;
    bench::chip::Pins *pins = nullptr;
};

// One that a monitor's client could have set; none where it could not.
std::optional<Fault> faultOf(Input *input)
{
    const QStringList kinds = Fault::kindNames();
    const QStringList steps = bench::stepNames();
    QJsonObject object{{"kind", kinds.at(input->byte() % kinds.size())}};
    const int step = input->byte();
    if (step < steps.size())
        object["step"] = steps.at(step);
    const int index = input->byte();
    if (index < 64)
        object["index"] = index;
    const int times = input->byte() % 4;
    object["times"] = times == 0 ? QJsonValue("always") : QJsonValue(times);
    const int value = input->word();
    if (value != 0)
        object["value"] = value;
    QString error;
    return Fault::fromJson(object, &error);
}

QVector<Fault> faultsOf(Input *input)
{
    QVector<Fault> faults;
    for (int count = input->byte() % 4; count > 0; --count) {
        if (const auto fault = faultOf(input))
            faults << *fault;
    }
    return faults;
}

bench::ReceiverSettings settingsOf(Input *input)
{
    const uint8_t bits = input->byte();
    bench::ReceiverSettings settings;
    settings.keepLineRate = (bits & 1) != 0;
    settings.resetOnSync = (bits & 2) != 0;
    settings.downloadRate = (bits & 4) != 0 ? 0 : 921600;
    settings.watchdogTime = (bits & 8) != 0 ? 100 : 10000;
    return settings;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static FuzzedLine line;
    static bench::chip::Chip chip(line);
    const tests::VirtualClock clock;
    Input input(data, size);
    chip.settings.set(settingsOf(&input));
    const int piece = 1 + input.byte();
    chip.faults.set(faultsOf(&input), 1);
    chip.dialogue.clear();

    chip.pins.listen();
    chip.pins.attach();
    chip.pins.setReset(true);
    chip.pins.setReset(false);
    chip.logbook.open();
    line.bring(input.rest(), piece, &chip.pins);
    chip.run();

    const bench::ReceiverState state = chip.logbook.state();
    EXPECT(bench::phaseNames().contains(state.phase));
    EXPECT(state.anomalies.size() <= 1000);
    const QVector<bench::DialogueLine> lines = chip.dialogue.lines(0);
    for (const bench::DialogueLine &spoken : lines)
        EXPECT(!spoken.text().isEmpty());
    const QVector<bench::FaultReport> reports = chip.faults.reports();
    for (const bench::FaultReport &report : reports)
        EXPECT(report.fault.times == 0 || report.done <= report.fault.times);
    return 0;
}
