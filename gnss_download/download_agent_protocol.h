#pragma once

#include <cstdint>

// Numbers of the dialogue with the download agents. Statuses and the usual
// time-out are the boot ROM's (bootrom_protocol.h); time-outs are in polls of
// about a millisecond.
namespace agent {

enum Reply : uint8_t {
    Acknowledged = 0x5A,
    Positive = 0x69, // in the sync, and for a packet that was taken
    Refused = 0xA5,  // a 32-bit code follows
    RefusedForGood = 0x96,
    StillBusy = 0xE1, // repeated after kCodeBusy
};

enum Command : uint8_t {
    Proceed = 0x5A,       // each step of the bring-up, and before an image
    Resend = 0x69,        // before a packet goes out again
    Leave = 0xA5,         // a packet, which does not go out again; the connection, before its end
    SetParameters = 0x24, // the parameter block follows
    WriteImage = 0xB2,    // address, padded length, packet size
    Finish = 0xD9,        // option; answers Acknowledged
    ArmWatchdog = 0xDB,   // 16-bit argument; answers Acknowledged
};

// The stage-1 agent is greeted with these between its statuses.
constexpr uint16_t kGreeting = 0x5A00;
constexpr uint16_t kBaudSwitch = 0x5A5A;

// Both sides settle at the new rate, before it and after it.
constexpr int kBaudSwitchMilliseconds = 100;

// Sent at the new rate, each byte echoed; only the chip can tell that the line garbles.
constexpr uint8_t kLineCheck[] = {0x69, 0x5A, 0x0F, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69,
                                  0x78, 0x87, 0x96, 0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0};

// What the started agent says; each is answered by its complement.
constexpr uint8_t kHandshake[] = {0xC0, 0x0C, 0x3F, 0xF3};

// How long the reset line is held.
constexpr unsigned long kResetMilliseconds = 100;

// An image goes out in packets of exactly this size, the last one filled up as erased flash reads.
constexpr uint32_t kPacketBytes = 4096;
constexpr uint8_t kErased = 0xFF;

// The answer to a packet is waited for less long than that to a command.
constexpr uint32_t kPacketPolls = 300;

// How long the answer to an image's sum is waited for.
constexpr uint32_t kSumPolls = 900;

// The rest after each packet that was taken.
constexpr int kPacketMilliseconds = 3;

// Refusals of a packet after which the agent may ask for it again, and how often it may.
constexpr uint32_t kFirstResendCode = 3061;
constexpr uint32_t kCodeBusy = 3065; // also the last of them
constexpr int kResends = 3;

// Once the process is to end: how long the agent may be silent, and how long while images are
// written (the flash is not left half written for a pause); and what it may still draw for one
// packet by refusals without limit or by being busy.
constexpr int kPatienceMilliseconds = 1000;
constexpr int kWritePatienceMilliseconds = 6000;
constexpr int kLastRounds = 100;
constexpr int kLastRoundsMilliseconds = 5000;

// Argument of ArmWatchdog.
constexpr uint16_t kWatchdogArgument = 5;

} // namespace agent

// The parameter block, sent to the running agent as it stands. Name and linkage are kept.
inline uint8_t unknow_array[36] = {
    0x16, 0x01, 0x00, 0x00, 0x50, 0xC8, 0x20, 0x04, 0x7C, 0xC5, 0x20, 0x04, //
    0xD0, 0xCB, 0x20, 0x04, 0x01, 0x00, 0xEF, 0x00, 0x60, 0x00, 0x16, 0x00, //
    0x00, 0x00, 0x00, 0x00, 0x18, 0xCB, 0x20, 0x04, 0xB8, 0xCB, 0x20, 0x04,
};
