#pragma once

#include <QtGlobal>

#include <array>

// The numbers of the wire as the chip knows them. Words travel most significant byte first.
namespace bench::chip::wire {

constexpr quint16 kStatusGood = 0x0000;
constexpr quint16 kStatusLimit = 0x1000; // this and above: refused
constexpr quint16 kStatusRefusedOrder = 0x1001;
constexpr quint16 kStatusRefusedRange = 0x1002;
constexpr quint16 kStatusRefusedValue = 0x1003;

// The four bytes of the synchronisation; each is answered by its complement.
constexpr std::array<quint8, 4> kSync = {0xA0, 0x0A, 0x50, 0x05};

// Commands of the boot ROM; the stage-1 agent keeps LoadShort and Jump.
enum Command : quint8 {
    Read16 = 0xD0,        // address, count; status, value, status
    Read32 = 0xD1,        // address, count; status, value, status
    Write16 = 0xD2,       // address, count; status; value; status
    Write32 = 0xD4,       // address, count; status; value; status
    Jump = 0xD5,          // address; status
    LoadShort = 0xD7,     // address, length, one word; status; bytes; checksum, status
    Configuration = 0xD8, // two words, status
    LoadLong = 0xD9       // address, length, two words; status; bytes; checksum, status
};

// Registers of 16 bits.
constexpr quint32 kIdentityRegister = 0x80000000;
constexpr quint32 kRevisionRegister = 0x80000004;
constexpr quint32 kHardwareCodeRegister = 0x80000008;
constexpr quint32 kHardwareSubcodeRegister = 0x8000000C;
constexpr quint32 kWatchdogRegister = 0xA2080000;
constexpr quint16 kWatchdogOff = 0x0010;

// Where programs may be loaded.
constexpr quint32 kMemoryBase = 0x04200000;
constexpr quint32 kMemorySize = 256 * 1024;

// The exchange with the stage-1 agent.
constexpr quint8 kGreeting = 0x5A;
constexpr quint16 kAnnounce = 0x5A00;
constexpr quint16 kSwitchRate = 0x5A5A; // the next byte comes at the download rate
constexpr std::array<quint8, 18> kLineCheck = {0x69, 0x5A, 0x0F, 0x1E, 0x2D, 0x3C,
                                               0x4B, 0x5A, 0x69, 0x78, 0x87, 0x96,
                                               0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0};

// The handshake that the stage-2 agent begins; each byte is answered by its complement.
constexpr std::array<quint8, 4> kHandshake = {0xC0, 0x0C, 0x3F, 0xF3};

// Replies of the stage-2 agent.
constexpr quint8 kAcknowledge = 0x5A;
constexpr quint8 kPositive = 0x69;
constexpr quint8 kNack = 0xA5;    // a 32-bit code follows
constexpr quint8 kRefused = 0x96; // for good

// Commands to the stage-2 agent.
enum AgentCommand : quint8 {
    ReadFlashId = 0x5A,
    SetParameters = 0x24, // echoed; 36 bytes
    ImageStart = 0x5A,
    DownloadImage = 0xB2, // address, length, packet size
    Disconnect = 0xA5,
    Finish = 0xD9,      // option
    ArmWatchdog = 0xDB, // 16-bit value
    RepeatPacket = 0x69,
    GiveUpPacket = 0xA5
};

// What the agent is told after the synchronisation.
constexpr std::array<quint8, 36> kParameters = {
    0x16, 0x01, 0x00, 0x00, 0x50, 0xC8, 0x20, 0x04, 0x7C, 0xC5, 0x20, 0x04,
    0xD0, 0xCB, 0x20, 0x04, 0x01, 0x00, 0xEF, 0x00, 0x60, 0x00, 0x16, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x18, 0xCB, 0x20, 0x04, 0xB8, 0xCB, 0x20, 0x04};

constexpr int kPacketSize = 4096;

// Codes behind a NACK.
constexpr quint32 kFirstRepeatableCode = 3061; // 3061 to 3065: the packet may be sent again
constexpr quint32 kLastRepeatableCode = 3065;  // with a run of busy bytes before
constexpr quint8 kBusy = 0xE1;
constexpr quint8 kBusyEnd = 0xE0;
constexpr quint32 kCodeLength = 3010;
constexpr quint32 kCodeAlignment = 3011;
constexpr quint32 kCodeRange = 3012;
constexpr quint32 kCodeOrder = 3013;

// Software flow control of the host eats these two.
constexpr quint8 kXon = 0x11;
constexpr quint8 kXoff = 0x13;

} // namespace bench::chip::wire
