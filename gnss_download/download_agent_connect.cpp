#include "agent_images.h"
#include "bootrom_protocol.h"
#include "download_agent_protocol.h"
#include "platformservice/platformservice.h"
#include "protocol_step.h"
#include "serial_thread.h"
#include "tools/common.h"
#include "tools/debugtrace.h"
#include "ugrade_thread.h"

using bootrom::kReplyPolls;

namespace {

void logReport(const hdl_da_report_t &report)
{
    constexpr const char *line = "##################################################";
    Log("%s", line);
    Log("DA_Report HW_Code=0x%04X-0x%04X, Flash ID=0x%04X 0x%04X 0x%04X, "
        "Flash Base Addr=0x%08X, Flash Size=0x%08X",
        report.hw_code, report.hw_subcode, report.flash_id[0], report.flash_id[1],
        report.flash_id[2], report.flash_base_addr, report.flash_size);
    Log("%s", line);
}

} // namespace

// Kept: a refused status returns the last stored result, so that after a good sync or a good
// stage 1 the worker goes on as if connected.
bool ugrade_thread::hdl_connect(const hdl_da_info_t *info, hdl_da_report_t *report)
{
    if (info == nullptr || report == nullptr) {
        Log("hdl_connect fail, invalid parameter");
        return false;
    }
    if (!openUart())
        return false;

    // boot ROM; a failed sync is noticed at the next status
    DBG << "fffffffffff11111111111111";
    pulseReset();
    DBG << "fffffffffff11111111111111";
    bool result = hdl_brom_start();
    if (result)
        emit signals_reset_success(portName);
    uint16_t status = bootrom::kNoStatus;
    if (!identifyChip(report, &status))
        return result;
    // Kept: the watchdog reports under the label of the step after it.
    result = hdl_brom_disable_wdt();
    if (!stepSucceeded("hdl_brom_send_da", result))
        return result;

    // stage 1, at the opening rate and then at the download's
    result = hdl_brom_send_da(info->aux_addr, info->da_addr, info->da_len);
    if (!stepSucceeded("hdl_brom_send_da", result))
        return result;
    serial->setPatienceAtEnd(agent::kPatienceMilliseconds);
    if (!greetStage1(&status))
        return result;
    switchBaudRate();
    if (!checkLine(&status))
        return result;

    // stage 2
    result = hdl_brom_send_da1(info->aux_addr, info->da_addr, sizeof da_array1);
    if (!stepSucceeded("hdl_brom_send_da", result))
        return result;
    result = hdl_brom_jump_da(info->da_addr);
    if (!stepSucceeded("hdl_brom_jump_da", result))
        return result;
    result = hdl_sync_with_da(false, report);
    logReport(*report);
    return result;
}

bool ugrade_thread::openUart()
{
    uint8_t opened = 0;
    emit hdl_uart_init(nullptr, 0, &opened);
    return opened != 0;
}

void ugrade_thread::pulseReset()
{
    platform::PlatformService::instance()->setGPSResetGPIO(true);
    QThread::msleep(agent::kResetMilliseconds);
    platform::PlatformService::instance()->setGPSResetGPIO(false);
}

bool ugrade_thread::identifyChip(hdl_da_report_t *report, uint16_t *status)
{
    uint16_t chip = 0;
    uint16_t hardwareCode = 0;
    uint16_t hardwareSubcode = 0;
    uint16_t version = 0;
    hdl_brom_read16(bootrom::kChipRegister, &chip);
    hdl_brom_read16(bootrom::kHardwareCodeRegister, &hardwareCode);
    hdl_brom_read16(bootrom::kHardwareSubcodeRegister, &hardwareSubcode);
    hdl_brom_read16(bootrom::kChipRegister, &chip);
    hdl_brom_read16(bootrom::kVersionRegister, &version);

    brom_write8_echo(bootrom::Identify);
    if (!readStatusAfterTwoWords("hdl_brom_read16", status))
        return false;

    Log("hdl_connect, hw_code 0x%04X 0x%04X", hardwareCode, hardwareSubcode);
    report->hw_code = hardwareCode;
    report->hw_subcode = hardwareSubcode;
    return true;
}

bool ugrade_thread::readStatusAfterTwoWords(const char *step, uint16_t *status)
{
    uint16_t ignored = 0;
    emit hdl_uart_get_data16(&ignored, kReplyPolls);
    emit hdl_uart_get_data16(&ignored, kReplyPolls);
    return readStatus(step, status);
}

bool ugrade_thread::greetStage1(uint16_t *status)
{
    // Kept: the agent's statuses report under a register's label.
    constexpr const char *step = "hdl_brom_read16";
    brom_write8_echo(agent::Proceed);
    if (!readStatus(step, status))
        return false;
    brom_write16_echo(agent::kGreeting);
    if (!readStatus(step, status))
        return false;
    brom_write8_echo(agent::Proceed);
    if (!readStatus(step, status))
        return false;
    brom_write16_echo(agent::kBaudSwitch);
    return true;
}

void ugrade_thread::switchBaudRate()
{
    Delay_MSec(agent::kBaudSwitchMilliseconds);
    emit hdl_uart_set_baudrate(static_cast<hal_uart_baudrate_t>(br.toInt()));
    Delay_MSec(agent::kBaudSwitchMilliseconds);
}

bool ugrade_thread::checkLine(uint16_t *status)
{
    constexpr const char *step = "===========================";
    for (const uint8_t byte : agent::kLineCheck)
        brom_write8_echo(byte);
    if (!readStatus(step, status))
        return false;

    emit hdl_uart_put_byte(agent::Proceed);
    if (!readStatus(step, status))
        return false;
    emit hdl_uart_put_byte(agent::Proceed);
    if (!readStatusAfterTwoWords(step, status))
        return false;
    emit hdl_uart_put_byte(agent::Proceed);
    return readStatusAfterTwoWords(step, status);
}

bool ugrade_thread::hdl_da_handshake()
{
    Log("hdl_da_handshake start");
    uint8_t said = 0;
    for (const uint8_t expected : agent::kHandshake) {
        emit hdl_uart_get_byte(&said, kReplyPolls);
        if (said != expected)
            return false;
        emit hdl_uart_put_byte(static_cast<uint8_t>(~expected));
    }
    emit hdl_uart_get_byte(&said, kReplyPolls);
    return said == agent::Acknowledged;
}

bool ugrade_thread::hdl_sync_with_da(bool flag, hdl_da_report_t *report)
{
    if (!stepSucceeded("hdl_da_handshake", hdl_da_handshake()))
        return false;

    uint8_t answer = 0;
    if (!acceptedByAgent("Init_logging", flag ? 1 : 0, &answer))
        return false;
    if (!acceptedByAgent("DA Disable Long Press Power Key", 0, &answer))
        return false;
    readFlashId(report);
    return sendParameterBlock();
}

bool ugrade_thread::acceptedByAgent(const char *step, uint8_t sent, uint8_t *answer)
{
    emit hdl_uart_put_byte(sent);
    emit hdl_uart_get_byte(answer, kReplyPolls);
    return stepSucceeded(step, *answer == agent::Positive);
}

void ugrade_thread::readFlashId(hdl_da_report_t *report)
{
    emit hdl_uart_put_byte(agent::Proceed);
    for (uint16_t &word : report->flash_id)
        emit hdl_uart_get_data16(&word, kReplyPolls);
    Log("DA Flash ID: 0x%04X 0x%04X 0x%04X", report->flash_id[0], report->flash_id[1],
        report->flash_id[2]);
}

bool ugrade_thread::sendParameterBlock()
{
    brom_write8_echo(agent::SetParameters);
    emit hdl_uart_put_byte_buffer(unknow_array, sizeof unknow_array);
    uint16_t ignoredWord = 0;
    uint16_t status = bootrom::kNoStatus;
    uint8_t ignoredByte = 0;
    emit hdl_uart_get_data16(&ignoredWord, kReplyPolls);
    emit hdl_uart_get_data16(&status, kReplyPolls);
    emit hdl_uart_get_byte(&ignoredByte, kReplyPolls);
    return stepSucceeded("unknow_array", status < bootrom::kFirstFailure);
}

bool ugrade_thread::hdl_disconnect(HDL_DISCONNECT_TYPE type)
{
    serial->setPatienceAtEnd(agent::kPatienceMilliseconds);
    uint8_t ignored = 0;
    emit hdl_uart_put_byte(agent::Leave);
    emit hdl_uart_get_byte(&ignored, kReplyPolls);

    Log("hdl_disconnect disconnect_type=%d", type);
    const bool result = type == HDL_DISCONNECT_WATCHDOG
        ? hdl_da_enable_wdt(agent::kWatchdogArgument)
        : hdl_da_finish(type == HDL_DISCONNECT_FINISH_WITH_OPTION);
    emit hdl_uart_deinit(nullptr, 0);
    return result;
}

bool ugrade_thread::hdl_da_enable_wdt(uint16_t value)
{
    uint8_t answer = 0;
    emit hdl_uart_put_byte(agent::ArmWatchdog);
    emit hdl_uart_put_data16(value);
    emit hdl_uart_get_byte(&answer, kReplyPolls);
    return answer == agent::Acknowledged;
}

bool ugrade_thread::hdl_da_finish(bool option)
{
    uint8_t answer = 0;
    emit hdl_uart_put_byte(agent::Finish);
    emit hdl_uart_put_byte(option ? 1 : 0);
    emit hdl_uart_get_byte(&answer, kReplyPolls);
    return answer == agent::Acknowledged;
}
