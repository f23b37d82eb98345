// CProjectStore: one open project file as a small record database. Records are byte
// blocks addressed by table tag and 32-bit id; what is in them is the business of the
// items above. Each operation runs inside an access that holds the file's write lock,
// so clients in other processes see whole changes only.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"
#include "store/blocks.h"
#include "store/db_status.h"
#include "ui/ui.h"

namespace qm {

// One table of the open file: where its TableEntry stands and the index as this client
// last saw it.
struct TableHandle {
  std::size_t entrySlot = 0;  // position of the TableEntry in the directory
  IndexHead head;
  std::vector<IndexEntry> entries;  // head.capacity entries, unused ones zero
  // Where and at which revision the index in memory was read or written, so that an
  // access can keep it when the file's head still says the same.
  bool indexHeld = false;
  std::uint32_t heldOffset = 0;
  // The highest id the index has held since it was read.
  std::uint32_t maxId = 0;
};

// A change notice as a client receives it.
struct Notice {
  std::uint32_t kind = 0;
  std::uint32_t sender = 0;
  std::vector<std::uint8_t> data;  // at most 8 bytes, big-endian integers as posted
};

// Who holds a record lock.
struct LockHolder {
  std::uint16_t lockSlot = 0;
  std::uint32_t lockedAt = 0;  // as stored: the timestamp plus kLockStampOffset
  std::uint32_t userId = 0;
};

// PutRecord's answer to an id that exists already.
enum class PutMode : std::uint16_t {
  kKeep = 1,           // the stored record stays: 1039
  kKeepIfShorter = 2,  // stays (1039) when the new payload is shorter, else replaced
  kReplace = 3,
};

class CProjectStore {
 public:
  explicit CProjectStore(ui::Ui& ui, platform::FileSystem& files = platform::FileSystem::Real(),
                         platform::Clock& clock = platform::Clock::System());
  ~CProjectStore();
  CProjectStore(const CProjectStore&) = delete;
  CProjectStore& operator=(const CProjectStore&) = delete;

  // Makes a new file of the newest version with the table msgs; any failure is 1004.
  [[nodiscard]] DBStatus Create(const std::string& path, std::uint16_t multiUser);
  [[nodiscard]] DBStatus Open(const std::string& path);
  // Closes the file, which gives up every lock this client holds.
  [[nodiscard]] DBStatus Close();
  [[nodiscard]] DBStatus SetMultiUser(std::uint16_t mode);
  // Gives a file older than version 357 the long user block, written at the end of the
  // file; the short one stays behind as dead bytes. Version 352 becomes 358, any other
  // 357, so the records keep the form they were written in.
  [[nodiscard]] DBStatus UpgradeUserBlock();

  // Adds an empty table. Runs without an access of its own: the caller holds the file
  // alone or brackets the call with BeginAccess and EndAccess. The name is not stored.
  [[nodiscard]] DBStatus AddTable(Tag tag, std::string_view name);
  // The handle of a table known to this client, or null.
  TableHandle* FindTable(Tag tag);
  [[nodiscard]] DBStatus GetTableEntry(Tag tag, TableEntry& out);
  [[nodiscard]] DBStatus CountRecords(Tag tag, std::uint32_t& count);
  // Payload bytes of a record, without its header.
  [[nodiscard]] DBStatus GetRecordSize(Tag tag, std::uint32_t id, std::uint32_t& size);

  // Appends a record and gives it the next id of the table.
  [[nodiscard]] DBStatus AddRecord(Tag tag, std::span<const std::uint8_t> data, std::uint32_t* id);
  // Appends a record whose payload is the bytes of the file at `path`.
  [[nodiscard]] DBStatus AddRecordFromFile(Tag tag, const std::string& path, std::uint32_t* id);
  // Stores a record under the caller's id; an existing one is dealt with as `mode` says.
  // A replaced record goes to the end of the index.
  [[nodiscard]] DBStatus PutRecord(Tag tag, std::span<const std::uint8_t> data, std::uint32_t id,
                                   PutMode mode);
  // Rewrites a record in place when its length stays, else writes it at the end of the
  // file and only then points the index at it.
  [[nodiscard]] DBStatus UpdateRecord(Tag tag, std::uint32_t id,
                                      std::span<const std::uint8_t> data);
  // Removes a record from the index; its bytes stay in the file until compaction.
  [[nodiscard]] DBStatus DeleteRecord(Tag tag, std::uint32_t id);

  // Reads a payload. A damaged record (header or checksum) gives no data at all.
  [[nodiscard]] DBStatus ReadRecord(Tag tag, std::uint32_t id, std::vector<std::uint8_t>& out);
  // Reads the record at a 1-based position of the index.
  [[nodiscard]] DBStatus ReadRecordByIndex(Tag tag, std::uint32_t position,
                                           std::vector<std::uint8_t>& out, std::uint32_t* id);
  // Reads at most buffer.size() bytes of a payload; the checksum covers the whole payload.
  [[nodiscard]] DBStatus ReadRecordInto(Tag tag, std::uint32_t id, std::span<std::uint8_t> buffer,
                                        std::uint32_t& delivered);
  // Copies a payload into a new file at `path`, then checks it by reading the file back.
  [[nodiscard]] DBStatus ReadRecordToFile(Tag tag, std::uint32_t id, const std::string& path);
  // The index of a table as it stands on disk, in index order.
  [[nodiscard]] DBStatus ReadIndex(Tag tag, std::vector<IndexEntry>& out);

  // Takes the write lock (multi-user files only); rereads the header when asked to.
  // Nests: an inner access finds the lock held and neither takes nor releases it.
  [[nodiscard]] DBStatus BeginAccess(bool rereadHeader);
  // With commit, writes the header and puts the file on the device; then releases the
  // write lock.
  [[nodiscard]] DBStatus EndAccess(bool commit);

  // Claims one of the ten exclusive slots for a bulk read of a table: while held, no
  // access takes the write lock and the index is not reread between reads.
  [[nodiscard]] DBStatus LockDatabase(Tag tag);
  [[nodiscard]] DBStatus UnlockDatabase();

  // Whether the header's change counter moved since this client last looked: one read
  // of four bytes, without any lock, so idle clients cost each other nothing.
  bool HasChanged();
  // Reads the table directory again, under the write lock, so that directory() shows the
  // tables as other clients left them.
  [[nodiscard]] DBStatus RefreshDirectory();

  // User slots and life signs. In a single-user file these answer 0 and lock nothing;
  // with no open file, 1013.
  [[nodiscard]] DBStatus LoginUser(std::uint32_t userId);
  [[nodiscard]] DBStatus LogoutUser(std::uint32_t userId);
  [[nodiscard]] DBStatus IsUserLoggedIn(std::uint32_t userId, bool& loggedIn);
  [[nodiscard]] DBStatus GetLoggedInUsers(std::vector<std::uint32_t>& userIds);
  // Whether the client holding a life-sign lock number is alive.
  bool IsLockNumberAlive(std::uint16_t number);

  // Record locks: advisory entries in the LockBlock, marking records being edited.
  [[nodiscard]] DBStatus LockRecord(Tag tag, std::uint32_t id, std::uint32_t userId);
  [[nodiscard]] DBStatus IsRecordLocked(Tag tag, std::uint32_t id, bool& locked,
                                        LockHolder* holder = nullptr);
  [[nodiscard]] DBStatus UnlockRecord(Tag tag, std::uint32_t id);
  [[nodiscard]] DBStatus UnlockUserRecords(std::uint32_t userId);
  // The lock entries as they stand in the file.
  [[nodiscard]] DBStatus ReadRecordLocks(std::vector<RecordLockEntry>& entries);

  // Change notices: small records in msgs that every other client reads once.
  [[nodiscard]] DBStatus PostMessage(std::uint32_t sender, std::uint32_t kind,
                                     std::span<const std::uint8_t> data);
  // The next notice posted by another client since this one opened; 1015 when none.
  [[nodiscard]] DBStatus GetNextMessage(Notice& notice);
  // Gives up the data of a delivered notice.
  static void FreeMessage(Notice& notice);

  // The sum of the sizes of the holes; 0 on any failure.
  std::uint32_t GetUnusedBytes();
  // Enters a stretch of the file as free, filling it with 0xFE and merging it with its
  // neighbours. Runs inside the caller's access.
  [[nodiscard]] DBStatus AddHole(std::uint32_t offset, std::uint32_t size);
  // Removes every change notice from msgs and enters their space as holes.
  [[nodiscard]] DBStatus PurgeMessages();
  // Rereads the user block and clears the slots of clients that are no longer alive.
  [[nodiscard]] DBStatus RefreshUsers();

  bool IsOpen() const { return file_ != nullptr; }
  const std::string& path() const { return path_; }
  bool multiUser() const { return multiUser_ != 0; }
  const ProjectHeader& header() const { return header_; }
  const TableDirectory& directory() const { return directory_; }
  const UserBlock& userBlock() const { return userBlock_; }
  const std::vector<Hole>& holes() const { return holes_; }
  // The tags of the tables this client knows, in directory order.
  std::vector<Tag> TableTags() const;

 private:
  struct Table {
    Tag tag;
    TableHandle handle;
  };
  enum class Effect { kReads, kChanges };
  enum class EntryRefresh { kUnlessClaimed, kAlways };

  // Runs `work` as one record operation: access, table, fresh TableEntry, the work,
  // the change counter, commit or release.
  template <class Work>
  DBStatus RecordOperation(Tag tag, Effect effect, EntryRefresh refresh, Work&& work);

  TableHandle& RequireTable(Tag tag);
  TableEntry& EntryOf(const TableHandle& h) { return directory_.entries[h.entrySlot]; }
  bool HeadersInRecords() const { return HasRecordHeaders(header_.version); }
  std::uint32_t StoredSize(std::size_t payloadSize) const;

  // Low-level reads and writes; failures are thrown as statuses.
  void ReadExactly(std::uint64_t offset, std::uint8_t* buffer, std::size_t n);
  void Write(std::uint64_t offset, const std::uint8_t* data, std::size_t n, bool guarded = false);
  void CheckGuard(std::uint64_t offset) const;
  bool IsRecordSpace(std::uint32_t offset, std::uint32_t size);
  std::uint64_t FileLength();

  DBStatus ReadHeader();
  void WriteHeader();
  void ReadDirectory();
  void WriteDirectory();
  void ReadTableEntry(TableHandle& h);
  void WriteTableEntry(const TableHandle& h);
  void LoadIndex(TableHandle& h);
  void WriteIndexWhole(TableHandle& h, std::uint32_t countBefore);
  // With `entryBeforeHead`, the TableEntry is written between the entries and the head.
  void WriteIndexRange(TableHandle& h, std::uint32_t first, std::uint32_t end,
                       std::uint32_t countBefore, bool entryBeforeHead = false);
  std::uint32_t FindEntry(const TableHandle& h, std::uint32_t id) const;
  void ReadHoleBlock();
  void WriteHoleBlock(bool fill);
  void ReadLockBlock();
  void WriteLockBlock();
  template <class Work>
  DBStatus LockBlockOperation(Work&& work);
  void WriteUserBlock();
  static void ClearLockEntry(RecordLockEntry& e);
  std::uint32_t FindHoleForRecord(std::uint32_t size);

  // The pieces of the record operations, run inside an access.
  std::uint32_t AppendRecord(TableHandle& h, Tag tag, std::span<const std::uint8_t> data,
                             std::uint32_t id);
  void InsertIntoIndex(TableHandle& h, std::uint32_t& id, std::uint32_t offset, std::uint32_t size);
  void RemoveFromIndex(TableHandle& h, std::uint32_t slot);
  std::uint16_t WriteStoredRecord(std::uint32_t position, Tag tag, std::uint32_t id,
                                  std::span<const std::uint8_t> data);
  static bool HeaderMatches(const RecordHeader& rh, Tag tag, std::uint32_t id);
  void WriteRecordHeader(std::uint64_t offset, Tag tag, std::uint32_t id, std::uint32_t size,
                         std::uint16_t checksum, bool guarded);
  void ReadPayload(const IndexEntry& e, Tag tag, std::vector<std::uint8_t>& out);
  const std::uint8_t* StoredBytes(std::uint32_t offset, std::uint32_t size);
  void ForgetReadAhead() { readAhead_.clear(); }

  bool IsByteAlive(std::uint16_t number);
  DBStatus WaitWhileHeld(std::uint32_t timeoutTicks, bool (CProjectStore::*held)());
  bool WriteLockHeldByOther();
  bool ClaimTestFails();
  void ReleaseByte(std::uint16_t number);

  ui::Ui& ui_;
  platform::FileSystem& files_;
  platform::Clock& clock_;

  std::unique_ptr<platform::File> file_;
  std::string path_;
  std::vector<Table> tables_;
  std::uint16_t multiUser_ = 1;
  std::uint16_t myLockNumber_ = kNoLockNumber;
  ProjectHeader header_;
  TableDirectory directory_;
  HoleHead holeHead_;
  std::vector<Hole> holes_;
  UserBlock userBlock_;
  LockBlock lockBlock_;
  std::uint32_t lastSeenChangeCounter_ = 0;
  std::uint32_t heldHoleRevision_ = 0;
  bool holesHeld_ = false;
  bool holesUnwritten_ = false;  // AddHole changed the list since it was last written
  bool exclusiveHeld_ = false;
  std::uint16_t exclusiveSlot_ = kNoLockNumber;
  bool inAccess_ = false;
  bool unflushed_ = false;  // written since the last flush
  // A window of the file read ahead, for reads where nobody else writes; see StoredBytes.
  std::vector<std::uint8_t> readAhead_;
  std::uint64_t readAheadStart_ = 0;
  std::vector<std::uint8_t> scratch_;
  std::uint32_t nextMessageId_ = 1;
  std::uint32_t myUserId_ = 0;
};

// Whether a client has the file at `path` open: any lock among its lock targets (the open
// sign, an access, a claim, a life sign). `multiUser` receives the header's flag. A file
// that cannot be read is open to nobody.
bool IsFileOpenElsewhere(platform::FileSystem& files, const std::string& path,
                         bool* multiUser = nullptr);

// What a lock entry's lockedAt adds to the timestamp.
inline constexpr std::uint32_t kLockStampOffset = 0x7C256A30;

}  // namespace qm
