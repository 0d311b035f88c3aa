#pragma once

// What the receiver's settings mean: said once, for the calls and for the paths of the unit.
namespace bench::words {

constexpr char kPowered[] = "off: silent, but the line stays up";
constexpr char kResetOnSync[] = "the first synchronisation byte after silence resets the receiver";
constexpr char kLineRate[] = "answers wait until their bytes would have passed the line";
constexpr char kDownloadRate[] = "baud after the switch; 0: the rate that the host uses";
constexpr char kWatchdogMs[] = "from the synchronisation to a reset; 0: none";
constexpr char kSeed[] = "of the faults' chances; the same seed brings the same faults";

} // namespace bench::words
