#pragma once

#include "bench/receiver/receiver.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace tests {

// A host on the receiver's line that knows the dialogue by heart, without any code of the
// plug-in's or the receiver's. Bytes are written and compared as hex: "a0 0a".
class RawHost
{
public:
    explicit RawHost(const QString &linePath, int baud = 115200);
    RawHost(const RawHost &) = delete;
    RawHost &operator=(const RawHost &) = delete;
    ~RawHost();

    void setBaud(int baud);
    void setSoftwareFlowControl();

    void put(const QByteArray &bytes);
    void putHex(const QByteArray &hexBytes);
    QByteArray get(int count, int timeoutMilliseconds = 3000); // fewer when time is up
    QByteArray getHex(int count, int timeoutMilliseconds = 3000);
    int pending() const; // bytes that wait to be read

    // Sends, then reads as many bytes as `expected` has; true when they are those. What came
    // is kept for the message of a failed check.
    bool ask(const QByteArray &sent, const QByteArray &expected);
    QByteArray lastAnswer() const { return answer; }

    // Parts of a good dialogue; false at the first answer that is another one.
    bool synchronise();
    bool identify(); // the registers, the configuration, the watchdog
    bool loadStage1(const QByteArray &program);
    bool greetStage1(); // up to the switch of the rate, exclusive
    bool switchRate(int baud = 921600);
    bool checkLine();
    bool loadStage2(const QByteArray &program);
    bool jump();
    bool handshake();
    bool learn();
    bool connectToAgent(); // all of the above
    bool announceImage(quint32 address, quint32 paddedLength);
    bool sendPacket(const QByteArray &packet); // 4096 bytes
    bool writeImage(quint32 address, const QByteArray &image);
    bool finish();

private:
    bool echoed(const QByteArray &hexBytes) { return ask(hexBytes, hexBytes); }
    bool sendProgram(const QByteArray &program);

    int descriptor = -1;
    QByteArray answer;
};

// A receiver that answers at full speed, a host on its line, and the reset pulsed or,
// for what must be set before the boot ROM runs, not yet.
struct Rig
{
    explicit Rig(bool pulsed = true);

    // Changes the settings: rig.set([](auto &settings) { settings.hwCode = 1; });
    template <typename Change>
    void set(Change change)
    {
        bench::ReceiverSettings settings = receiver.settings();
        change(settings);
        receiver.setSettings(settings);
    }

    QStringList anomalies() const { return receiver.state().anomalies; }
    QString phase() const { return receiver.state().phase; }

    bench::Receiver receiver;
    std::unique_ptr<RawHost> host;
};

// Pulses the reset line.
void pulse(bench::Receiver &receiver);

// Bytes that differ from place to place: `count` of them.
QByteArray pattern(int count, quint32 start);

// The bytes, filled up with 0xFF to whole packets.
QByteArray padded(const QByteArray &image);

} // namespace tests
