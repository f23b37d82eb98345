// Record operations: the index of each table, adding, updating, deleting and reading.
//
// Every operation has one shape: take the write lock (rereading the header), find the
// table, read its TableEntry afresh, do the work, count the change, then commit and
// release. A failing step throws its status; the lock is released all the same.
#include <algorithm>
#include <cstring>

#include "store/checksum.h"
#include "store/project_store.h"
#include "store/store_error.h"

namespace qm {

namespace {
constexpr std::size_t kCopyPiece = 2048;
constexpr std::size_t kCheckPiece = 512;
// Records larger than this are checked against the file's length before memory is
// taken for them, so a damaged size cannot ask for gigabytes.
constexpr std::uint32_t kTrustedSize = 1u << 20;
constexpr std::size_t kReadAheadSize = 64 * 1024;
}  // namespace

template <class Work>
DBStatus CProjectStore::RecordOperation(Tag tag, Effect effect, EntryRefresh refresh, Work&& work) {
  if (!file_) return DBStatus::kNotOpen;
  const bool wasInAccess = inAccess_;
  if (DBStatus s = BeginAccess(true); s != DBStatus::kOk) return s;
  DBStatus status = RunGuarded([&] {
    TableHandle& h = RequireTable(tag);
    if (multiUser_ != 0 && (!exclusiveHeld_ || refresh == EntryRefresh::kAlways)) {
      ReadTableEntry(h);
    }
    work(h);
    if (effect == Effect::kChanges) header_.CountChange();
  });
  if (status != DBStatus::kOk && effect == Effect::kChanges) {
    // A change that failed half-way may have left the index and TableEntry in memory
    // ahead of the file; the next access reads them again.
    if (TableHandle* h = FindTable(tag)) {
      h->indexHeld = false;
      (void)RunGuarded([&] { ReadTableEntry(*h); });
    }
  }
  if (wasInAccess) {
    if (status == DBStatus::kOk && effect == Effect::kChanges) {
      status = RunGuarded([&] { WriteHeader(); });
    }
    return status;
  }
  if (status == DBStatus::kOk && effect == Effect::kChanges) return EndAccess(true);
  (void)EndAccess(false);
  return status;
}

std::uint32_t CProjectStore::StoredSize(std::size_t payloadSize) const {
  const std::uint64_t stored = payloadSize + (HeadersInRecords() ? RecordHeader::kSize : 0);
  if (stored > 0xFFFFFFFFu) Fail(DBStatus::kNoMemory);
  return static_cast<std::uint32_t>(stored);
}

// ---- the index ----

// A multi-user client always sees the index on disk. It reads the 20-byte head each
// access and keeps the entries it holds when the head still says the same: every change
// of an index moves its revision, and a moved or grown index has a new offset.
void CProjectStore::LoadIndex(TableHandle& h) {
  const TableEntry& entry = EntryOf(h);
  if (entry.indexOffset == 0) Fail(DBStatus::kNoIndex);
  if ((multiUser_ == 0 || exclusiveHeld_) && h.indexHeld) return;

  std::uint8_t bytes[IndexHead::kSize];
  ReadExactly(entry.indexOffset, bytes, sizeof bytes);
  const IndexHead head = IndexHead::Decode(bytes);
  if (!head.Valid()) {
    h.head = IndexHead{};
    h.entries.assign(h.head.capacity, IndexEntry{});
    h.indexHeld = false;
    Fail(DBStatus::kIoError);
  }
  if (h.indexHeld && h.heldOffset == entry.indexOffset && h.head.capacity == head.capacity &&
      h.head.count == head.count && h.head.revision == head.revision) {
    return;
  }
  h.indexHeld = false;
  const std::uint64_t length = std::uint64_t{head.capacity} * IndexEntry::kSize;
  if (entry.indexOffset + IndexHead::kSize + length > FileLength()) Fail(DBStatus::kIoError);
  std::vector<std::uint8_t> raw(length);
  ReadExactly(entry.indexOffset + IndexHead::kSize, raw.data(), raw.size());
  h.entries.resize(head.capacity);
  h.maxId = 0;
  for (std::uint32_t i = 0; i < head.capacity; ++i) {
    h.entries[i] = IndexEntry::Decode(raw.data() + std::size_t{i} * IndexEntry::kSize);
    if (i < head.count) h.maxId = std::max(h.maxId, h.entries[i].id);
  }
  h.head = head;
  // A delete writes the moved entries before the head. A writer stopped between the two
  // leaves the head counting one entry more than the index holds: that last entry is all
  // zero (no record has id 0), and the delete counts as done.
  while (h.head.count > 0 && h.entries[h.head.count - 1].id == 0) --h.head.count;
  h.heldOffset = entry.indexOffset;
  h.indexHeld = true;
}

// Writes head and all capacity entries at the table's indexOffset.
void CProjectStore::WriteIndexWhole(TableHandle& h, std::uint32_t countBefore) {
  WriteIndexRange(h, 0, h.head.capacity, countBefore);
}

// Writes the entries [first, end) between two writes of the head. The first carries the
// new revision with the count as it was (`countBefore`), so a client that kept the index
// from its last read rereads it from here on; the last carries the new count, which
// commits the change. Unused entries are zero on disk, so the bytes after writing only
// what changed are those a whole rewrite leaves. A writer stopped anywhere leaves a head
// that describes whole entries and a revision that no client has seen with other ones.
void CProjectStore::WriteIndexRange(TableHandle& h, std::uint32_t first, std::uint32_t end,
                                    std::uint32_t countBefore, bool entryBeforeHead) {
  const std::uint32_t offset = EntryOf(h).indexOffset;
  if (offset == 0) Fail(DBStatus::kNoIndex);
  std::uint8_t head[IndexHead::kSize];
  IndexHead announced = h.head;
  announced.count = countBefore;
  announced.Encode(head);
  Write(offset, head, sizeof head);
  if (end > first) {
    std::vector<std::uint8_t> bytes(std::size_t{end - first} * IndexEntry::kSize);
    for (std::uint32_t i = first; i < end; ++i) {
      h.entries[i].Encode(bytes.data() + std::size_t{i - first} * IndexEntry::kSize);
    }
    Write(std::uint64_t{offset} + IndexHead::kSize + std::uint64_t{first} * IndexEntry::kSize,
          bytes.data(), bytes.size());
  }
  if (entryBeforeHead) WriteTableEntry(h);
  h.head.Encode(head);
  Write(offset, head, sizeof head);
  h.heldOffset = offset;
  h.indexHeld = true;
}

// The slot of a record in the index; the search is linear, the index being unsorted.
std::uint32_t CProjectStore::FindEntry(const TableHandle& h, std::uint32_t id) const {
  for (std::uint32_t i = 0; i < h.head.count; ++i) {
    if (h.entries[i].id == id) return i;
  }
  Fail(DBStatus::kNoSuchRecord);
}

void CProjectStore::InsertIntoIndex(TableHandle& h, std::uint32_t& id, std::uint32_t offset,
                                    std::uint32_t size) {
  TableEntry& entry = EntryOf(h);
  const bool grows = h.head.count >= h.head.capacity;
  if (grows) {
    h.head.capacity += IndexHead::kGrowth;
    h.entries.resize(h.head.capacity);
  }
  if (id == 0) {
    id = entry.nextId;
    // A write that failed between the index and the TableEntry leaves nextId behind
    // the index; the id must still not be given twice.
    if (id <= h.maxId) id = h.maxId + 1;
  }
  if (entry.nextId <= id) entry.nextId = id + 1;
  h.maxId = std::max(h.maxId, id);
  const std::uint32_t slot = h.head.count;
  h.entries[slot] = {id, offset, size};
  ++h.head.count;
  ++h.head.revision;
  entry.count = h.head.count;
  ++entry.revision;
  if (grows) {
    // The grown block goes to the end of the file; the old one stays as dead bytes.
    entry.indexOffset = FindHoleForRecord(
        static_cast<std::uint32_t>(IndexHead::kSize + h.head.capacity * IndexEntry::kSize));
    // The grown block is complete before the TableEntry points at it.
    WriteIndexWhole(h, slot);
    WriteTableEntry(h);
  } else {
    // The TableEntry, with nextId past the new id, goes before the head that makes the
    // entry count: an id the index ever showed is never given again, even when the
    // record is deleted before the next add.
    WriteIndexRange(h, slot, slot + 1, slot, true);
  }
}

void CProjectStore::RemoveFromIndex(TableHandle& h, std::uint32_t slot) {
  TableEntry& entry = EntryOf(h);
  const std::uint32_t count = h.head.count;
  std::copy(h.entries.begin() + slot + 1, h.entries.begin() + count, h.entries.begin() + slot);
  h.entries[count - 1] = IndexEntry{};
  --h.head.count;
  entry.count = h.head.count;
  ++entry.revision;
  WriteTableEntry(h);
  ++h.head.revision;
  WriteIndexRange(h, slot, count, count);
}

// ---- records ----

void CProjectStore::WriteRecordHeader(std::uint64_t offset, Tag tag, std::uint32_t id,
                                      std::uint32_t size, std::uint16_t checksum, bool guarded) {
  RecordHeader rh;
  rh.table = tag;
  rh.id = id;
  rh.size = size;
  rh.checksum = checksum;
  std::uint8_t bytes[RecordHeader::kSize];
  rh.Encode(bytes);
  Write(offset, bytes, sizeof bytes, guarded);
}

// Writes a record at the end of the file with id 0 in its header, enters it in the
// index, and only then patches the id: a crash in between leaves dead bytes or a record
// that reads as damaged, never a wrong one.
// Writes a stored record at `position`: in a file with headers, its RecordHeader (with
// `id`) and the payload in one write, guarded; else the payload alone. Answers the
// payload's checksum (0 in a file without headers, where none is kept).
std::uint16_t CProjectStore::WriteStoredRecord(std::uint32_t position, Tag tag, std::uint32_t id,
                                               std::span<const std::uint8_t> data) {
  if (!HeadersInRecords()) {
    Write(position, data.data(), data.size(), true);
    return 0;
  }
  std::vector<std::uint8_t> bytes(StoredSize(data.size()));
  RecordHeader rh;
  rh.table = tag;
  rh.id = id;
  rh.size = static_cast<std::uint32_t>(data.size());
  rh.checksum = Checksum::Of(data.data(), data.size());
  rh.Encode(bytes.data());
  if (!data.empty()) std::memcpy(bytes.data() + RecordHeader::kSize, data.data(), data.size());
  Write(position, bytes.data(), bytes.size(), true);
  return rh.checksum;
}

// Whether a RecordHeader is the one the index promised.
bool CProjectStore::HeaderMatches(const RecordHeader& rh, Tag tag, std::uint32_t id) {
  return rh.marker == kRecordMarker && rh.table == tag && rh.id == id;
}

// Writes a record at the end of the file with id 0 in its header, enters it in the
// index, and only then patches the id: a crash in between leaves dead bytes or a record
// that reads as damaged, never a wrong one.
std::uint32_t CProjectStore::AppendRecord(TableHandle& h, Tag tag,
                                          std::span<const std::uint8_t> data, std::uint32_t id) {
  const std::uint32_t stored = StoredSize(data.size());
  const std::uint32_t position = FindHoleForRecord(stored);
  const std::uint16_t checksum = WriteStoredRecord(position, tag, 0, data);
  InsertIntoIndex(h, id, position, stored);
  if (HeadersInRecords()) {
    WriteRecordHeader(position, tag, id, static_cast<std::uint32_t>(data.size()), checksum, false);
  }
  return id;
}

// The stored bytes of a record. Where nobody else changes the file under this client (a
// single-user file, or a bulk read under a claim, which takes the index as it was at its
// start anyway), reads go through a window of the file read ahead, so that a table read
// record by record costs one system call per window and not one per record.
const std::uint8_t* CProjectStore::StoredBytes(std::uint32_t offset, std::uint32_t size) {
  if (multiUser_ != 0 && !exclusiveHeld_) {
    scratch_.resize(size);
    ReadExactly(offset, scratch_.data(), size);
    return scratch_.data();
  }
  if (offset >= readAheadStart_ &&
      std::uint64_t{offset} + size <= readAheadStart_ + readAhead_.size()) {
    return readAhead_.data() + (offset - readAheadStart_);
  }
  readAhead_.clear();
  readAhead_.resize(std::max<std::size_t>(kReadAheadSize, size));
  std::size_t got = 0;
  try {
    got = file_->ReadAt(offset, readAhead_.data(), readAhead_.size());
  } catch (const platform::FileError&) {
    readAhead_.clear();
    Fail(DBStatus::kIoError);
  }
  readAhead_.resize(got);
  readAheadStart_ = offset;
  if (got < size) Fail(DBStatus::kIoError);
  return readAhead_.data();
}

// Reads a record's payload into `out`, reusing its room. On a failure `out` is empty.
void CProjectStore::ReadPayload(const IndexEntry& e, Tag tag, std::vector<std::uint8_t>& out) {
  out.clear();
  const bool headers = HeadersInRecords();
  if (headers && e.size < RecordHeader::kSize) Fail(DBStatus::kBadRecordHeader);
  if (e.size > kTrustedSize && std::uint64_t{e.offset} + e.size > FileLength()) {
    Fail(DBStatus::kIoError);
  }
  const std::uint8_t* bytes = StoredBytes(e.offset, e.size);
  if (!headers) {
    out.assign(bytes, bytes + e.size);
    return;
  }
  const RecordHeader rh = RecordHeader::Decode(bytes);
  if (!HeaderMatches(rh, tag, e.id)) Fail(DBStatus::kBadRecordHeader);
  const std::uint8_t* payload = bytes + RecordHeader::kSize;
  const std::size_t length = e.size - RecordHeader::kSize;
  if (Checksum::Of(payload, length) != rh.checksum) Fail(DBStatus::kBadChecksum);
  out.assign(payload, payload + length);
}

DBStatus CProjectStore::GetTableEntry(Tag tag, TableEntry& out) {
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kAlways, [&](TableHandle& h) {
    if (multiUser_ == 0) ReadTableEntry(h);  // freshly read in every mode
    out = EntryOf(h);
  });
}

DBStatus CProjectStore::CountRecords(Tag tag, std::uint32_t& count) {
  // The index is the truth: its head is written before the TableEntry, so a writer
  // stopped between the two leaves the entry's count behind. Loading by the entry's count
  // would lose the last record of the table.
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kAlways, [&](TableHandle& h) {
    LoadIndex(h);
    count = h.head.count;
  });
}

DBStatus CProjectStore::GetRecordSize(Tag tag, std::uint32_t id, std::uint32_t& size) {
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kAlways, [&](TableHandle& h) {
    LoadIndex(h);
    const IndexEntry& e = h.entries[FindEntry(h, id)];
    const std::uint32_t overhead = HeadersInRecords() ? RecordHeader::kSize : 0;
    size = e.size >= overhead ? e.size - overhead : 0;
  });
}

DBStatus CProjectStore::AddRecord(Tag tag, std::span<const std::uint8_t> data, std::uint32_t* id) {
  return RecordOperation(tag, Effect::kChanges, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    const std::uint32_t given = AppendRecord(h, tag, data, 0);
    if (id != nullptr) *id = given;
  });
}

DBStatus CProjectStore::AddRecordFromFile(Tag tag, const std::string& path, std::uint32_t* id) {
  return RecordOperation(tag, Effect::kChanges, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    std::unique_ptr<platform::File> source;
    try {
      source = files_.Open(path, platform::OpenMode::kRead);
    } catch (const platform::FileError&) {
      Fail(DBStatus::kCannotOpen);
    }
    std::vector<std::uint8_t> piece(kCopyPiece);
    const std::uint64_t length = source->Length();
    if (length > 0xFFFFFFFFu - RecordHeader::kSize) Fail(DBStatus::kNoMemory);
    auto readPiece = [&](std::uint64_t at, std::size_t n) {
      if (source->ReadAt(at, piece.data(), n) != n) Fail(DBStatus::kIoError);
    };
    Checksum sum;
    for (std::uint64_t at = 0; at < length; at += kCopyPiece) {
      const std::size_t n =
          static_cast<std::size_t>(std::min<std::uint64_t>(kCopyPiece, length - at));
      readPiece(at, n);
      sum.Add(piece.data(), n);
    }

    LoadIndex(h);
    const std::uint32_t stored = StoredSize(static_cast<std::size_t>(length));
    const std::uint32_t position = FindHoleForRecord(stored);
    const std::uint32_t overhead = HeadersInRecords() ? RecordHeader::kSize : 0;
    if (HeadersInRecords()) {
      WriteRecordHeader(position, tag, 0, static_cast<std::uint32_t>(length), sum.value(), true);
    }
    for (std::uint64_t at = 0; at < length; at += kCopyPiece) {
      const std::size_t n =
          static_cast<std::size_t>(std::min<std::uint64_t>(kCopyPiece, length - at));
      readPiece(at, n);
      Write(position + overhead + at, piece.data(), n, at == 0 && overhead == 0);
    }
    std::uint32_t given = 0;
    InsertIntoIndex(h, given, position, stored);
    if (HeadersInRecords()) {
      WriteRecordHeader(position, tag, given, static_cast<std::uint32_t>(length), sum.value(),
                        false);
    }
    if (id != nullptr) *id = given;
  });
}

DBStatus CProjectStore::PutRecord(Tag tag, std::span<const std::uint8_t> data, std::uint32_t id,
                                  PutMode mode) {
  return RecordOperation(tag, Effect::kChanges, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    const auto existing = std::find_if(h.entries.begin(), h.entries.begin() + h.head.count,
                                       [id](const IndexEntry& e) { return e.id == id; });
    if (existing != h.entries.begin() + h.head.count) {
      const std::uint32_t overhead = HeadersInRecords() ? RecordHeader::kSize : 0;
      const std::uint32_t storedPayload =
          existing->size >= overhead ? existing->size - overhead : 0;
      if (mode == PutMode::kKeep) Fail(DBStatus::kRecordKept);
      if (mode == PutMode::kKeepIfShorter && data.size() < storedPayload) {
        Fail(DBStatus::kRecordKept);
      }
      // Replacing is a delete followed by an add, each a change of its own.
      RemoveFromIndex(h, static_cast<std::uint32_t>(existing - h.entries.begin()));
      header_.CountChange();
    }
    (void)AppendRecord(h, tag, data, id);
  });
}

DBStatus CProjectStore::UpdateRecord(Tag tag, std::uint32_t id,
                                     std::span<const std::uint8_t> data) {
  return RecordOperation(tag, Effect::kChanges, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    const std::uint32_t slot = FindEntry(h, id);
    const std::uint32_t stored = StoredSize(data.size());
    // The new version is written apart from the old one, even at the same length: a
    // writer killed inside the write would otherwise leave neither version whole. The
    // old record stays valid until the index points at the new one.
    const std::uint32_t position = FindHoleForRecord(stored);
    (void)WriteStoredRecord(position, tag, id, data);
    h.entries[slot] = {id, position, stored};
    ++h.head.revision;
    WriteIndexRange(h, slot, slot + 1, h.head.count);
    EntryOf(h).count = h.head.count;
    WriteTableEntry(h);
  });
}

DBStatus CProjectStore::DeleteRecord(Tag tag, std::uint32_t id) {
  return RecordOperation(tag, Effect::kChanges, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    RemoveFromIndex(h, FindEntry(h, id));
  });
}

DBStatus CProjectStore::ReadRecord(Tag tag, std::uint32_t id, std::vector<std::uint8_t>& out) {
  out.clear();
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    ReadPayload(h.entries[FindEntry(h, id)], tag, out);
  });
}

DBStatus CProjectStore::ReadRecordByIndex(Tag tag, std::uint32_t position,
                                          std::vector<std::uint8_t>& out, std::uint32_t* id) {
  out.clear();
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    if (position == 0 || position > h.head.count) Fail(DBStatus::kBadPosition);
    const IndexEntry& e = h.entries[position - 1];
    // The id is told even when the record turns out damaged, so it can be named.
    if (id != nullptr) *id = e.id;
    ReadPayload(e, tag, out);
  });
}

DBStatus CProjectStore::ReadRecordInto(Tag tag, std::uint32_t id, std::span<std::uint8_t> buffer,
                                       std::uint32_t& delivered) {
  delivered = 0;
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    std::vector<std::uint8_t> payload;
    ReadPayload(h.entries[FindEntry(h, id)], tag, payload);
    const std::size_t n = std::min(buffer.size(), payload.size());
    if (n != 0) std::memcpy(buffer.data(), payload.data(), n);
    delivered = static_cast<std::uint32_t>(n);
  });
}

DBStatus CProjectStore::ReadRecordToFile(Tag tag, std::uint32_t id, const std::string& path) {
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    const IndexEntry e = h.entries[FindEntry(h, id)];
    std::uint32_t payloadOffset = e.offset;
    std::uint32_t length = e.size;
    RecordHeader rh;
    if (HeadersInRecords()) {
      if (e.size < RecordHeader::kSize) Fail(DBStatus::kBadRecordHeader);
      std::uint8_t bytes[RecordHeader::kSize];
      ReadExactly(e.offset, bytes, sizeof bytes);
      rh = RecordHeader::Decode(bytes);
      if (!HeaderMatches(rh, tag, e.id)) Fail(DBStatus::kBadRecordHeader);
      payloadOffset += static_cast<std::uint32_t>(RecordHeader::kSize);
      length -= static_cast<std::uint32_t>(RecordHeader::kSize);
    }
    std::unique_ptr<platform::File> target;
    try {
      target = files_.Open(path, platform::OpenMode::kCreateReadWrite);
    } catch (const platform::FileError&) {
      Fail(DBStatus::kCannotCreate);
    }
    std::vector<std::uint8_t> piece(kCopyPiece);
    for (std::uint32_t at = 0; at < length;) {
      const std::uint32_t n = std::min<std::uint32_t>(length - at, kCopyPiece);
      ReadExactly(std::uint64_t{payloadOffset} + at, piece.data(), n);
      target->WriteAt(at, piece.data(), n);
      at += n;
    }
    if (!HeadersInRecords()) return;
    // The check reads back what reached the file, not what was meant to.
    Checksum sum;
    for (std::uint32_t at = 0; at < length;) {
      const std::size_t n = target->ReadAt(at, piece.data(), kCheckPiece);
      if (n == 0) break;
      sum.Add(piece.data(), n);
      at += static_cast<std::uint32_t>(n);
    }
    if (sum.value() != rh.checksum) {
      target.reset();
      files_.Remove(path);
      Fail(DBStatus::kBadChecksum);
    }
  });
}

DBStatus CProjectStore::ReadIndex(Tag tag, std::vector<IndexEntry>& out) {
  out.clear();
  return RecordOperation(tag, Effect::kReads, EntryRefresh::kUnlessClaimed, [&](TableHandle& h) {
    LoadIndex(h);
    out.assign(h.entries.begin(), h.entries.begin() + h.head.count);
  });
}

}  // namespace qm
