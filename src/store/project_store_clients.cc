// What clients of one file know of each other: user slots with life signs, record locks,
// change notices and the change counter. The user and lock blocks are read and written
// without the write lock; only the life signs are backed by the operating system.
#include <algorithm>

#include "store/project_store.h"
#include "store/store_error.h"

namespace qm {

bool CProjectStore::HasChanged() {
  if (!file_ || multiUser_ == 0) return false;
  std::uint8_t bytes[4];
  try {
    if (file_->ReadAt(ProjectHeader::kChangeCounterOffset, bytes, 4) != 4) return false;
  } catch (const platform::FileError&) {
    return false;
  }
  const std::uint32_t counter = BeReader(bytes).U32();
  if (counter == lastSeenChangeCounter_) return false;
  lastSeenChangeCounter_ = counter;
  return true;
}

DBStatus CProjectStore::RefreshDirectory() {
  if (!file_) return DBStatus::kNotOpen;
  if (const DBStatus s = BeginAccess(true); s != DBStatus::kOk) return s;
  const DBStatus status = RunGuarded([&] { ReadDirectory(); });
  const DBStatus ended = EndAccess(false);
  return status != DBStatus::kOk ? status : ended;
}

bool CProjectStore::IsLockNumberAlive(std::uint16_t number) {
  return file_ != nullptr && IsByteAlive(number);
}

void CProjectStore::WriteUserBlock() {
  std::vector<std::uint8_t> bytes(UserBlock::Size(header_.version));
  userBlock_.Encode(header_.version, bytes.data());
  Write(header_.userBlockOffset, bytes.data(), bytes.size());
}

DBStatus CProjectStore::LoginUser(std::uint32_t userId) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kOk;
  if (DBStatus s = RefreshUsers(); s != DBStatus::kOk) return s;
  // The walk stops at the first free slot, so a user behind a hole left by a logout is
  // not noticed here; the login dialog asks IsUserLoggedIn beforehand.
  std::size_t slot = 0;
  for (; slot < userBlock_.capacity && slot < UserBlock::kCapacity; ++slot) {
    if (userBlock_.slots[slot].userId == 0) break;
    if (userBlock_.slots[slot].userId == userId) return DBStatus::kAlreadyLoggedIn;
  }
  if (slot >= userBlock_.capacity || slot >= UserBlock::kCapacity) return DBStatus::kNoUserSlot;

  myLockNumber_ = kNoLockNumber;
  for (std::uint16_t n = kFirstLifeSign; n <= kLastLifeSign; ++n) {
    if (file_->TryLockByte(LockByteOffset(n))) {
      myLockNumber_ = n;
      break;
    }
  }
  myUserId_ = userId;
  userBlock_.slots[slot] = UserSlot{userId, myLockNumber_, {}};
  ++userBlock_.loggedIn;
  ++userBlock_.changeCounter;
  return RunGuarded([&] { WriteUserBlock(); });
}

DBStatus CProjectStore::LogoutUser(std::uint32_t userId) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kOk;
  if (DBStatus s = RefreshUsers(); s != DBStatus::kOk) return s;
  auto slot = std::find_if(userBlock_.slots.begin(), userBlock_.slots.end(),
                           [userId](const UserSlot& u) { return u.userId == userId; });
  if (slot == userBlock_.slots.end()) return DBStatus::kNotLoggedIn;
  if (myLockNumber_ != kNoLockNumber) ReleaseByte(myLockNumber_);
  myLockNumber_ = kNoLockNumber;
  myUserId_ = 0;
  *slot = UserSlot{};
  --userBlock_.loggedIn;
  ++userBlock_.changeCounter;
  return RunGuarded([&] { WriteUserBlock(); });
}

DBStatus CProjectStore::IsUserLoggedIn(std::uint32_t userId, bool& loggedIn) {
  loggedIn = false;
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kOk;
  if (DBStatus s = RefreshUsers(); s != DBStatus::kOk) return s;
  loggedIn = std::any_of(userBlock_.slots.begin(), userBlock_.slots.end(),
                         [userId](const UserSlot& u) { return u.userId == userId; });
  return DBStatus::kOk;
}

DBStatus CProjectStore::GetLoggedInUsers(std::vector<std::uint32_t>& userIds) {
  userIds.clear();
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kOk;
  if (DBStatus s = RefreshUsers(); s != DBStatus::kOk) return s;
  for (const UserSlot& u : userBlock_.slots) {
    if (u.userId != 0) userIds.push_back(u.userId);
  }
  return DBStatus::kOk;
}

// ---- record locks ----

void CProjectStore::WriteLockBlock() {
  std::uint8_t bytes[LockBlock::kSize];
  lockBlock_.Encode(bytes);
  Write(header_.lockBlockOffset, bytes, sizeof bytes);
}

void CProjectStore::ClearLockEntry(RecordLockEntry& e) {
  e = RecordLockEntry{};
  e.lockedAt = platform::kNoStamp;
}

// The shape of the record-lock operations: no file 1013, a single-user file 0 at once,
// else the work on a freshly read LockBlock with its failures as statuses.
template <class Work>
DBStatus CProjectStore::LockBlockOperation(Work&& work) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kOk;
  return RunGuarded([&] {
    ReadLockBlock();
    work();
  });
}

DBStatus CProjectStore::LockRecord(Tag tag, std::uint32_t id, std::uint32_t userId) {
  return LockBlockOperation([&] {
    RecordLockEntry* target = nullptr;
    for (RecordLockEntry& e : lockBlock_.entries) {
      if (e.table == tag && e.id == id) {
        // Not re-entrant, not even for the holder. A dead holder's lock is taken over.
        if (IsByteAlive(e.lockSlot)) Fail(DBStatus::kRecordLocked);
        target = &e;
        break;
      }
      if (target == nullptr && e.table == kFreeTag) target = &e;
    }
    if (target == nullptr) Fail(DBStatus::kRecordLocked);
    *target = RecordLockEntry{tag, id, userId, myLockNumber_, clock_.Now() + kLockStampOffset};
    ++lockBlock_.changeCounter;
    WriteLockBlock();
  });
}

DBStatus CProjectStore::IsRecordLocked(Tag tag, std::uint32_t id, bool& locked,
                                       LockHolder* holder) {
  locked = false;
  return LockBlockOperation([&] {
    for (RecordLockEntry& e : lockBlock_.entries) {
      if (e.table != tag || e.id != id) continue;
      if (IsByteAlive(e.lockSlot)) {
        locked = true;
        if (holder != nullptr) *holder = LockHolder{e.lockSlot, e.lockedAt, e.userId};
      } else {
        ClearLockEntry(e);
        ++lockBlock_.changeCounter;
        WriteLockBlock();
      }
      return;
    }
  });
}

DBStatus CProjectStore::UnlockRecord(Tag tag, std::uint32_t id) {
  return LockBlockOperation([&] {
    for (RecordLockEntry& e : lockBlock_.entries) {
      if (e.table != tag || e.id != id) continue;
      // Any client may release any lock.
      ClearLockEntry(e);
      ++lockBlock_.changeCounter;
      WriteLockBlock();
      return;
    }
  });
}

DBStatus CProjectStore::UnlockUserRecords(std::uint32_t userId) {
  return LockBlockOperation([&] {
    bool any = false;
    for (RecordLockEntry& e : lockBlock_.entries) {
      if (e.table == kFreeTag || e.userId != userId) continue;
      ClearLockEntry(e);
      any = true;
    }
    if (!any) return;
    ++lockBlock_.changeCounter;
    WriteLockBlock();
  });
}

DBStatus CProjectStore::ReadRecordLocks(std::vector<RecordLockEntry>& entries) {
  entries.clear();
  if (!file_) return DBStatus::kNotOpen;
  return RunGuarded([&] {
    ReadLockBlock();
    entries.assign(lockBlock_.entries.begin(), lockBlock_.entries.end());
  });
}

// ---- change notices ----

DBStatus CProjectStore::PostMessage(std::uint32_t sender, std::uint32_t kind,
                                    std::span<const std::uint8_t> data) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0 || data.size() > ChangeNotice::kMaxData) return DBStatus::kOk;
  const bool wasInAccess = inAccess_;
  if (DBStatus s = BeginAccess(true); s != DBStatus::kOk) return s;
  ChangeNotice notice;
  notice.kind = kind;
  notice.sender = sender;
  notice.dataLength = static_cast<std::uint32_t>(data.size());
  std::copy(data.begin(), data.end(), notice.data.begin());
  std::uint8_t bytes[ChangeNotice::kSize];
  notice.Encode(bytes);
  DBStatus status = AddRecord(kMessagesTag, bytes, nullptr);
  if (status == DBStatus::kOk) {
    // The notice counts once more than its record, so the counter steps by two.
    header_.CountChange();
    status = RunGuarded([&] { WriteHeader(); });
  }
  if (wasInAccess) return status;
  if (status == DBStatus::kOk) return EndAccess(true);
  (void)EndAccess(false);
  return status;
}

DBStatus CProjectStore::GetNextMessage(Notice& notice) {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kNoMessage;
  const bool wasInAccess = inAccess_;
  if (DBStatus s = BeginAccess(true); s != DBStatus::kOk) return s;
  TableEntry messages;
  DBStatus status = GetTableEntry(kMessagesTag, messages);
  bool delivered = false;
  while (status == DBStatus::kOk && !delivered && nextMessageId_ < messages.nextId) {
    std::uint8_t bytes[ChangeNotice::kSize] = {};
    std::uint32_t got = 0;
    // A notice that cannot be read blocks the ones behind it for this session.
    status = ReadRecordInto(kMessagesTag, nextMessageId_, bytes, got);
    if (status != DBStatus::kOk) break;
    ++nextMessageId_;
    const ChangeNotice n = ChangeNotice::Decode(bytes);
    if (n.sender == myUserId_) continue;
    const std::size_t length = std::min<std::uint32_t>(n.dataLength, ChangeNotice::kMaxData);
    notice = Notice{n.kind, n.sender,
                    std::vector<std::uint8_t>(n.data.begin(), n.data.begin() + length)};
    delivered = true;
  }
  if (status == DBStatus::kOk && !delivered) status = DBStatus::kNoMessage;
  if (!wasInAccess) (void)EndAccess(false);
  return status;
}

void CProjectStore::FreeMessage(Notice& notice) {
  notice.data.clear();
  notice.data.shrink_to_fit();
}

}  // namespace qm
