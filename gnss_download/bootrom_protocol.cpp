#include "bootrom_protocol.h"

#include "agent_images.h"
#include "protocol_step.h"
#include "tools/common.h"
#include "tools/debugtrace.h"
#include "ugrade_thread.h"

#include <QCoreApplication>
#include <QElapsedTimer>

std::atomic<uint8_t> g_brom_task_stop{0};

// How one agent stage is loaded.
struct ugrade_thread::AgentStage
{
    const char *name;
    const char *checksumName;
    uint8_t command;
    int zeroWords; // after address and length; the first is the length of a signature
    uint8_t *image;
};

bool ugrade_thread::hdl_brom_start()
{
    uint8_t answer = 0; // kept from one attempt to the next
    for (int retries = bootrom::kRetries;; --retries) {
        if (synchroniseOnce(&answer))
            return true;
        rest(bootrom::kRetryMilliseconds);
        if (retries == 0 || isInterruptionRequested())
            return false;
    }
}

// Ends early when the process does.
void ugrade_thread::rest(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    for (qint64 left = milliseconds; left > 0 && !isInterruptionRequested();
         left = milliseconds - clock.elapsed())
        Delay_MSec(static_cast<int>(qMin<qint64>(left, bootrom::kRestSliceMilliseconds)));
}

bool ugrade_thread::synchroniseOnce(uint8_t *answer)
{
    const uint8_t expected = static_cast<uint8_t>(~bootrom::kSyncBytes[0]);
    g_brom_task_stop = 0;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < bootrom::kFirstByteMilliseconds && !isInterruptionRequested()) {
        emit hdl_uart_put_byte(bootrom::kSyncBytes[0]);
        emit hdl_uart_get_byte(answer, bootrom::kSyncPolls);
        if (*answer == expected) {
            g_brom_task_stop = 1;
            Log("hdl_brom_start 0x%02X<->0x%02X", bootrom::kSyncBytes[0], expected);
            break;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, bootrom::kEventMilliseconds);
    }

    // Kept: goes on also when nothing has answered.
    for (int i = 1; i < 4; ++i) {
        if (!exchangeSyncByte(bootrom::kSyncBytes[i], answer))
            return false;
    }
    Log("hdl_brom_start pass");
    return true;
}

bool ugrade_thread::exchangeSyncByte(uint8_t sent, uint8_t *answer)
{
    const uint8_t expected = static_cast<uint8_t>(~sent);
    emit hdl_uart_put_byte(sent);
    emit hdl_uart_get_byte(answer, bootrom::kSyncPolls);
    if (*answer != expected) {
        Log("hdl_brom_start 0x%02X ->(error) 0x%02X, retry", sent, *answer);
        return false;
    }
    Log("hdl_brom_start 0x%02X<->0x%02X", sent, expected);
    return true;
}

void ugrade_thread::brom_start_task()
{
    while (g_brom_task_stop == 0 && !isInterruptionRequested()) {
        emit hdl_uart_put_byte(bootrom::kSyncBytes[0]);
        Log("brom_start_task put_char 0xA0");
        Delay_MSec(bootrom::kTaskMilliseconds);
    }
}

// Kept in all three: the echo is logged and never compared.

void ugrade_thread::brom_write8_echo(uint8_t value)
{
    uint8_t echo = 0xFF;
    Log("brom_write8_echo 0x%02X", value);
    emit hdl_uart_put_byte(value);
    emit hdl_uart_get_byte(&echo, bootrom::kReplyPolls);
    Log("brom_write8_echo 0x%02X - 0x%02X", value, echo);
}

void ugrade_thread::brom_write16_echo(uint16_t value)
{
    uint16_t echo = 0xFFFF;
    Log("brom_write16_echo 0x%04X", value);
    emit hdl_uart_put_data16(value);
    emit hdl_uart_get_data16(&echo, bootrom::kReplyPolls);
    Log("brom_write16_echo 0x%04X - 0x%04X", value, echo);
}

void ugrade_thread::brom_write32_echo(uint32_t value)
{
    uint32_t echo = 0xFFFFFFFF;
    Log("brom_write32_echo 0x%08X", value);
    emit hdl_uart_put_data32(value);
    emit hdl_uart_get_data32(&echo, bootrom::kReplyPolls);
    Log("brom_write32_echo 0x%08X - 0x%08X", value, echo);
}

bool ugrade_thread::readStatus(const char *step, uint16_t *status)
{
    emit hdl_uart_get_data16(status, bootrom::kReplyPolls);
    return stepSucceeded(step, *status < bootrom::kFirstFailure);
}

bool ugrade_thread::beginRegisterAccess(const char *step, uint8_t command, uint32_t addr,
                                        uint16_t *status)
{
    brom_write8_echo(command);
    brom_write32_echo(addr);
    brom_write32_echo(bootrom::kOneRegister);
    return readStatus(step, status);
}

bool ugrade_thread::hdl_brom_read16(uint32_t addr, uint16_t *value)
{
    constexpr const char *step = "hdl_brom_read16";
    uint16_t status = bootrom::kNoStatus;
    if (!beginRegisterAccess(step, bootrom::ReadRegister16, addr, &status))
        return false;
    emit hdl_uart_get_data16(value, bootrom::kReplyPolls);
    return readStatus(step, &status);
}

bool ugrade_thread::hdl_brom_read32(uint32_t addr, uint32_t *value)
{
    constexpr const char *step = "hdl_brom_read32";
    uint16_t status = bootrom::kNoStatus;
    if (!beginRegisterAccess(step, bootrom::ReadRegister32, addr, &status))
        return false;
    emit hdl_uart_get_data32(value, bootrom::kReplyPolls);
    return readStatus(step, &status);
}

bool ugrade_thread::hdl_brom_write16(uint32_t addr, uint16_t value)
{
    constexpr const char *step = "hdl_brom_write16";
    uint16_t status = bootrom::kNoStatus;
    if (!beginRegisterAccess(step, bootrom::WriteRegister16, addr, &status))
        return false;
    brom_write16_echo(value);
    return readStatus(step, &status);
}

bool ugrade_thread::hdl_brom_write32(uint32_t addr, uint32_t value)
{
    constexpr const char *step = "hdl_brom_write32";
    uint16_t status = bootrom::kNoStatus;
    if (!beginRegisterAccess(step, bootrom::WriteRegister32, addr, &status))
        return false;
    brom_write32_echo(value);
    return readStatus(step, &status);
}

bool ugrade_thread::hdl_brom_disable_wdt()
{
    return hdl_brom_write16(bootrom::kWatchdogRegister, bootrom::kWatchdogOff);
}

bool ugrade_thread::hdl_brom_send_da(uint32_t printed, uint32_t addr, uint32_t len)
{
    const AgentStage stage = {"hdl_brom_send_da", "hdl_brom_send_da, checksum", bootrom::LoadStage1,
                              2, da_array};
    return loadStage(stage, printed, addr, len);
}

bool ugrade_thread::hdl_brom_send_da1(uint32_t printed, uint32_t addr, uint32_t len)
{
    const AgentStage stage = {"hdl_brom_send_da1", "hdl_brom_send_da1, checksum",
                              bootrom::LoadStage2, 1, da_array1};
    return loadStage(stage, printed, addr, len);
}

bool ugrade_thread::loadStage(const AgentStage &stage, uint32_t printed, uint32_t addr,
                              uint32_t len)
{
    // Kept: stage 2 announces itself by stage 1's name.
    Log("hdl_brom_send_da 0x%08X 0x%08X %d", printed, addr, len);
    brom_write8_echo(stage.command);
    brom_write32_echo(addr);
    brom_write32_echo(len);
    for (int i = 0; i < stage.zeroWords; ++i)
        brom_write32_echo(0);
    uint16_t status = bootrom::kNoStatus;
    if (!readStatus(stage.name, &status))
        return false;

    const uint16_t localSum = sendStage(stage, len);

    // Without an answer the sums must differ; both bytes are the same because
    // the transport turns them round even when nothing came.
    uint16_t chipSum = localSum == 0xFFFF ? 0x0000 : 0xFFFF;
    emit hdl_uart_get_data16(&chipSum, bootrom::kReplyPolls);
    Log("%s, local_check_sum=%d brom_check_sum=%d", stage.name, localSum, chipSum);
    if (!stepSucceeded(stage.checksumName, chipSum == localSum))
        return false;
    return readStatus(stage.name, &status);
}

uint16_t ugrade_thread::sendStage(const AgentStage &stage, uint32_t len)
{
    uint16_t sum = 0;
    for (uint32_t offset = 0; offset < len;) {
        const uint32_t block = qMin(bootrom::kBlockBytes, len - offset);
        emit hdl_uart_put_byte_buffer(stage.image + offset, block);
        sum ^= hdl_compute_checksum(stage.image + offset, block);
        offset += block;
        Log("%s, %d sent %d", stage.name, block, block);
    }
    return sum;
}

bool ugrade_thread::hdl_brom_jump_da(uint32_t addr)
{
    Log("hdl_brom_jump_da 0x%08X", addr);
    brom_write8_echo(bootrom::Jump);
    brom_write32_echo(addr);
    uint16_t status = bootrom::kNoStatus;
    emit hdl_uart_get_data16(&status, bootrom::kReplyPolls);
    return status < bootrom::kFirstFailure;
}

uint16_t ugrade_thread::hdl_compute_checksum(uint8_t *buf, uint32_t len)
{
    if (buf == nullptr || len == 0) {
        Log("hdl_compute_checksum, invalid arg");
        return 0;
    }
    uint16_t sum = 0;
    for (size_t i = 1; i < len; i += 2)
        sum ^= static_cast<uint16_t>(buf[i - 1] | buf[i] << 8);
    if (len % 2 != 0)
        sum ^= buf[len - 1];
    return sum;
}

uint32_t ugrade_thread::hdl_compute_simple_checksum(uint8_t *buf, uint32_t len)
{
    if (buf == nullptr || len == 0) {
        Log("hdl_compute_simple_checksum, invalid arg");
        return 0;
    }
    uint32_t sum = 0;
    for (uint32_t i = 0; i < len; ++i)
        sum += buf[i];
    return sum;
}
