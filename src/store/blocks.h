// The fixed blocks of a project file, in host order, with their big-endian encodings.
//
// A new file, as Create writes it:
//
//   offset  length      block
//   0       128         ProjectHeader
//   128     244         LockArea, first part: lock targets, never written
//   372     20          LockArea, second part: slot numbers of the exclusive claims
//   392     652         TableDirectory
//   1044    2836        UserBlock (788 before version 357)
//   3880    24 + 1024   HoleBlock, capacity 128
//   4928    2312        LockBlock
//   7240    1556        RecordIndex of the table msgs
//
// The file then grows at its end by records and moved blocks; the header says where the
// blocks are. Every integer is big-endian, nothing is aligned.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "store/bytes.h"

namespace qm {

inline constexpr Tag kMagicTag = MakeTag("dbdb");
inline constexpr Tag kDirectoryTag = MakeTag("tabl");
inline constexpr Tag kIndexTag = MakeTag("indx");
inline constexpr Tag kRecordMarker = MakeTag("RcRd");
inline constexpr Tag kUserBlockTag = MakeTag("user");
inline constexpr Tag kHoleBlockTag = MakeTag("caps");
inline constexpr Tag kFreeTag = MakeTag("????");
inline constexpr Tag kMessagesTag = MakeTag("msgs");

inline constexpr std::uint16_t kOldestVersion = 336;
inline constexpr std::uint16_t kNewestVersion = 358;

// Version 352 and every version from 358 put a RecordHeader before each payload.
constexpr bool HasRecordHeaders(std::uint16_t version) { return version == 352 || version >= 358; }

// ProjectHeader, 128 bytes at offset 0:
//   0  4  magic                 "dbdb"
//   4  2  version               336 to 358
//   6  2  multiUser             0 single-user, else multi-user
//   8  4  tableDirectoryOffset
//  12  4  lockAreaOffset
//  16  4  holeBlockOffset
//  20  4  userBlockOffset
//  24  4  changeCounter         moved by every committed change, never back to 0
//  28  4  lockBlockOffset
//  32 96  reserved, zero
struct ProjectHeader {
  static constexpr std::size_t kSize = 128;
  static constexpr std::uint64_t kChangeCounterOffset = 24;
  Tag magic = kMagicTag;
  std::uint16_t version = kNewestVersion;
  std::uint16_t multiUser = 1;
  std::uint32_t tableDirectoryOffset = 0;
  std::uint32_t lockAreaOffset = 0;
  std::uint32_t holeBlockOffset = 0;
  std::uint32_t userBlockOffset = 0;
  std::uint32_t changeCounter = 0;
  std::uint32_t lockBlockOffset = 0;

  void Encode(std::uint8_t* out) const;
  static ProjectHeader Decode(const std::uint8_t* in);
  // 1 after 0xFFFFFFFF, so that 0 never follows a change.
  void CountChange() { changeCounter = changeCounter == 0xFFFFFFFF ? 1 : changeCounter + 1; }
};

// TableEntry, 20 bytes:
//   0  4  tag          "????" in a free entry
//   4  4  count        records in the table
//   8  4  nextId       the id the next added record gets
//  12  4  indexOffset  the table's RecordIndex; 0 in a free entry
//  16  4  revision     moved by every add and delete
struct TableEntry {
  static constexpr std::size_t kSize = 20;
  Tag tag = kFreeTag;
  std::uint32_t count = 0;
  std::uint32_t nextId = 1;
  std::uint32_t indexOffset = 0;
  std::uint32_t revision = 0;

  void Encode(std::uint8_t* out) const;
  static TableEntry Decode(const std::uint8_t* in);
};

// TableDirectory, 652 bytes:
//   0  4       tag       "tabl"
//   4  2       capacity  32
//   6  2       count     tables in use
//   8  4       reserved
//  12  32x20   entries
struct TableDirectory {
  static constexpr std::size_t kSize = 652;
  static constexpr std::uint16_t kCapacity = 32;
  Tag tag = kDirectoryTag;
  std::uint16_t capacity = kCapacity;
  std::uint16_t count = 0;
  std::uint32_t reserved = 0;
  std::array<TableEntry, kCapacity> entries{};

  // Valid when tagged, capacity >= count and count < 32: a directory with all 32
  // entries in use is refused, so 31 tables is the practical limit.
  bool Valid() const { return tag == kDirectoryTag && capacity >= count && count < kCapacity; }
  static constexpr std::uint64_t EntryOffset(std::size_t i) { return 12 + i * TableEntry::kSize; }
  void Encode(std::uint8_t* out) const;
  static TableDirectory Decode(const std::uint8_t* in);
};

// RecordIndex head, 20 bytes, followed by capacity IndexEntries:
//   0  4  tag       "indx"
//   4  4  capacity  a multiple of 128
//   8  4  count     entries in use, packed at the front
//  12  4  revision  moved by every change of the index
//  16  4  reserved  must be 0
struct IndexHead {
  static constexpr std::size_t kSize = 20;
  static constexpr std::uint32_t kGrowth = 128;
  Tag tag = kIndexTag;
  std::uint32_t capacity = kGrowth;
  std::uint32_t count = 0;
  std::uint32_t revision = 0;
  std::uint32_t reserved = 0;

  bool Valid() const { return tag == kIndexTag && capacity >= count && reserved == 0; }
  void Encode(std::uint8_t* out) const;
  static IndexHead Decode(const std::uint8_t* in);
};

// IndexEntry, 12 bytes, in order of first insertion:
//   0  4  id      unique in the table, not 0
//   4  4  offset  where the stored record begins, its header included
//   8  4  size    stored bytes, header included
struct IndexEntry {
  static constexpr std::size_t kSize = 12;
  std::uint32_t id = 0;
  std::uint32_t offset = 0;
  std::uint32_t size = 0;

  void Encode(std::uint8_t* out) const;
  static IndexEntry Decode(const std::uint8_t* in);
  bool operator==(const IndexEntry&) const = default;
};

// RecordHeader, 20 bytes before each payload in files that have them:
//   0  4  marker    "RcRd"
//   4  4  table     the table's tag
//   8  4  id        0 until the index holds the record, then patched
//  12  4  size      payload bytes, without this header
//  16  2  checksum  of the payload
//  18  2  reserved
struct RecordHeader {
  static constexpr std::size_t kSize = 20;
  Tag marker = kRecordMarker;
  Tag table = 0;
  std::uint32_t id = 0;
  std::uint32_t size = 0;
  std::uint16_t checksum = 0;
  std::uint16_t reserved = 0;

  void Encode(std::uint8_t* out) const;
  static RecordHeader Decode(const std::uint8_t* in);
};

// UserSlot: userId (4, 0 when free), lockSlot (2, the life-sign lock number), and from
// version 357 on 16 reserved bytes, so 22 bytes, else 6.
struct UserSlot {
  std::uint32_t userId = 0;
  std::uint16_t lockSlot = 0;
  std::array<std::uint8_t, 16> reserved{};
};

// UserBlock: a 20-byte head (tag "user", capacity 128, loggedIn, changeCounter,
// reserved) and 128 slots: 2836 bytes from version 357 on, 788 before.
struct UserBlock {
  static constexpr std::uint32_t kCapacity = 128;
  Tag tag = kUserBlockTag;
  std::uint32_t capacity = kCapacity;
  std::uint32_t loggedIn = 0;
  std::uint32_t changeCounter = 0;
  std::uint32_t reserved = 0;
  std::array<UserSlot, kCapacity> slots{};

  static constexpr std::size_t SlotSize(std::uint16_t version) { return version >= 357 ? 22 : 6; }
  static constexpr std::size_t Size(std::uint16_t version) {
    return 20 + kCapacity * SlotSize(version);
  }
  // The long form's size; a guarded write keeps out of this much whatever the version.
  static constexpr std::size_t kLongSize = 2836;
  bool Valid() const { return tag == kUserBlockTag && capacity >= loggedIn && loggedIn < 128; }
  void Encode(std::uint16_t version, std::uint8_t* out) const;
  static UserBlock Decode(std::uint16_t version, const std::uint8_t* in);
};

// HoleBlock head, 24 bytes, then capacity pairs of (offset, size), sorted by offset:
//   0  4  tag       "caps"
//   4  4  capacity  128 at first, grows by 128
//   8  4  count
//  12  4  revision
//  16  4  reserved
//  20  4  largest   largest hole ever merged, an upper bound
struct Hole {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  bool operator==(const Hole&) const = default;
};

struct HoleHead {
  static constexpr std::size_t kSize = 24;
  static constexpr std::uint32_t kGrowth = 128;
  Tag tag = kHoleBlockTag;
  std::uint32_t capacity = kGrowth;
  std::uint32_t count = 0;
  std::uint32_t revision = 0;
  std::uint32_t reserved = 0;
  std::uint32_t largest = 0;

  std::size_t BlockSize() const { return kSize + std::size_t{capacity} * 8; }
  void Encode(std::uint8_t* out) const;
  static HoleHead Decode(const std::uint8_t* in);
};

// RecordLockEntry, 18 bytes:
//   0  4  table     "????" when free
//   4  4  id
//   8  4  userId
//  12  2  lockSlot  the holder's life-sign lock number
//  14  4  lockedAt  timestamp plus 0x7C256A30, modulo 2^32
struct RecordLockEntry {
  static constexpr std::size_t kSize = 18;
  Tag table = kFreeTag;
  std::uint32_t id = 0;
  std::uint32_t userId = 0;
  std::uint16_t lockSlot = 0;
  std::uint32_t lockedAt = 0;
};

// LockBlock, 2312 bytes: reserved (4, below 128), changeCounter (4), 128 entries.
struct LockBlock {
  static constexpr std::size_t kSize = 2312;
  static constexpr std::uint32_t kEntries = 128;
  std::uint32_t reserved = 0;
  std::uint32_t changeCounter = 0;
  std::array<RecordLockEntry, kEntries> entries{};

  void Encode(std::uint8_t* out) const;
  static LockBlock Decode(const std::uint8_t* in);
};

// ChangeNotice, the 24-byte payload of a record of msgs:
//   0  4  kind
//   4  4  reserved    zero
//   8  4  sender      user id of the poster
//  12  4  dataLength  at most 8
//  16  8  data        zero filled behind dataLength
struct ChangeNotice {
  static constexpr std::size_t kSize = 24;
  static constexpr std::uint32_t kMaxData = 8;
  std::uint32_t kind = 0;
  std::uint32_t reserved = 0;
  std::uint32_t sender = 0;
  std::uint32_t dataLength = 0;
  std::array<std::uint8_t, kMaxData> data{};

  void Encode(std::uint8_t* out) const;
  static ChangeNotice Decode(const std::uint8_t* in);
};

// The LockArea: lock targets, absolute offsets, never written for the sake of a lock.
inline constexpr std::uint32_t kLockAreaSize = 264;
inline constexpr std::uint64_t kClaimTestOffset = 131;  // 20 bytes tested by BeginAccess
inline constexpr std::uint64_t kClaimTestLength = 20;
inline constexpr std::uint64_t kClaimSlotNumberOffset = 373;  // + 2n: the slot's number
inline constexpr std::uint64_t kClaimAreaEnd = 392;           // end of the 20 claim bytes

// A lock number n stands for the byte at offset 128 + n.
inline constexpr std::uint16_t kWriteLock = 128;
// Shared by every client from Create or Open to Close, single-user files included: while
// anyone holds it, the file is open somewhere and must not be made anew.
inline constexpr std::uint16_t kOpenSign = 129;
inline constexpr std::uint16_t kFirstClaimLock = 131;
inline constexpr std::uint16_t kFirstLifeSign = 200;
inline constexpr std::uint16_t kLastLifeSign = 399;
inline constexpr std::uint16_t kNoLockNumber = 0xFFFF;
constexpr std::uint64_t LockByteOffset(std::uint16_t number) { return 128u + number; }

}  // namespace qm
