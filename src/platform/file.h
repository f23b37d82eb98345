// Positioned file access with one-byte locks between handles. Every byte the store
// reads or writes passes through File, so tests can put a failing or fake file in its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace qm::platform {

// A failure of the operating system in a file call. `code` is the errno value.
class FileError : public std::runtime_error {
 public:
  FileError(int code, const std::string& what);
  int code() const { return code_; }

 private:
  int code_;
};

// One open file. Reads and writes are positioned and never move a shared cursor.
//
// Locks are open-file-description locks: two File objects conflict even inside one
// process, and a lock ends when its File is destroyed or its process dies. They are
// advisory, so a read of a byte that another handle has locked succeeds; whoever must
// know whether a byte is held asks IsRangeLockedByOther.
class File {
 public:
  virtual ~File() = default;

  // Reads up to `n` bytes at `offset`; fewer only at the end of the file. Throws FileError.
  virtual std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t n) = 0;
  // Writes all `n` bytes at `offset`, growing the file as needed. Throws FileError.
  virtual void WriteAt(std::uint64_t offset, const void* data, std::size_t n) = 0;
  virtual std::uint64_t Length() = 0;
  // Puts written data on the device (fdatasync). Throws FileError.
  virtual void Flush() = 0;

  // Locks the one byte at `offset`; false when another handle holds it or the system refuses.
  virtual bool TryLockByte(std::uint64_t offset) = 0;
  // Shares the one byte at `offset` with other handles that share it too; false when
  // another handle holds it alone or the system refuses. A handle holding a byte shares
  // it instead, and the converse.
  virtual bool TryShareByte(std::uint64_t offset) = 0;
  // Gives up a lock this handle holds. Failures are ignored.
  virtual void UnlockByte(std::uint64_t offset) = 0;
  // Whether a handle other than this one holds a lock on any byte of the range. A failing
  // system call counts as held.
  virtual bool IsRangeLockedByOther(std::uint64_t offset, std::uint64_t length) = 0;
};

enum class OpenMode {
  kRead,            // an existing file, for reading only
  kReadWrite,       // an existing file, for reading and writing
  kCreateReadWrite  // created, or truncated when it exists
};

// Opens files by path. The store opens its project file and the files of attachments
// through one of these.
class FileSystem {
 public:
  virtual ~FileSystem() = default;
  // Throws FileError when the file cannot be opened.
  virtual std::unique_ptr<File> Open(const std::string& path, OpenMode mode) = 0;
  // Removes a file; a failure is ignored.
  virtual void Remove(const std::string& path) = 0;

  // The operating system's files.
  static FileSystem& Real();
};

// Whether something other than a folder is at `path` in the operating system's files.
bool FileExists(const std::string& path);

}  // namespace qm::platform
