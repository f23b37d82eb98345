// The write lock that orders clients for one access, and the exclusive claims of bulk
// reads. Locks are taken on single bytes of the LockArea, which nobody ever writes.
#include "store/project_store.h"

#include "store/store_error.h"

namespace qm {

namespace {
// Five minutes: a backup of a large file holds the write lock for long.
constexpr std::uint32_t kAccessTimeoutTicks = 18000;
}  // namespace

bool CProjectStore::IsByteAlive(std::uint16_t number) {
  if (number == myLockNumber_) return true;
  return file_->IsRangeLockedByOther(LockByteOffset(number), 1);
}

bool CProjectStore::WriteLockHeldByOther() {
  return file_->IsRangeLockedByOther(LockByteOffset(kWriteLock), 1);
}

// The claim test looks at 20 bytes from 131, not at the claim bytes themselves, so in
// practice it always passes and a writer does not wait for a bulk reader. Every client
// tests the same bytes, so they stay as they are.
bool CProjectStore::ClaimTestFails() {
  return file_->IsRangeLockedByOther(kClaimTestOffset, kClaimTestLength);
}

void CProjectStore::ReleaseByte(std::uint16_t number) {
  // What this client wrote is on the device before another client can take its turn.
  if (unflushed_) {
    try {
      file_->Flush();
      unflushed_ = false;
    } catch (const platform::FileError&) {
    }
  }
  file_->UnlockByte(LockByteOffset(number));
}

// Tests until the condition clears or the time-out passes; 1024 on a time-out. The
// test repeats after a short pause, so a waiting client costs the others nothing.
DBStatus CProjectStore::WaitWhileHeld(std::uint32_t timeoutTicks, bool (CProjectStore::*held)()) {
  if (!(this->*held)()) return DBStatus::kOk;
  const std::uint32_t deadline = clock_.Ticks() + timeoutTicks;
  bool timedOut = false;
  do {
    if (static_cast<std::int32_t>(clock_.Ticks() - deadline) > 0) {
      timedOut = true;
    } else {
      clock_.Pause();
    }
  } while ((this->*held)() && !timedOut);
  return timedOut ? DBStatus::kBusy : DBStatus::kOk;
}

DBStatus CProjectStore::BeginAccess(bool rereadHeader) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0 || inAccess_ || exclusiveHeld_) return DBStatus::kOk;

  if (WaitWhileHeld(kAccessTimeoutTicks, &CProjectStore::ClaimTestFails) != DBStatus::kOk) {
    return DBStatus::kBusy;
  }
  if (!file_->TryLockByte(LockByteOffset(kWriteLock))) {
    // Another client may take the lock between our test and our try; then the wait goes
    // on, within the same five minutes.
    const std::uint32_t deadline = clock_.Ticks() + kAccessTimeoutTicks;
    for (;;) {
      const std::uint32_t now = clock_.Ticks();
      const std::uint32_t left = static_cast<std::int32_t>(deadline - now) > 0 ? deadline - now : 0;
      if (WaitWhileHeld(left, &CProjectStore::WriteLockHeldByOther) != DBStatus::kOk) {
        return DBStatus::kBusy;
      }
      if (file_->TryLockByte(LockByteOffset(kWriteLock))) break;
      if (static_cast<std::int32_t>(clock_.Ticks() - deadline) > 0) {
        return DBStatus::kLockNotTaken;
      }
    }
  }
  if (rereadHeader) {
    if (DBStatus s = ReadHeader(); s != DBStatus::kOk) {
      file_->UnlockByte(LockByteOffset(kWriteLock));
      return s;
    }
  }
  inAccess_ = true;
  return DBStatus::kOk;
}

DBStatus CProjectStore::EndAccess(bool commit) {
  if (!file_) return DBStatus::kNotOpen;
  DBStatus status = DBStatus::kOk;
  if (commit) {
    status = RunGuarded([&] {
      WriteHeader();
      try {
        file_->Flush();
        unflushed_ = false;
      } catch (const platform::FileError&) {
        Fail(DBStatus::kIoError);
      }
    });
  }
  if (multiUser_ == 0 || !inAccess_ || exclusiveHeld_) return DBStatus::kOk;
  ReleaseByte(kWriteLock);
  inAccess_ = false;
  return status;
}

DBStatus CProjectStore::LockDatabase(Tag tag) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0 || exclusiveHeld_) return DBStatus::kOk;
  return RunGuarded([&] {
    ReadDirectory();
    TableHandle& h = RequireTable(tag);
    // The claim begins with fresh data.
    h.indexHeld = false;
    ForgetReadAhead();
    for (std::uint16_t n = 0; n < 10; ++n) {
      const std::uint16_t number = static_cast<std::uint16_t>(kFirstClaimLock + n);
      if (!file_->TryLockByte(LockByteOffset(number))) continue;
      // The slot number goes to 373 + 2n as a 16-bit value. The claim bytes end at 392,
      // where the directory of a new file begins, so the last slot's low byte is not
      // written: a tenth claim must not damage the directory's tag.
      std::uint8_t slot[2] = {static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n)};
      const std::uint64_t at = kClaimSlotNumberOffset + 2u * n;
      const std::size_t length = at + 2 <= kClaimAreaEnd ? 2 : kClaimAreaEnd - at;
      if (DBStatus s = RunGuarded([&] { Write(at, slot, length); }); s != DBStatus::kOk) {
        ReleaseByte(number);
        Fail(s);
      }
      exclusiveSlot_ = n;
      exclusiveHeld_ = true;
      return;
    }
    Fail(DBStatus::kNoClaimSlot);
  });
}

DBStatus CProjectStore::UnlockDatabase() {
  if (!file_) return DBStatus::kNotOpen;
  if (exclusiveHeld_) ReleaseByte(static_cast<std::uint16_t>(kFirstClaimLock + exclusiveSlot_));
  exclusiveHeld_ = false;
  exclusiveSlot_ = kNoLockNumber;
  ForgetReadAhead();
  return DBStatus::kOk;
}

}  // namespace qm
