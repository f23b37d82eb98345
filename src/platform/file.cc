// POSIX files with open-file-description byte locks.
#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace qm::platform {

FileError::FileError(int code, const std::string& what)
    : std::runtime_error(what + ": " + std::strerror(code)), code_(code) {}

namespace {

class PosixFile final : public File {
 public:
  explicit PosixFile(int fd) : fd_(fd) {}
  ~PosixFile() override { ::close(fd_); }
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;

  std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t n) override {
    auto* out = static_cast<char*>(buffer);
    std::size_t done = 0;
    while (done < n) {
      ssize_t got = ::pread(fd_, out + done, n - done, static_cast<off_t>(offset + done));
      if (got < 0) {
        if (errno == EINTR) continue;
        throw FileError(errno, "read");
      }
      if (got == 0) break;
      done += static_cast<std::size_t>(got);
    }
    return done;
  }

  void WriteAt(std::uint64_t offset, const void* data, std::size_t n) override {
    const auto* in = static_cast<const char*>(data);
    std::size_t done = 0;
    while (done < n) {
      ssize_t put = ::pwrite(fd_, in + done, n - done, static_cast<off_t>(offset + done));
      if (put < 0) {
        if (errno == EINTR) continue;
        throw FileError(errno, "write");
      }
      done += static_cast<std::size_t>(put);
    }
  }

  std::uint64_t Length() override {
    struct stat st;
    if (::fstat(fd_, &st) != 0) throw FileError(errno, "stat");
    return static_cast<std::uint64_t>(st.st_size);
  }

  void Flush() override {
    if (::fdatasync(fd_) != 0) throw FileError(errno, "fdatasync");
  }

  bool TryLockByte(std::uint64_t offset) override { return Lock(F_WRLCK, offset); }

  bool TryShareByte(std::uint64_t offset) override { return Lock(F_RDLCK, offset); }

  void UnlockByte(std::uint64_t offset) override { (void)Lock(F_UNLCK, offset); }

  bool IsRangeLockedByOther(std::uint64_t offset, std::uint64_t length) override {
    struct flock fl = Range(F_WRLCK, offset, length);
    if (::fcntl(fd_, F_OFD_GETLK, &fl) != 0) return true;
    return fl.l_type != F_UNLCK;
  }

 private:
  static struct flock Range(short type, std::uint64_t offset, std::uint64_t length) {
    struct flock fl;
    std::memset(&fl, 0, sizeof fl);
    fl.l_type = type;
    fl.l_whence = SEEK_SET;
    fl.l_start = static_cast<off_t>(offset);
    fl.l_len = static_cast<off_t>(length);
    fl.l_pid = 0;  // required to be 0 for open-file-description locks
    return fl;
  }

  bool Lock(short type, std::uint64_t offset) {
    struct flock fl = Range(type, offset, 1);
    return ::fcntl(fd_, F_OFD_SETLK, &fl) == 0;
  }

  int fd_;
};

class PosixFileSystem final : public FileSystem {
 public:
  std::unique_ptr<File> Open(const std::string& path, OpenMode mode) override {
    int flags = (mode == OpenMode::kRead ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    if (mode == OpenMode::kCreateReadWrite) flags |= O_CREAT | O_TRUNC;
    int fd = ::open(path.c_str(), flags, 0666);
    if (fd < 0) throw FileError(errno, "open " + path);
    return std::make_unique<PosixFile>(fd);
  }

  void Remove(const std::string& path) override { (void)::unlink(path.c_str()); }
};

}  // namespace

FileSystem& FileSystem::Real() {
  static PosixFileSystem real;
  return real;
}

bool FileExists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

}  // namespace qm::platform
