#pragma once

#include <atomic>
#include <cstdint>

// Numbers of the dialogue with the receiver's boot ROM, and those that the
// agents share with it. Time-outs are in polls of about a millisecond.
namespace bootrom {

// The boot ROM answers a sync byte at once or not at all.
constexpr uint32_t kSyncPolls = 5;

// Longest that the chip takes for an echo, a status, a value or a checksum.
constexpr uint32_t kReplyPolls = 3000;

// How long one attempt repeats the first sync byte, and what lies between two tries.
constexpr int kFirstByteMilliseconds = 5000;
constexpr int kEventMilliseconds = 100;

// The pause after a wrong answer, and how many attempts follow the first.
constexpr int kRetryMilliseconds = 2000;
constexpr int kRestSliceMilliseconds = 100; // how soon the pause ends when the process does
constexpr int kRetries = 3;

// Pause between two first bytes of the alternative sender.
constexpr int kTaskMilliseconds = 50;

// Each is answered by its complement.
constexpr uint8_t kSyncBytes[] = {0xA0, 0x0A, 0x50, 0x05};

// A status from here on is a failure.
constexpr uint16_t kFirstFailure = 0x1000;

// What a status holds before the chip has said anything: a failure.
constexpr uint16_t kNoStatus = 0xFFFF;

enum Command : uint8_t {
    ReadRegister16 = 0xD0,  // address, count; status, value, status
    ReadRegister32 = 0xD1,  // address, count; status, value, status
    WriteRegister16 = 0xD2, // address, count; status; value; status
    WriteRegister32 = 0xD4, // address, count; status; value; status
    Jump = 0xD5,            // address; status
    LoadStage2 = 0xD7,      // address, length, 0; status; image; checksum, status
    Identify = 0xD8,        // answers two words and a status
    LoadStage1 = 0xD9,      // address, length, 0, 0; status; image; checksum, status
};

// Registers are read and written one at a time.
constexpr uint32_t kOneRegister = 1;

constexpr uint32_t kChipRegister = 0x80000000;
constexpr uint32_t kVersionRegister = 0x80000004;
constexpr uint32_t kHardwareCodeRegister = 0x80000008;
constexpr uint32_t kHardwareSubcodeRegister = 0x8000000C;

// Without this the chip resets itself in the middle of the download.
constexpr uint32_t kWatchdogRegister = 0xA2080000;
constexpr uint16_t kWatchdogOff = 0x0010;

// Where both agents are loaded and started; the other address is only logged.
constexpr uint32_t kAgentAddress = 0x04204000;
constexpr uint32_t kAuxiliaryAddress = 0x00100000;

// An agent goes out in blocks of this many bytes, none of them acknowledged.
constexpr uint32_t kBlockBytes = 1024;

} // namespace bootrom

// Set when the chip has answered the first sync byte: ends brom_start_task().
extern std::atomic<uint8_t> g_brom_task_stop;
