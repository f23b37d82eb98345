// The results of store operations, and what a person reads when a project cannot be opened.
#pragma once

#include <cstdint>
#include <string>

namespace qm {

enum class DBStatus : std::uint32_t {
  kOk = 0,
  kCancelled = 2,          // the user cancelled an opening (not set by the store)
  kRecordLocked = 1001,    // locked by another user, or no free lock entry
  kNotProjectFile = 1002,  // wrong magic
  kCannotCreate = 1004,    // Create failed, or a target file could not be made
  kNoMemory = 1005,
  kCannotUpdate = 1006,  // not set by the store
  kTableExists = 1007,   // tag present, or no free TableEntry
  kNoSuchTable = 1009,
  kBadPosition = 1010,  // record position 0 or beyond the count
  kIoError = 1011,      // input or output failed, or a block is invalid
  kNoSuchRecord = 1012,
  kNotOpen = 1013,
  kNoMessage = 1015,  // no change notice waiting, or a single-user file
  kInUse = 1016,      // not set by the store
  kCannotOpen = 1017,
  kFileLocked = 1018,  // not set by the store
  kInTrash = 1019,     // not set by the store
  kAlreadyLoggedIn = 1020,
  kNotLoggedIn = 1021,
  kNullResult = 1022,
  kNoPermission = 1023,  // not set by the store
  kBusy = 1024,          // timed out waiting for a lock
  kLockNotTaken = 1025,  // the write lock was free after waiting, yet could not be taken
  kDirectoryFull = 1026,
  kNoIndex = 1027,
  kNoHole = 1028,  // internal: no free stretch fits
  kNoUserSlot = 1029,
  kNoClaimSlot = 1030,
  kTooOld = 1031,        // version below 336
  kTooNew = 1032,        // version above 358
  kGuardRefused = 1035,  // a guarded write would touch a fixed block
  kBadChecksum = 1036,
  kBadRecordHeader = 1037,
  kRecordKept = 1039,  // PutRecord left the stored record in place
  kDataTooNew = 2000,  // the project's data version is newer than the program's
};

inline std::uint32_t Code(DBStatus s) { return static_cast<std::uint32_t>(s); }

// The text shown when the opening of the project at `path` fails with `status`; empty
// for success and for a cancel.
std::string OpeningText(DBStatus status, const std::string& path);

// A short sentence on what went wrong, for tools that report a failed operation.
std::string StatusSentence(DBStatus status);

}  // namespace qm
