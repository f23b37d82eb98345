// Encodings of the fixed blocks.
#include "store/blocks.h"

namespace qm {

void ProjectHeader::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(magic);
  w.U16(version);
  w.U16(multiUser);
  w.U32(tableDirectoryOffset);
  w.U32(lockAreaOffset);
  w.U32(holeBlockOffset);
  w.U32(userBlockOffset);
  w.U32(changeCounter);
  w.U32(lockBlockOffset);
  w.Zeros(96);
}

ProjectHeader ProjectHeader::Decode(const std::uint8_t* in) {
  BeReader r(in);
  ProjectHeader h;
  h.magic = r.U32();
  h.version = r.U16();
  h.multiUser = r.U16();
  h.tableDirectoryOffset = r.U32();
  h.lockAreaOffset = r.U32();
  h.holeBlockOffset = r.U32();
  h.userBlockOffset = r.U32();
  h.changeCounter = r.U32();
  h.lockBlockOffset = r.U32();
  return h;
}

void TableEntry::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(tag);
  w.U32(count);
  w.U32(nextId);
  w.U32(indexOffset);
  w.U32(revision);
}

TableEntry TableEntry::Decode(const std::uint8_t* in) {
  BeReader r(in);
  TableEntry e;
  e.tag = r.U32();
  e.count = r.U32();
  e.nextId = r.U32();
  e.indexOffset = r.U32();
  e.revision = r.U32();
  return e;
}

void TableDirectory::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(tag);
  w.U16(capacity);
  w.U16(count);
  w.U32(reserved);
  for (std::size_t i = 0; i < entries.size(); ++i) entries[i].Encode(out + EntryOffset(i));
}

TableDirectory TableDirectory::Decode(const std::uint8_t* in) {
  BeReader r(in);
  TableDirectory d;
  d.tag = r.U32();
  d.capacity = r.U16();
  d.count = r.U16();
  d.reserved = r.U32();
  for (std::size_t i = 0; i < d.entries.size(); ++i) {
    d.entries[i] = TableEntry::Decode(in + EntryOffset(i));
  }
  return d;
}

void IndexHead::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(tag);
  w.U32(capacity);
  w.U32(count);
  w.U32(revision);
  w.U32(reserved);
}

IndexHead IndexHead::Decode(const std::uint8_t* in) {
  BeReader r(in);
  IndexHead h;
  h.tag = r.U32();
  h.capacity = r.U32();
  h.count = r.U32();
  h.revision = r.U32();
  h.reserved = r.U32();
  return h;
}

void IndexEntry::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(id);
  w.U32(offset);
  w.U32(size);
}

IndexEntry IndexEntry::Decode(const std::uint8_t* in) {
  BeReader r(in);
  IndexEntry e;
  e.id = r.U32();
  e.offset = r.U32();
  e.size = r.U32();
  return e;
}

void RecordHeader::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(marker);
  w.U32(table);
  w.U32(id);
  w.U32(size);
  w.U16(checksum);
  w.U16(reserved);
}

RecordHeader RecordHeader::Decode(const std::uint8_t* in) {
  BeReader r(in);
  RecordHeader h;
  h.marker = r.U32();
  h.table = r.U32();
  h.id = r.U32();
  h.size = r.U32();
  h.checksum = r.U16();
  h.reserved = r.U16();
  return h;
}

void UserBlock::Encode(std::uint16_t version, std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(tag);
  w.U32(capacity);
  w.U32(loggedIn);
  w.U32(changeCounter);
  w.U32(reserved);
  const bool longSlots = SlotSize(version) == 22;
  for (const UserSlot& s : slots) {
    w.U32(s.userId);
    w.U16(s.lockSlot);
    if (longSlots) w.Bytes(s.reserved.data(), s.reserved.size());
  }
}

UserBlock UserBlock::Decode(std::uint16_t version, const std::uint8_t* in) {
  BeReader r(in);
  UserBlock b;
  b.tag = r.U32();
  b.capacity = r.U32();
  b.loggedIn = r.U32();
  b.changeCounter = r.U32();
  b.reserved = r.U32();
  const bool longSlots = SlotSize(version) == 22;
  for (UserSlot& s : b.slots) {
    s.userId = r.U32();
    s.lockSlot = r.U16();
    if (longSlots) r.Bytes(s.reserved.data(), s.reserved.size());
  }
  return b;
}

void HoleHead::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(tag);
  w.U32(capacity);
  w.U32(count);
  w.U32(revision);
  w.U32(reserved);
  w.U32(largest);
}

HoleHead HoleHead::Decode(const std::uint8_t* in) {
  BeReader r(in);
  HoleHead h;
  h.tag = r.U32();
  h.capacity = r.U32();
  h.count = r.U32();
  h.revision = r.U32();
  h.reserved = r.U32();
  h.largest = r.U32();
  return h;
}

void LockBlock::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(reserved);
  w.U32(changeCounter);
  for (const RecordLockEntry& e : entries) {
    w.U32(e.table);
    w.U32(e.id);
    w.U32(e.userId);
    w.U16(e.lockSlot);
    w.U32(e.lockedAt);
  }
}

LockBlock LockBlock::Decode(const std::uint8_t* in) {
  BeReader r(in);
  LockBlock b;
  b.reserved = r.U32();
  b.changeCounter = r.U32();
  for (RecordLockEntry& e : b.entries) {
    e.table = r.U32();
    e.id = r.U32();
    e.userId = r.U32();
    e.lockSlot = r.U16();
    e.lockedAt = r.U32();
  }
  return b;
}

void ChangeNotice::Encode(std::uint8_t* out) const {
  BeWriter w(out);
  w.U32(kind);
  w.U32(reserved);
  w.U32(sender);
  w.U32(dataLength);
  w.Bytes(data.data(), data.size());
}

ChangeNotice ChangeNotice::Decode(const std::uint8_t* in) {
  BeReader r(in);
  ChangeNotice n;
  n.kind = r.U32();
  n.reserved = r.U32();
  n.sender = r.U32();
  n.dataLength = r.U32();
  r.Bytes(n.data.data(), n.data.size());
  return n;
}

}  // namespace qm
