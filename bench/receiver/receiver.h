#pragma once

#include "fault.h"
#include "receiverstate.h"

#include <QMetaType>
#include <QObject>

#include <functional>
#include <memory>

namespace bench {

// The simulated GNSS receiver on a serial line. It lives on a thread of its own
// from open() to close(); every function may be called from any thread.
class Receiver : public QObject
{
    Q_OBJECT

public:
    explicit Receiver(QObject *parent = nullptr);
    ~Receiver() override;

    // Makes a pseudo-terminal and starts the receiver, which runs its application. Returns
    // the path that a host opens; empty with `error` set when the machine gives no line.
    QString open(QString *error = nullptr);

    // The same on a terminal that is there already: the path is that terminal's. It may go and
    // come back meanwhile. Its rate is not touched, and the host's is not to be known.
    QString openDevice(const QString &device, QString *error = nullptr);
    QString path() const; // empty while closed

    // Takes the line down. Flash, settings and faults stay; another open() makes a new line.
    void close();

    // The reset line. Returns when the receiver has seen the change, so that bytes sent
    // before it meet the old state and bytes sent after it the new one.
    void setReset(bool asserted);
    void pulseReset();

    ReceiverSettings settings() const;
    void setSettings(const ReceiverSettings &settings);

    // Faults to come, in place of those before; the same seed brings the same faults.
    void setFaults(const QVector<Fault> &faults, quint32 seed = 0);
    void clearFaults();
    QVector<FaultReport> faultReports() const;

    ReceiverState state() const;
    void clearRecord(); // anomalies and dialogue; numbers of lines go on

    // 4 MiB at 0x08000000, 0xFF where nothing was written; empty when the range leaves it.
    QByteArray flash(quint32 address, int length) const;

    // All of the flash. false: `content` has another size, and nothing has changed.
    static int flashSize();
    QByteArray wholeFlash() const;
    QVector<FlashSector> flashSectors() const; // of 4 KiB each
    bool setFlash(const QByteArray &content);

    // Lines with a number above `since`, as far as they are kept.
    QVector<DialogueLine> dialogue(int since = 0) const;

signals:
    // Emitted in the receiver's thread, in the order of what happens; flashWritten() of a
    // setFlash() in the caller's.
    void phaseChanged(const QString &phase);
    void anomalyFound(const QString &text);
    void baudChanged(int baud, int hostBaud);
    void lineAdded(const bench::DialogueLine &line, const QByteArray &frame); // of the dialogue
    void imageChanged(int number, const bench::WrittenImage &image);          // begun, or complete
    void flashWritten(quint32 address, quint32 length, int image);            // image 0: setFlash()
    void faultStruck(int number, const bench::FaultReport &lastDeed); // number: from 0, in the list

private:
    QString start(QString *error, const std::function<bool(QString *)> &openLine);

    struct Parts;
    std::unique_ptr<Parts> parts;
};

} // namespace bench

Q_DECLARE_METATYPE(bench::DialogueLine)
Q_DECLARE_METATYPE(bench::FaultReport)
Q_DECLARE_METATYPE(bench::WrittenImage)
