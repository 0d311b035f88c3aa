#pragma once

#include "download_types.h"
#include "gps/firmwarepackage.h"
#include "uart_types.h"

#include <QByteArray>
#include <QString>
#include <QThread>

#include <cstdint>

class serial_thread;

// One firmware update of the receiver on one port, on a thread of its own.
// Created, started and deleted in the GUI thread; owns the transport and the
// thread that the transport lives in. Operations return true for success.
class ugrade_thread : public QThread
{
    Q_OBJECT

public:
    explicit ugrade_thread(QString port);
    // Ends the update as the end of the process does: run() gives up where nothing is written yet
    // or nobody answers, and is waited for. It may be called while run() returns.
    ~ugrade_thread() override;

    // In place of QThread's: takes the package as it is now, whole before it returns. What is
    // loaded later is not this update's, and loading may begin as soon as the caller has control
    // again.
    void start(Priority priority = InheritPriority);

    serial_thread *transport() const { return serial; }

    // boot ROM (bootrom_protocol.cpp)
    bool hdl_brom_start();
    void brom_start_task();
    void brom_write8_echo(uint8_t value);
    void brom_write16_echo(uint16_t value);
    void brom_write32_echo(uint32_t value);
    bool hdl_brom_read16(uint32_t addr, uint16_t *value);
    bool hdl_brom_read32(uint32_t addr, uint32_t *value);
    bool hdl_brom_write16(uint32_t addr, uint16_t value);
    bool hdl_brom_write32(uint32_t addr, uint32_t value);
    bool hdl_brom_disable_wdt();
    // The agents' stages 1 and 2; `printed` only goes to the log, `len` is at most the image's
    // size.
    bool hdl_brom_send_da(uint32_t printed, uint32_t addr, uint32_t len);
    bool hdl_brom_send_da1(uint32_t printed, uint32_t addr, uint32_t len);
    bool hdl_brom_jump_da(uint32_t addr);
    // 16-bit XOR of the words, low byte first.
    uint16_t hdl_compute_checksum(uint8_t *buf, uint32_t len);
    // Sum of the bytes.
    uint32_t hdl_compute_simple_checksum(uint8_t *buf, uint32_t len);

    // from reset to a running agent, and the way out (download_agent_connect.cpp)
    bool hdl_connect(const hdl_da_info_t *info, hdl_da_report_t *report);
    bool hdl_da_handshake();
    bool hdl_sync_with_da(bool flag, hdl_da_report_t *report);
    bool hdl_da_enable_wdt(uint16_t value);
    bool hdl_da_finish(bool option);
    bool hdl_disconnect(HDL_DISCONNECT_TYPE type);

    // images into the flash (download_agent_write.cpp)
    bool hdl_da_check_cmd_arg(uint32_t *error);
    bool hdl_wirte_packet(uint8_t *data, uint32_t len, uint32_t checksum);
    bool hdl_da_download(_hdl_image_t *image);
    bool hdl_download(_hdl_image_t *list);

signals:
    void signal_TransferData(QByteArray data); // never emitted

    // To the transport. Each returns when the transport has done it; pointers
    // may point into the caller's stack. A read that times out leaves them be.
    void hdl_uart_init(uint8_t *, uint8_t, uint8_t *status);
    void hdl_uart_deinit(uint8_t *, uint8_t);
    void hdl_uart_get_byte(uint8_t *byte, uint32_t timeout);
    void hdl_uart_get_byte_status(uint8_t *byte, uint32_t timeout); // nobody listens
    void hdl_uart_get_byte_buffer(uint8_t *buf, uint32_t length, uint32_t timeout);
    void hdl_uart_put_byte(uint8_t byte);
    void hdl_uart_put_byte_buffer(uint8_t *buf, uint32_t length);
    void hdl_uart_put_byte_complete(uint8_t byte); // nobody listens
    void hdl_uart_get_data16(uint16_t *value, uint32_t timeout);
    void hdl_uart_put_data16(uint16_t value);
    void hdl_uart_get_data32(uint32_t *value, uint32_t timeout);
    void hdl_uart_put_data32(uint32_t value);
    void hdl_uart_set_baudrate(hal_uart_baudrate_t baud_rate);
    void hdl_uart_get_bytes(uint8_t *buf, uint32_t timeout);

    // To the page: the chip has answered after its reset; the update is over.
    void signals_reset_success(QString port);
    void signals_success(QString port, bool ok);

protected:
    void run() override;

private:
    struct AgentStage;

    void connectTransport();
    void shutDown();
    void takePackage();

    void rest(int milliseconds);
    bool synchroniseOnce(uint8_t *answer);
    bool exchangeSyncByte(uint8_t sent, uint8_t *answer);
    bool readStatus(const char *step, uint16_t *status);
    bool readStatusAfterTwoWords(const char *step, uint16_t *status);
    bool beginRegisterAccess(const char *step, uint8_t command, uint32_t addr, uint16_t *status);
    bool loadStage(const AgentStage &stage, uint32_t printed, uint32_t addr, uint32_t len);
    uint16_t sendStage(const AgentStage &stage, uint32_t len);

    bool openUart();
    void pulseReset();
    bool identifyChip(hdl_da_report_t *report, uint16_t *status);
    bool greetStage1(uint16_t *status);
    void switchBaudRate();
    bool checkLine(uint16_t *status);
    void readFlashId(hdl_da_report_t *report);
    bool acceptedByAgent(const char *step, uint8_t sent, uint8_t *answer);
    bool sendParameterBlock();

    bool beginImage(uint32_t address, uint32_t paddedLength, uint8_t *packet);
    bool writePackets(const _hdl_image_t &image, const QByteArray &data, uint8_t *packet,
                      uint32_t *sum);
    bool compareSum(const _hdl_image_t &image, uint32_t sum);
    uint8_t readPacketReply();
    uint32_t readRefusalCode();
    void waitWhileBusy();
    bool agreeOnResend(int *resends);

    const QByteArray *imageData(uint8_t index) const;

    QString portName;
    QThread *transportThread; // owned
    serial_thread *serial;    // owned; lives in transportThread
    file taken;               // the package of the update that runs
    const file *package;      // what the images come from: `taken` while an update runs
};
