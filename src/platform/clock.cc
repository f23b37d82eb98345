// The system clock and the 1904 calendar arithmetic.
#include "platform/clock.h"

#include <chrono>
#include <thread>

namespace qm::platform {

namespace {

// Days from 1970-01-01 to a proleptic Gregorian date (Howard Hinnant's algorithm).
constexpr long long DaysFromCivil(long long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long long>(doe) - 719468;
}

void CivilFromDays(long long z, int& y, int& m, int& d) {
  z += 719468;
  const long long era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(static_cast<long long>(yoe) + era * 400 + (m <= 2));
}

// Known when the program is built, so a stamp made while statics are set up is right too.
constexpr long long kDays1904 = DaysFromCivil(1904, 1, 1);
constexpr long long kMaxDays = 49710;

class SystemClock final : public Clock {
 public:
  std::uint32_t Now() override { return StampFromSystemTime(std::time(nullptr)); }

  std::uint32_t Ticks() override {
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                  std::chrono::steady_clock::now().time_since_epoch())
                  .count();
    return static_cast<std::uint32_t>(static_cast<unsigned long long>(ms) * 6 / 100);
  }

  void Pause() override { std::this_thread::sleep_for(std::chrono::microseconds(500)); }
};

}  // namespace

Clock& Clock::System() {
  static SystemClock clock;
  return clock;
}

std::uint32_t StampFromCivil(const CivilTime& t) {
  if (t.month < 1 || t.month > 12 || t.day < 1 || t.day > 31) return kNoStamp;
  if (t.year < 1904 || t.year > 2040) return 0;
  long long days =
      DaysFromCivil(t.year, static_cast<unsigned>(t.month), static_cast<unsigned>(t.day)) -
      kDays1904;
  if (days > kMaxDays) return 0;
  long long seconds = days * 86400 + t.hour * 3600LL + t.minute * 60LL + t.second;
  if (seconds < 0 || seconds >= 0xFFFFFFFFLL) return 0;
  return static_cast<std::uint32_t>(seconds);
}

CivilTime CivilFromStamp(std::uint32_t stamp) {
  CivilTime t;
  long long days = stamp / 86400;
  unsigned rest = stamp % 86400;
  CivilFromDays(days + kDays1904, t.year, t.month, t.day);
  t.hour = static_cast<int>(rest / 3600);
  t.minute = static_cast<int>(rest / 60 % 60);
  t.second = static_cast<int>(rest % 60);
  return t;
}

std::uint32_t StampFromSystemTime(std::time_t when) {
  std::tm local{};
  if (localtime_r(&when, &local) == nullptr) return 0;
  return StampFromCivil({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                         local.tm_min, local.tm_sec});
}

}  // namespace qm::platform
