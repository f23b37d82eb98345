// The counters of the misc table (5 attachment files, 6 references, 7 defect numbers):
// numbers handed out one at a time, never the same one twice, whoever else asks.
#pragma once

#include <cstdint>

#include "session/numbering.h"

namespace qm {

class CProjectStore;

class StoreCounters : public ProjectCounters {
 public:
  // `userId` is the user logged in, 0 for none: only a logged-in user locks the record.
  StoreCounters(CProjectStore& store, std::uint32_t userId) : store_(store), userId_(userId) {}

  // The stored value plus 1, which becomes the stored value.
  [[nodiscard]] DBStatus NextCounter(Tag tag, std::uint32_t id, std::uint32_t& value);
  // Stores `value` as the last number given.
  [[nodiscard]] DBStatus SetCounter(Tag tag, std::uint32_t id, std::uint32_t value) override;

 private:
  template <class Work>
  DBStatus UnderRecordLock(Tag tag, std::uint32_t id, Work&& work);

  CProjectStore& store_;
  std::uint32_t userId_;
};

}  // namespace qm
