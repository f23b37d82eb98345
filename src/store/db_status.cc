// Texts of the store's results.
#include "store/db_status.h"

namespace qm {

std::string OpeningText(DBStatus status, const std::string& path) {
  const std::string cannotUpdate =
      "Could not update the file. Verify it is not locked and that you have read/write "
      "permission.";
  const std::string tooNew =
      "The project file you selected was created or updated by a newer version of Quillmark. "
      "You must obtain the latest version of Quillmark to open the file.";
  switch (status) {
    case DBStatus::kOk:
    case DBStatus::kCancelled:
      return {};
    case DBStatus::kNotProjectFile:
      return "The file you selected was either created by an old version of Quillmark or is "
             "not a Quillmark project file. If it is an old Quillmark project file, run DB "
             "Refit update it.";
    case DBStatus::kCannotCreate:
      return "Could not create the file.";
    case DBStatus::kNoMemory:
      return "Could not open file due insufficient memory.";
    case DBStatus::kCannotUpdate:
    case DBStatus::kTableExists:
      return cannotUpdate;
    case DBStatus::kIoError:
      return "Could not open file due to file I/O error.";
    case DBStatus::kInUse:
      return "Cannot open file. It is in use by another application.";
    case DBStatus::kCannotOpen:
      return "Cannot open file.";
    case DBStatus::kFileLocked:
      return "Cannot open file because it is locked. Unlock the file via the Finder before "
             "attempting to open it again.";
    case DBStatus::kInTrash:
      return "Cannot open the project '" + path +
             "' because it is in the trash. To open the project, first drag it out of the "
             "trash.";
    case DBStatus::kNoPermission:
      return "Could not open the file because you do not have read/write access permission.";
    case DBStatus::kTooOld:
      return "The project file you selected was created by an older version of Quillmark. Run "
             "the DB Refit utility on the project file so this version can read it.";
    case DBStatus::kTooNew:
    case DBStatus::kDataTooNew:
      return tooNew;
    default:
      return "Could not open the file due to error #:" + std::to_string(Code(status));
  }
}

std::string StatusSentence(DBStatus status) {
  switch (status) {
    case DBStatus::kOk:
      return "Done.";
    case DBStatus::kCancelled:
      return "Cancelled.";
    case DBStatus::kRecordLocked:
      return "The record is locked by another user.";
    case DBStatus::kNotProjectFile:
      return "The file is not a Quillmark project file.";
    case DBStatus::kCannotCreate:
      return "The file could not be created.";
    case DBStatus::kNoMemory:
      return "There is not enough memory.";
    case DBStatus::kTableExists:
      return "The table exists already, or the directory has no free entry.";
    case DBStatus::kNoSuchTable:
      return "The project file has no such table.";
    case DBStatus::kBadPosition:
      return "There is no record at that position.";
    case DBStatus::kIoError:
      return "Reading or writing the file failed, or a block of it is damaged.";
    case DBStatus::kNoSuchRecord:
      return "The table has no record with that id.";
    case DBStatus::kNotOpen:
      return "No project file is open.";
    case DBStatus::kCannotOpen:
      return "The file could not be opened.";
    case DBStatus::kBusy:
      return "The database is busy: another user holds it.";
    case DBStatus::kLockNotTaken:
      return "The database lock could not be taken.";
    case DBStatus::kDirectoryFull:
      return "The table directory is full.";
    case DBStatus::kNoIndex:
      return "The table has no index block.";
    case DBStatus::kTooOld:
      return "The file was made by an older version.";
    case DBStatus::kTooNew:
      return "The file was made by a newer version.";
    case DBStatus::kGuardRefused:
      return "The write would overwrite a fixed block of the file.";
    case DBStatus::kBadChecksum:
      return "The record is damaged: its checksum differs.";
    case DBStatus::kBadRecordHeader:
      return "The record is damaged: its header differs from the index.";
    case DBStatus::kRecordKept:
      return "A record with that id exists and was kept.";
    default:
      return "The operation failed.";
  }
}

}  // namespace qm
