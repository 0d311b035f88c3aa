#include "bootrom_protocol.h"
#include "download_agent_protocol.h"
#include "protocol_step.h"
#include "serial_thread.h"
#include "tools/common.h"
#include "tools/debugtrace.h"
#include "ugrade_thread.h"

#include <QElapsedTimer>

#include <algorithm>

using bootrom::kReplyPolls;

namespace {

// Kept: a length of 0 wraps to a huge count.
uint32_t packetCountOf(const _hdl_image_t &image)
{
    return (image.length - 1) / agent::kPacketBytes + 1;
}

// Fills one packet from `offset` on; what the package does not hold goes out as erased flash.
void fillPacket(uint8_t *packet, const QByteArray &data, uint32_t offset, uint32_t wanted)
{
    std::fill(packet, packet + agent::kPacketBytes, agent::kErased);
    const auto held = static_cast<uint32_t>(data.size());
    if (offset < held)
        std::copy_n(data.cbegin() + offset, std::min(wanted, held - offset), packet);
}

// Bounds what goes on for as long as the agent wants it, from the first time on that the process
// is seen to end: by then the flash is half written, and the next round may be the last.
class LastRounds
{
public:
    // Asked once a round.
    bool areOver(bool processEnds)
    {
        if (!processEnds)
            return false;
        if (!clock.isValid())
            clock.start();
        return ++rounds > agent::kLastRounds || clock.hasExpired(agent::kLastRoundsMilliseconds);
    }

private:
    QElapsedTimer clock;
    int rounds = 0;
};

} // namespace

bool ugrade_thread::hdl_download(_hdl_image_t *list)
{
    serial->setPatienceAtEnd(agent::kWritePatienceMilliseconds);
    bool result = false;
    for (_hdl_image_t *image = list; image != nullptr; image = image->next) {
        Log("Start Download Image (%s)", image->name);
        result = stepSucceeded("hdl_da_download", hdl_da_download(image));
        if (!result)
            return false;
    }
    return result;
}

bool ugrade_thread::hdl_da_download(_hdl_image_t *image)
{
    const QByteArray *data = imageData(image->file_index);
    if (data == nullptr || static_cast<uint32_t>(data->size()) < image->length) {
        Log("hdl_da_download fail, invalid parameter");
        return false;
    }

    uint8_t packet[agent::kPacketBytes] = {};
    if (!beginImage(image->flash_addr, packetCountOf(*image) * agent::kPacketBytes, packet))
        return false;

    uint32_t sum = 0;
    if (!writePackets(*image, *data, packet, &sum))
        return false;
    uint32_t error = 0;
    if (!stepSucceeded("DA Write Image Packets", hdl_da_check_cmd_arg(&error)))
        return false;
    return compareSum(*image, sum);
}

// The package's bytes of an image; null where the index names none.
const QByteArray *ugrade_thread::imageData(uint8_t index) const
{
    const QByteArray *const images[] = {&package->bootloader_bin, &package->partition_bin,
                                        &package->app_bin, &package->config_bin};
    return index < 4 ? images[index] : nullptr;
}

bool ugrade_thread::beginImage(uint32_t address, uint32_t paddedLength, uint8_t *packet)
{
    emit hdl_uart_put_byte(agent::Proceed);
    emit hdl_uart_get_bytes(packet, kReplyPolls);

    emit hdl_uart_put_byte(agent::WriteImage);
    emit hdl_uart_put_data32(address);
    emit hdl_uart_put_data32(paddedLength);
    emit hdl_uart_put_data32(agent::kPacketBytes);

    // the command, then the range
    uint32_t error = 0;
    for (int i = 0; i < 2; ++i) {
        if (!stepSucceeded("DA Download CMD, Check Range", hdl_da_check_cmd_arg(&error)))
            return false;
    }
    return true;
}

bool ugrade_thread::writePackets(const _hdl_image_t &image, const QByteArray &data, uint8_t *packet,
                                 uint32_t *sum)
{
    const uint32_t packetCount = packetCountOf(image);
    for (uint32_t i = 0; i < packetCount; ++i) {
        const uint32_t offset = i * agent::kPacketBytes;
        const uint32_t bytes = i + 1 < packetCount ? agent::kPacketBytes : image.length - offset;
        Log("hdl_da_download (%s) packet %d/%d %d", image.name, i + 1, packetCount, bytes);

        fillPacket(packet, data, offset, bytes);
        const uint32_t packetSum = hdl_compute_simple_checksum(packet, agent::kPacketBytes);
        *sum += packetSum;
        if (!stepSucceeded("hdl_wirte_packet",
                           hdl_wirte_packet(packet, agent::kPacketBytes, packetSum)))
            return false;
        Delay_MSec(agent::kPacketMilliseconds);
        // The packets of an empty image do not end within a day: the process may.
        if (image.length == 0 && isInterruptionRequested())
            return false;
    }
    return true;
}

bool ugrade_thread::compareSum(const _hdl_image_t &image, uint32_t sum)
{
    uint8_t answer = 0;
    emit hdl_uart_put_data32(sum);
    emit hdl_uart_get_byte(&answer, agent::kSumPolls);
    if (answer == agent::Acknowledged)
        return true;

    uint32_t agentSum = 0;
    emit hdl_uart_get_data32(&agentSum, kReplyPolls);
    Log("DA Download Imgae (%s) CheckSum Fail, 0x%08X != 0x%08X", image.name, sum, agentSum);
    return false;
}

bool ugrade_thread::hdl_da_check_cmd_arg(uint32_t *error)
{
    uint8_t answer = 0;
    emit hdl_uart_get_byte(&answer, kReplyPolls);
    if (answer == agent::Acknowledged)
        return true;
    if (answer == agent::Refused)
        emit hdl_uart_get_data32(error, kReplyPolls);
    return false;
}

// `checksum` is not sent: a packet carries none of its own.
bool ugrade_thread::hdl_wirte_packet(uint8_t *data, uint32_t len, uint32_t)
{
    if (data == nullptr || len != agent::kPacketBytes) {
        Log("hdl_wirte_packet fail, invalid parameter");
        return false;
    }

    int resends = 0;
    LastRounds lastRounds;
    for (;;) {
        emit hdl_uart_put_byte_buffer(data, len);
        const uint8_t reply = readPacketReply();
        if (reply == agent::Positive)
            return true;
        if (reply != agent::Refused)
            return false;

        const uint32_t code = readRefusalCode();
        if (code == agent::kCodeBusy)
            waitWhileBusy();
        const bool counted = code >= agent::kFirstResendCode && code <= agent::kCodeBusy;
        if (counted && !agreeOnResend(&resends))
            return false;
        // Kept: any other code draws the packet again, without end; only a process that ends bounds
        // it.
        if (!counted && lastRounds.areOver(isInterruptionRequested()))
            return false;
    }
}

// The second of two bytes decides. Starts anew for each packet: an agent that
// falls silent refuses.
uint8_t ugrade_thread::readPacketReply()
{
    uint8_t reply = 0;
    for (int i = 0; i < 2; ++i) {
        emit hdl_uart_get_byte(&reply, agent::kPacketPolls);
        Log("hdl_wirte_packet, response=0x%02X", reply);
    }
    return reply;
}

uint32_t ugrade_thread::readRefusalCode()
{
    uint32_t code = 0;
    emit hdl_uart_get_data32(&code, kReplyPolls);
    Log("hdl_wirte_packet, NACK ret=%d", code);
    return code;
}

void ugrade_thread::waitWhileBusy()
{
    LastRounds lastRounds;
    uint8_t said = agent::StillBusy;
    while (said == agent::StillBusy && !lastRounds.areOver(isInterruptionRequested())) {
        said = 0; // a read that brings nothing ends the wait
        emit hdl_uart_get_byte(&said, kReplyPolls);
    }
}

bool ugrade_thread::agreeOnResend(int *resends)
{
    if (*resends == agent::kResends) {
        emit hdl_uart_put_byte(agent::Leave);
        return false;
    }
    ++*resends;
    uint8_t answer = 0;
    emit hdl_uart_get_byte(&answer, kReplyPolls);
    if (answer != agent::Acknowledged)
        return false;
    emit hdl_uart_put_byte(agent::Resend);
    return true;
}
