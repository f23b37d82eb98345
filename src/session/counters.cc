// Handing out counter values under the counter record's lock.
#include "session/counters.h"

#include <array>

#include "store/project_store.h"

namespace qm {

namespace {
std::array<std::uint8_t, 4> Encode(std::uint32_t value) {
  std::array<std::uint8_t, 4> bytes{};
  BeWriter(bytes.data()).U32(value);
  return bytes;
}
}  // namespace

// The record lock says who is counting; the read and the write also share one access,
// so that two clients can never read the same value between them, whatever the lock
// block's races.
template <class Work>
DBStatus StoreCounters::UnderRecordLock(Tag tag, std::uint32_t id, Work&& work) {
  if (userId_ != 0) {
    if (DBStatus s = store_.LockRecord(tag, id, userId_); s != DBStatus::kOk) return s;
  }
  DBStatus status = store_.BeginAccess(true);
  if (status == DBStatus::kOk) {
    status = work();
    const DBStatus ended = store_.EndAccess(status == DBStatus::kOk);
    if (status == DBStatus::kOk) status = ended;
  }
  if (userId_ != 0) (void)store_.UnlockRecord(tag, id);
  return status;
}

DBStatus StoreCounters::NextCounter(Tag tag, std::uint32_t id, std::uint32_t& value) {
  return UnderRecordLock(tag, id, [&] {
    std::uint32_t stored = 0;
    if (DBStatus s = ReadCounter(store_, tag, id, stored); s != DBStatus::kOk) return s;
    const std::uint32_t next = stored + 1;
    if (DBStatus s = store_.UpdateRecord(tag, id, Encode(next)); s != DBStatus::kOk) return s;
    value = next;
    return DBStatus::kOk;
  });
}

DBStatus StoreCounters::SetCounter(Tag tag, std::uint32_t id, std::uint32_t value) {
  return UnderRecordLock(tag, id, [&] {
    std::uint32_t size = 0;
    if (store_.GetRecordSize(tag, id, size) == DBStatus::kOk) {
      return store_.UpdateRecord(tag, id, Encode(value));
    }
    return store_.PutRecord(tag, Encode(value), id, PutMode::kKeepIfShorter);
  });
}

}  // namespace qm
