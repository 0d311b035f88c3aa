#pragma once

#include "seamline.h"

#include "gnss_download/uart_types.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>

#include <cstdint>

class ugrade_thread;

namespace tests {

// In the place of the transport, on a worker's hdl_uart_* signals: what the transport promises,
// without its thread and its terminal. Polls at which nothing can have come pass at once. Works in
// the thread that emits.
class SeamPort : public QObject
{
    Q_OBJECT

public:
    SeamPort(SeamLine *line, ugrade_thread *worker);

private:
    void open(uint8_t *, uint8_t, uint8_t *status);
    void close();
    void setBaud(hal_uart_baudrate_t rate);
    void drain();
    void send(const QByteArray &bytes);
    template <typename Word>
    void sendWord(Word value);
    void read(uint8_t *bytes, uint32_t count, uint32_t polls);

    bool waitForRoom();
    bool waitFor(short events, int milliseconds);
    void takeIn();

    SeamLine *seam;
    ugrade_thread *host;
    QByteArray pending;
    bool isOpen = false;
    bool stopped = false;   // by XOFF; any byte releases
    bool abandoned = false; // the process ends and nobody answers
};

} // namespace tests
