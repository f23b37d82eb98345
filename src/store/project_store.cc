// CProjectStore: making, opening and closing a file, its fixed blocks, and the free
// stretches that the purge of change notices leaves.
#include "store/project_store.h"

#include <algorithm>
#include <cstring>

#include "store/store_error.h"

namespace qm {

namespace {
constexpr std::size_t kCopyPiece = 2048;
constexpr std::uint32_t kMaxOffset = 0xFFFFFFFF;
}  // namespace

CProjectStore::CProjectStore(ui::Ui& ui, platform::FileSystem& files, platform::Clock& clock)
    : ui_(ui), files_(files), clock_(clock) {}

CProjectStore::~CProjectStore() { (void)Close(); }

DBStatus CProjectStore::Create(const std::string& path, std::uint16_t multiUser) {
  (void)Close();
  DBStatus status = RunGuarded([&] {
    file_ = files_.Open(path, platform::OpenMode::kCreateReadWrite);
    // Refused only while someone holds the sign alone, which no client does.
    (void)file_->TryShareByte(LockByteOffset(kOpenSign));
    path_ = path;
    multiUser_ = multiUser;
    header_ = ProjectHeader{};
    header_.multiUser = multiUser;
    std::vector<std::uint8_t> zeros(1024, 0);
    WriteHeader();

    header_.lockAreaOffset = static_cast<std::uint32_t>(FileLength());
    Write(header_.lockAreaOffset, zeros.data(), 244);
    Write(header_.lockAreaOffset + 244, zeros.data(), 20);

    header_.tableDirectoryOffset = static_cast<std::uint32_t>(FileLength());
    directory_ = TableDirectory{};
    WriteDirectory();

    header_.userBlockOffset = static_cast<std::uint32_t>(FileLength());
    userBlock_ = UserBlock{};
    std::vector<std::uint8_t> users(UserBlock::Size(header_.version));
    userBlock_.Encode(header_.version, users.data());
    Write(header_.userBlockOffset, users.data(), users.size());

    header_.holeBlockOffset = static_cast<std::uint32_t>(FileLength());
    holeHead_ = HoleHead{};
    holes_.clear();
    WriteHoleBlock(true);
    heldHoleRevision_ = 0;
    holesHeld_ = true;

    header_.lockBlockOffset = static_cast<std::uint32_t>(FileLength());
    lockBlock_ = LockBlock{};
    std::uint8_t locks[LockBlock::kSize];
    lockBlock_.Encode(locks);
    Write(header_.lockBlockOffset, locks, sizeof locks);

    WriteHeader();
    if (DBStatus s = AddTable(kMessagesTag, "Messages"); s != DBStatus::kOk) Fail(s);
  });
  if (status != DBStatus::kOk) {
    file_.reset();
    tables_.clear();
    return DBStatus::kCannotCreate;
  }
  nextMessageId_ = 1;
  myLockNumber_ = kNoLockNumber;
  return DBStatus::kOk;
}

DBStatus CProjectStore::Open(const std::string& path) {
  (void)Close();
  try {
    file_ = files_.Open(path, platform::OpenMode::kReadWrite);
  } catch (const platform::FileError&) {
    return DBStatus::kCannotOpen;
  }
  (void)file_->TryShareByte(LockByteOffset(kOpenSign));
  path_ = path;
  multiUser_ = 1;

  bool othersLoggedIn = false;
  DBStatus status = BeginAccess(false);
  if (status == DBStatus::kOk) {
    status = RunGuarded([&] {
      if (DBStatus s = ReadHeader(); s != DBStatus::kOk) Fail(s);
      lastSeenChangeCounter_ = header_.changeCounter;
      if (header_.version < kOldestVersion) Fail(DBStatus::kTooOld);
      if (header_.version > kNewestVersion) Fail(DBStatus::kTooNew);
      multiUser_ = header_.multiUser;

      ReadDirectory();
      const std::size_t slots =
          std::min<std::size_t>(directory_.capacity, TableDirectory::kCapacity);
      for (std::size_t i = 0; i < slots; ++i) {
        if (directory_.entries[i].tag == kFreeTag) continue;
        Table t{directory_.entries[i].tag, {}};
        t.handle.entrySlot = i;
        tables_.push_back(std::move(t));
      }

      holesHeld_ = false;
      ReadHoleBlock();
      if (DBStatus s = RefreshUsers(); s != DBStatus::kOk) Fail(s);
      ReadLockBlock();

      // A client reads only the notices posted after it opened.
      TableEntry messages;
      if (DBStatus s = GetTableEntry(kMessagesTag, messages); s != DBStatus::kOk) Fail(s);
      nextMessageId_ = messages.nextId;

      othersLoggedIn = userBlock_.loggedIn != 0;
      if (!othersLoggedIn) {
        if (DBStatus s = PurgeMessages(); s != DBStatus::kOk) Fail(s);
      }
    });
    DBStatus ended = EndAccess(status == DBStatus::kOk && !othersLoggedIn);
    if (status == DBStatus::kOk) status = ended;
  }
  if (status != DBStatus::kOk) {
    (void)Close();
    return status;
  }
  myLockNumber_ = kNoLockNumber;
  return DBStatus::kOk;
}

DBStatus CProjectStore::Close() {
  // A single-user file stays in its access from the opening on and commits without
  // flushing; what it wrote goes to the device before the file is let go.
  if (file_ && unflushed_) {
    try {
      file_->Flush();
    } catch (const platform::FileError&) {
    }
  }
  file_.reset();
  ForgetReadAhead();
  tables_.clear();
  exclusiveHeld_ = false;
  exclusiveSlot_ = kNoLockNumber;
  inAccess_ = false;
  unflushed_ = false;
  holesHeld_ = false;
  holesUnwritten_ = false;
  return DBStatus::kOk;
}

DBStatus CProjectStore::SetMultiUser(std::uint16_t mode) {
  if (!file_) return DBStatus::kNotOpen;
  // Only a bracket of the caller's in a multi-user file counts: a single-user file keeps
  // its write lock from the opening on, and a switch to multi-user must let it go.
  const bool bracketed = inAccess_ && multiUser_ != 0;
  if (DBStatus s = BeginAccess(true); s != DBStatus::kOk) return s;
  const bool changed = header_.multiUser != mode;
  header_.multiUser = mode;
  multiUser_ = mode;
  DBStatus status = changed ? RunGuarded([&] { WriteHeader(); }) : DBStatus::kOk;
  if (!bracketed) {
    DBStatus ended = EndAccess(status == DBStatus::kOk);
    if (status == DBStatus::kOk) status = ended;
  }
  return status;
}

DBStatus CProjectStore::AddTable(Tag tag, std::string_view /*name*/) {
  if (!file_) return DBStatus::kNotOpen;
  return RunGuarded([&] {
    ReadDirectory();
    const std::size_t slots = std::min<std::size_t>(directory_.capacity, TableDirectory::kCapacity);
    for (std::size_t i = 0; i < slots; ++i) {
      if (directory_.entries[i].tag == tag) Fail(DBStatus::kTableExists);
    }
    if (directory_.count == directory_.capacity) Fail(DBStatus::kDirectoryFull);
    std::size_t slot = slots;
    for (std::size_t i = 0; i < slots && slot == slots; ++i) {
      if (directory_.entries[i].tag == kFreeTag) slot = i;
    }
    if (slot == slots) Fail(DBStatus::kTableExists);
    ++directory_.count;

    const std::uint64_t position = FileLength();
    const IndexHead head;
    if (position + IndexHead::kSize + head.capacity * IndexEntry::kSize > kMaxOffset) {
      Fail(DBStatus::kIoError);
    }
    std::vector<std::uint8_t> index(IndexHead::kSize + head.capacity * IndexEntry::kSize, 0);
    head.Encode(index.data());
    Write(position, index.data(), index.size());

    directory_.entries[slot] = {tag, 0, 1, static_cast<std::uint32_t>(position), 0};
    Table t{tag, {}};
    t.handle.entrySlot = slot;
    tables_.push_back(std::move(t));
    WriteDirectory();
  });
}

TableHandle* CProjectStore::FindTable(Tag tag) {
  for (Table& t : tables_) {
    if (t.tag == tag) return &t.handle;
  }
  return nullptr;
}

TableHandle& CProjectStore::RequireTable(Tag tag) {
  TableHandle* h = FindTable(tag);
  if (h == nullptr) Fail(DBStatus::kNoSuchTable);
  return *h;
}

std::vector<Tag> CProjectStore::TableTags() const {
  std::vector<Tag> tags;
  for (const Table& t : tables_) tags.push_back(t.tag);
  return tags;
}

// ---- reading and writing bytes ----

void CProjectStore::ReadExactly(std::uint64_t offset, std::uint8_t* buffer, std::size_t n) {
  std::size_t got = 0;
  try {
    got = file_->ReadAt(offset, buffer, n);
  } catch (const platform::FileError&) {
    Fail(DBStatus::kIoError);
  }
  if (got != n) Fail(DBStatus::kIoError);
}

void CProjectStore::Write(std::uint64_t offset, const std::uint8_t* data, std::size_t n,
                          bool guarded) {
  if (guarded) CheckGuard(offset);
  try {
    ForgetReadAhead();
    file_->WriteAt(offset, data, n);
    unflushed_ = true;
  } catch (const platform::FileError& e) {
    ui_.Tell(std::strerror(e.code()), ui::Icon::kError, "GetLastError");
    Fail(DBStatus::kIoError);
  }
}

std::uint64_t CProjectStore::FileLength() {
  try {
    return file_->Length();
  } catch (const platform::FileError&) {
    Fail(DBStatus::kIoError);
  }
}

// A record's bytes never start inside the header, the lock targets or a fixed block.
void CProjectStore::CheckGuard(std::uint64_t offset) const {
  if (offset < 129) Fail(DBStatus::kGuardRefused);
  auto inside = [offset](std::uint32_t start, std::uint64_t length) {
    return start != 0 && offset >= start && offset < start + length;
  };
  if (inside(header_.lockAreaOffset, kLockAreaSize) ||
      inside(header_.tableDirectoryOffset, TableDirectory::kSize) ||
      inside(header_.userBlockOffset, UserBlock::kLongSize) ||
      inside(header_.lockBlockOffset, LockBlock::kSize) ||
      inside(header_.holeBlockOffset, holeHead_.BlockSize())) {
    Fail(DBStatus::kGuardRefused);
  }
}

// Whether a stretch lies wholly in the file and touches neither the header, the lock
// targets nor a fixed block: where records, and only records, may stand.
bool CProjectStore::IsRecordSpace(std::uint32_t offset, std::uint32_t size) {
  const std::uint64_t end = std::uint64_t{offset} + size;
  if (offset < 129 || end > FileLength()) return false;
  auto overlaps = [&](std::uint32_t start, std::uint64_t length) {
    return start != 0 && offset < start + length && start < end;
  };
  return !(overlaps(header_.lockAreaOffset, kLockAreaSize) ||
           overlaps(header_.tableDirectoryOffset, TableDirectory::kSize) ||
           overlaps(header_.userBlockOffset, UserBlock::kLongSize) ||
           overlaps(header_.lockBlockOffset, LockBlock::kSize) ||
           overlaps(header_.holeBlockOffset, holeHead_.BlockSize()));
}

// ---- the fixed blocks ----

DBStatus CProjectStore::ReadHeader() {
  std::uint8_t bytes[ProjectHeader::kSize];
  if (DBStatus s = RunGuarded([&] { ReadExactly(0, bytes, sizeof bytes); }); s != DBStatus::kOk) {
    return s;
  }
  ProjectHeader read = ProjectHeader::Decode(bytes);
  if (read.magic != kMagicTag) {
    header_ = ProjectHeader{};
    header_.version = 352;
    header_.multiUser = 1;
    return DBStatus::kNotProjectFile;
  }
  header_ = read;
  return DBStatus::kOk;
}

void CProjectStore::WriteHeader() {
  std::uint8_t bytes[ProjectHeader::kSize];
  header_.Encode(bytes);
  Write(0, bytes, sizeof bytes);
}

void CProjectStore::ReadDirectory() {
  std::uint8_t bytes[TableDirectory::kSize];
  ReadExactly(header_.tableDirectoryOffset, bytes, sizeof bytes);
  TableDirectory read = TableDirectory::Decode(bytes);
  if (!read.Valid()) {
    directory_ = TableDirectory{};
    Fail(DBStatus::kIoError);
  }
  directory_ = read;
}

void CProjectStore::WriteDirectory() {
  std::uint8_t bytes[TableDirectory::kSize];
  directory_.Encode(bytes);
  Write(header_.tableDirectoryOffset, bytes, sizeof bytes);
}

void CProjectStore::ReadTableEntry(TableHandle& h) {
  std::uint8_t bytes[TableEntry::kSize];
  ReadExactly(header_.tableDirectoryOffset + TableDirectory::EntryOffset(h.entrySlot), bytes,
              sizeof bytes);
  EntryOf(h) = TableEntry::Decode(bytes);
}

void CProjectStore::WriteTableEntry(const TableHandle& h) {
  std::uint8_t bytes[TableEntry::kSize];
  directory_.entries[h.entrySlot].Encode(bytes);
  Write(header_.tableDirectoryOffset + TableDirectory::EntryOffset(h.entrySlot), bytes,
        sizeof bytes);
}

void CProjectStore::ReadHoleBlock() {
  // Holes entered by this client and not yet written are newer than the file's block.
  if (holesUnwritten_) return;
  std::uint8_t bytes[HoleHead::kSize];
  HoleHead read;
  DBStatus s = RunGuarded([&] { ReadExactly(header_.holeBlockOffset, bytes, sizeof bytes); });
  if (s == DBStatus::kOk) read = HoleHead::Decode(bytes);
  if (s != DBStatus::kOk || read.tag != kHoleBlockTag || read.count > read.capacity) {
    holeHead_ = HoleHead{};
    holeHead_.capacity = 0;
    holes_.clear();
    holesHeld_ = false;
    Fail(DBStatus::kIoError);
  }
  // The whole block, as its capacity says, must lie in the file: it is written whole.
  if (header_.holeBlockOffset + read.BlockSize() > FileLength()) {
    holeHead_ = HoleHead{};
    holeHead_.capacity = 0;
    holes_.clear();
    holesHeld_ = false;
    Fail(DBStatus::kIoError);
  }
  holeHead_ = read;
  if (holesHeld_ && heldHoleRevision_ == read.revision && holes_.size() == read.count) return;

  const std::uint64_t length = std::uint64_t{read.count} * 8;
  if (header_.holeBlockOffset + HoleHead::kSize + length > FileLength()) Fail(DBStatus::kIoError);
  std::vector<std::uint8_t> pairs(length);
  ReadExactly(header_.holeBlockOffset + HoleHead::kSize, pairs.data(), pairs.size());
  std::vector<Hole> holes(read.count);
  BeReader r(pairs.data());
  for (Hole& hole : holes) {
    hole.offset = r.U32();
    hole.size = r.U32();
  }
  std::stable_sort(holes.begin(), holes.end(),
                   [](const Hole& a, const Hole& b) { return a.offset < b.offset; });
  holes_ = std::move(holes);
  heldHoleRevision_ = read.revision;
  holesHeld_ = true;
}

void CProjectStore::WriteHoleBlock(bool fill) {
  if (holes_.size() > holeHead_.capacity) {
    // A list that outgrew its block is not written; the head starts over.
    holeHead_ = HoleHead{};
    holes_.clear();
    holesUnwritten_ = false;
    return;
  }
  holeHead_.count = static_cast<std::uint32_t>(holes_.size());
  const std::size_t used = HoleHead::kSize + holes_.size() * 8;
  std::vector<std::uint8_t> bytes(fill ? holeHead_.BlockSize() : used, 0);
  holeHead_.Encode(bytes.data());
  BeWriter w(bytes.data() + HoleHead::kSize);
  for (const Hole& hole : holes_) {
    w.U32(hole.offset);
    w.U32(hole.size);
  }
  Write(header_.holeBlockOffset, bytes.data(), bytes.size());
  holesUnwritten_ = false;
}

void CProjectStore::ReadLockBlock() {
  std::uint8_t bytes[LockBlock::kSize];
  ReadExactly(header_.lockBlockOffset, bytes, sizeof bytes);
  LockBlock read = LockBlock::Decode(bytes);
  if (read.reserved >= 128) Fail(DBStatus::kIoError);
  lockBlock_ = read;
}

// Free space is not reused between compactions: the search finds nothing and the new
// bytes go to the end of the file. The search keeps its place so a real one can go here.
std::uint32_t CProjectStore::FindHoleForRecord(std::uint32_t size) {
  (void)RunGuarded([&] { ReadHoleBlock(); });
  const std::uint64_t end = FileLength();
  std::uint8_t probe = 0;
  std::size_t got = 0;
  try {
    got = file_->ReadAt(end, &probe, 1);
  } catch (const platform::FileError&) {
    Fail(DBStatus::kIoError);
  }
  if (got != 0) {
    ui_.Tell("Database Error: Invalid end of file.");
    Fail(DBStatus::kIoError);
  }
  if (end + size > kMaxOffset) Fail(DBStatus::kIoError);
  return static_cast<std::uint32_t>(end);
}

// ---- users ----

DBStatus CProjectStore::UpgradeUserBlock() {
  if (!file_) return DBStatus::kNotOpen;
  if (header_.version >= 357) return DBStatus::kOk;
  if (DBStatus s = BeginAccess(true); s != DBStatus::kOk) return s;
  const ProjectHeader before = header_;
  DBStatus status = RefreshUsers();
  if (status == DBStatus::kOk) {
    status = RunGuarded([&] {
      header_.userBlockOffset = static_cast<std::uint32_t>(FileLength());
      header_.version = header_.version == 352 ? 358 : 357;
      std::vector<std::uint8_t> bytes(UserBlock::Size(header_.version));
      userBlock_.Encode(header_.version, bytes.data());
      Write(header_.userBlockOffset, bytes.data(), bytes.size());
    });
  }
  if (status != DBStatus::kOk) {
    header_.version = before.version;
    header_.userBlockOffset = before.userBlockOffset;
  }
  const DBStatus ended = EndAccess(status == DBStatus::kOk);
  return status != DBStatus::kOk ? status : ended;
}

DBStatus CProjectStore::RefreshUsers() {
  if (!file_) return DBStatus::kNotOpen;
  if (multiUser_ == 0) return DBStatus::kOk;
  std::vector<std::uint8_t> bytes(UserBlock::Size(header_.version));
  DBStatus status =
      RunGuarded([&] { ReadExactly(header_.userBlockOffset, bytes.data(), bytes.size()); });
  if (status != DBStatus::kOk) {
    userBlock_ = UserBlock{};
    return DBStatus::kIoError;
  }
  UserBlock read = UserBlock::Decode(header_.version, bytes.data());
  if (!read.Valid()) {
    // A damaged user block is no failure: it reads as empty.
    userBlock_ = UserBlock{};
    return DBStatus::kOk;
  }
  read.loggedIn = 0;
  bool cleared = false;
  for (UserSlot& slot : read.slots) {
    if (slot.userId == 0) continue;
    if (IsByteAlive(slot.lockSlot)) {
      ++read.loggedIn;
    } else {
      // Its client died or lost the file; the system gave up its life sign.
      slot.userId = 0;
      slot.lockSlot = 0;
      cleared = true;
    }
  }
  userBlock_ = read;
  if (!cleared) return DBStatus::kOk;
  ++userBlock_.changeCounter;
  userBlock_.Encode(header_.version, bytes.data());
  return RunGuarded([&] { Write(header_.userBlockOffset, bytes.data(), bytes.size()); });
}

// ---- holes ----

DBStatus CProjectStore::AddHole(std::uint32_t offset, std::uint32_t size) {
  if (!file_) return DBStatus::kNotOpen;
  return RunGuarded([&] {
    if (!IsRecordSpace(offset, size)) Fail(DBStatus::kIoError);
    std::vector<std::uint8_t> fill(std::min<std::size_t>(kCopyPiece, size), 0xFE);
    for (std::uint32_t done = 0; done < size;) {
      const std::uint32_t piece = std::min<std::uint32_t>(size - done, kCopyPiece);
      Write(std::uint64_t{offset} + done, fill.data(), piece);
      done += piece;
    }

    std::uint32_t merged = size;
    bool doubleMerge = false;
    auto it = std::find_if(holes_.begin(), holes_.end(), [&](const Hole& h) {
      return h.offset + h.size == offset || h.offset == offset + size;
    });
    if (it == holes_.end()) {
      auto place = std::find_if(holes_.begin(), holes_.end(),
                                [&](const Hole& h) { return h.offset > offset; });
      holes_.insert(place, Hole{offset, size});
    } else if (it->offset + it->size == offset) {
      auto next = std::next(it);
      if (next != holes_.end() && next->offset == offset + size) {
        it->size += size + next->size;
        holes_.erase(next);
        doubleMerge = true;
      } else {
        it->size += size;
      }
      merged = it->size;
    } else {
      it->offset = offset;
      it->size += size;
      merged = it->size;
    }
    holeHead_.count = static_cast<std::uint32_t>(holes_.size());
    holesUnwritten_ = true;
    if (merged > holeHead_.largest) holeHead_.largest = merged;
    if (!doubleMerge) {
      ++holeHead_.revision;
      heldHoleRevision_ = holeHead_.revision;
    }
  });
}

DBStatus CProjectStore::PurgeMessages() {
  if (!file_) return DBStatus::kNotOpen;
  return RunGuarded([&] {
    TableHandle& h = RequireTable(kMessagesTag);
    ReadHoleBlock();
    LoadIndex(h);
    for (std::uint32_t i = 0; i < h.head.count; ++i) {
      IndexEntry& e = h.entries[i];
      if (e.id == 0) continue;
      // A damaged entry that points outside the records' space is dropped without
      // filling anything: the fill must never reach a fixed block or beyond the file.
      if (!IsRecordSpace(e.offset, e.size)) {
        e = IndexEntry{};
        continue;
      }
      if (DBStatus s = AddHole(e.offset, e.size); s != DBStatus::kOk) Fail(s);
      if (holes_.size() > holeHead_.capacity) {
        holeHead_.capacity += HoleHead::kGrowth;
        header_.holeBlockOffset =
            FindHoleForRecord(static_cast<std::uint32_t>(holeHead_.BlockSize()));
        WriteHoleBlock(true);
      }
      e = IndexEntry{};
    }
    const std::uint32_t countBefore = h.head.count;
    h.head.count = 0;
    // A new revision tells clients that kept the entries to read them again; an index that
    // was empty stays as it was, to the byte.
    if (countBefore != 0) ++h.head.revision;
    WriteIndexWhole(h, countBefore);
    WriteHoleBlock(true);
  });
}

std::uint32_t CProjectStore::GetUnusedBytes() {
  if (!file_) return 0;
  const bool wasInAccess = inAccess_;
  if (BeginAccess(true) != DBStatus::kOk) return 0;
  std::uint64_t sum = 0;
  DBStatus status = RunGuarded([&] {
    ReadHoleBlock();
    for (const Hole& hole : holes_) sum += hole.size;
  });
  if (!wasInAccess) (void)EndAccess(false);
  return status == DBStatus::kOk ? static_cast<std::uint32_t>(sum) : 0;
}

bool IsFileOpenElsewhere(platform::FileSystem& files, const std::string& path, bool* multiUser) {
  std::unique_ptr<platform::File> file;
  try {
    file = files.Open(path, platform::OpenMode::kRead);
  } catch (const platform::FileError&) {
    return false;
  }
  if (multiUser != nullptr) {
    std::uint8_t head[ProjectHeader::kSize] = {};
    try {
      *multiUser = file->ReadAt(0, head, sizeof head) == sizeof head &&
                   ProjectHeader::Decode(head).multiUser != 0;
    } catch (const platform::FileError&) {
      *multiUser = false;
    }
  }
  const std::uint64_t first = LockByteOffset(kWriteLock);
  return file->IsRangeLockedByOther(first, LockByteOffset(kLastLifeSign) + 1 - first);
}

}  // namespace qm
