// Time as the project file counts it (seconds since 1904, local time) and ticks for waiting.
// Everything that reads the time goes through Clock, so tests can fix it.
#pragma once

#include <cstdint>
#include <ctime>

namespace qm::platform {

// The stored value of a timestamp that is not set; never byte-swapped.
inline constexpr std::uint32_t kNoStamp = 0xFFFFFFFF;

class Clock {
 public:
  virtual ~Clock() = default;
  // Seconds since 1 January 1904 00:00:00, local time.
  virtual std::uint32_t Now() = 0;
  // Sixtieths of a second since an arbitrary start: the monotonic millisecond count
  // times 6 over 100. Wraps at 2^32.
  virtual std::uint32_t Ticks() = 0;
  // Gives the processor away for a moment inside a waiting loop.
  virtual void Pause() = 0;

  // The system's clock.
  static Clock& System();
};

// A calendar moment in local time, fields as people write them (month 1 to 12).
struct CivilTime {
  int year = 1904;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

// The timestamp of a calendar moment. A year outside 1904 to 2040 gives 0, as does a
// moment more than 49710 days after the start; a month outside 1 to 12 or a day outside
// 1 to 31 gives kNoStamp.
std::uint32_t StampFromCivil(const CivilTime& t);
// The calendar moment of a timestamp (not kNoStamp).
CivilTime CivilFromStamp(std::uint32_t stamp);
// The timestamp of a system time, converted to local time with the system's zone rules.
std::uint32_t StampFromSystemTime(std::time_t t);

}  // namespace qm::platform
