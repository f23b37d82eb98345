// Running numbers of this process for the rows of a defect (events, reported-by rows),
// never stored: two copies of one defect pair their rows by them.
#pragma once

#include <atomic>
#include <cstdint>

namespace qm {

inline std::uint32_t NextSessionId() {
  static std::atomic<std::uint32_t> next{1};
  return next.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace qm
