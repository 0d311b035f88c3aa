#include "receiver.h"

#include "chip.h"
#include "terminal.h"

#include <QThread>

namespace bench {

struct Receiver::Parts
{
    chip::Terminal line;
    chip::Chip chip{line};
    std::unique_ptr<QThread> thread; // null while closed
    QMutex opening;                  // open() and close() of several threads
    chip::Guarded<QString> path;
};

Receiver::Receiver(QObject *parent) : QObject(parent), parts(std::make_unique<Parts>())
{
    qRegisterMetaType<DialogueLine>();
    qRegisterMetaType<FaultReport>();
    qRegisterMetaType<WrittenImage>();
    chip::Chip &chip = parts->chip;
    chip.logbook.onPhase = [this](const QString &phase) { emit phaseChanged(phase); };
    chip.logbook.onAnomaly = [this](const QString &text) { emit anomalyFound(text); };
    chip.logbook.onBaud = [this](int baud, int hostBaud) { emit baudChanged(baud, hostBaud); };
    chip.logbook.onImage = [this](int number, const WrittenImage &image) {
        emit imageChanged(number, image);
    };
    chip.dialogue.onLine = [this](const DialogueLine &line, const QByteArray &frame) {
        emit lineAdded(line, frame);
    };
    chip.flash.onWritten = [this](quint32 address, quint32 length, int image) {
        emit flashWritten(address, length, image);
    };
    chip.faults.onStruck = [this](int number, const FaultReport &lastDeed) {
        emit faultStruck(number, lastDeed);
    };
}

Receiver::~Receiver()
{
    close();
}

QString Receiver::open(QString *error)
{
    return start(error, [this](QString *why) { return parts->line.open(why); });
}

QString Receiver::openDevice(const QString &device, QString *error)
{
    return start(error,
                 [this, device](QString *why) { return parts->line.openDevice(device, why); });
}

QString Receiver::start(QString *error, const std::function<bool(QString *)> &openLine)
{
    const QMutexLocker lock(&parts->opening);
    if (parts->thread)
        return path();
    chip::Chip &chip = parts->chip;
    if (!openLine(error))
        return QString();
    parts->path.set(parts->line.path());
    chip.pins.listen();
    chip.logbook.open();
    parts->thread.reset(QThread::create([&chip] { chip.run(); }));
    parts->thread->setObjectName(QStringLiteral("receiver"));
    parts->thread->start();
    chip.pins.awaitListener();
    return path();
}

QString Receiver::path() const
{
    return parts->path.get();
}

void Receiver::close()
{
    const QMutexLocker lock(&parts->opening);
    if (!parts->thread)
        return;
    parts->chip.pins.stop();
    parts->thread->wait();
    parts->thread.reset();
    parts->line.close();
    parts->path.set(QString());
}

void Receiver::setReset(bool asserted)
{
    parts->chip.pins.setReset(asserted);
}

void Receiver::pulseReset()
{
    setReset(true);
    setReset(false);
}

ReceiverSettings Receiver::settings() const
{
    return parts->chip.settings.get();
}

void Receiver::setSettings(const ReceiverSettings &settings)
{
    parts->chip.settings.set(settings);
    parts->chip.pins.setPowered(settings.powered);
}

void Receiver::setFaults(const QVector<Fault> &faults, quint32 seed)
{
    parts->chip.faults.set(faults, seed);
}

void Receiver::clearFaults()
{
    parts->chip.faults.set({}, 0);
}

QVector<FaultReport> Receiver::faultReports() const
{
    return parts->chip.faults.reports();
}

ReceiverState Receiver::state() const
{
    return parts->chip.logbook.state();
}

void Receiver::clearRecord()
{
    parts->chip.logbook.clearAnomalies();
    parts->chip.dialogue.clear();
}

QByteArray Receiver::flash(quint32 address, int length) const
{
    return parts->chip.flash.read(address, length);
}

int Receiver::flashSize()
{
    return static_cast<int>(chip::Flash::kSize);
}

QByteArray Receiver::wholeFlash() const
{
    return flash(chip::Flash::kBase, flashSize());
}

QVector<FlashSector> Receiver::flashSectors() const
{
    return parts->chip.flash.sectors();
}

bool Receiver::setFlash(const QByteArray &content)
{
    return parts->chip.flash.load(content);
}

QVector<DialogueLine> Receiver::dialogue(int since) const
{
    return parts->chip.dialogue.lines(since);
}

} // namespace bench
