#pragma once

#include "gnss_download/download_types.h"
#include "gps/firmwarepackage.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>

namespace benchmark {

// The floor of an update: the same dialogue with the same pauses and polls, on a bare descriptor,
// in the caller's thread, without an event loop, signal or trace. It only knows the good dialogue.
class RawHost
{
public:
    // `port`: the receiver's line. `setReset` drives its reset line.
    RawHost(const QString &port, std::function<void(bool)> setReset);
    ~RawHost();
    RawHost(const RawHost &) = delete;
    RawHost &operator=(const RawHost &) = delete;

    // Ends with false at the first answer that is not the good one.
    bool update(const file &package);

    // What no host of this dialogue can do without before, between and after the images: the
    // pauses, one poll for each answer, and the bytes of both directions at ten bits each.
    double fixedMilliseconds() const;

private:
    void setRate(unsigned baud);
    void write(const void *bytes, size_t count);
    bool read(void *bytes, size_t count, uint32_t polls); // false: nothing was taken
    void drain();

    template <typename Word>
    void put(Word word);
    template <typename Word>
    Word get(uint32_t polls = 3000);
    template <typename Word>
    bool echoed(Word word);
    bool good(); // a status
    bool goodAfterTwoWords();

    bool synchronise();
    bool registerRead(uint32_t address);
    bool identify();
    bool watchdogOff();
    bool load(uint8_t command, const uint8_t *program, uint32_t length, int zeroWords);
    bool greet();
    bool checkLine();
    bool handshake();
    bool agree();
    bool image(uint32_t address, const QByteArray &data);
    bool end();

    void pause(int milliseconds);

    int descriptor;
    bool packets = false; // what is written belongs to an image
    int fixedWaits = 0;   // milliseconds
    qint64 fixedBytes = 0;
    std::function<void(bool)> setReset;
};

} // namespace benchmark
