// The fake files and clock of the tests.
#include "support/fake_files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qm::test {

namespace {

class MemoryFile final : public platform::File {
 public:
  explicit MemoryFile(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

  std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t n) override {
    if (offset >= bytes_.size()) return 0;
    std::size_t got = std::min<std::uint64_t>(n, bytes_.size() - offset);
    if (got != 0) std::memcpy(buffer, bytes_.data() + offset, got);
    return got;
  }
  void WriteAt(std::uint64_t offset, const void* data, std::size_t n) override {
    if (offset + n > bytes_.size()) bytes_.resize(offset + n);
    if (n != 0) std::memcpy(bytes_.data() + offset, data, n);
  }
  std::uint64_t Length() override { return bytes_.size(); }
  void Flush() override {}
  bool TryLockByte(std::uint64_t) override { return true; }
  bool TryShareByte(std::uint64_t) override { return true; }
  void UnlockByte(std::uint64_t) override {}
  bool IsRangeLockedByOther(std::uint64_t, std::uint64_t) override { return false; }

 private:
  std::vector<std::uint8_t>& bytes_;
};

class FaultyFile final : public platform::File {
 public:
  FaultyFile(std::unique_ptr<platform::File> inner, FaultyFileSystem& owner)
      : inner_(std::move(inner)), owner_(owner) {}

  std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t n) override {
    Check("read");
    return inner_->ReadAt(offset, buffer, n);
  }
  void WriteAt(std::uint64_t offset, const void* data, std::size_t n) override {
    Check("write");
    inner_->WriteAt(offset, data, n);
  }
  std::uint64_t Length() override { return inner_->Length() - (owner_.shortLength ? 1 : 0); }
  void Flush() override {
    Check("flush");
    if (owner_.flushes) inner_->Flush();
  }
  bool TryLockByte(std::uint64_t offset) override { return inner_->TryLockByte(offset); }
  bool TryShareByte(std::uint64_t offset) override { return inner_->TryShareByte(offset); }
  void UnlockByte(std::uint64_t offset) override { inner_->UnlockByte(offset); }
  bool IsRangeLockedByOther(std::uint64_t offset, std::uint64_t length) override {
    return inner_->IsRangeLockedByOther(offset, length);
  }

 private:
  void Check(const char* what) {
    if (owner_.Count()) throw platform::FileError(EIO, what);
  }

  std::unique_ptr<platform::File> inner_;
  FaultyFileSystem& owner_;
};

}  // namespace

std::unique_ptr<platform::File> MemoryFileSystem::Open(const std::string& path,
                                                       platform::OpenMode mode) {
  if (mode == platform::OpenMode::kCreateReadWrite) {
    files_[path].clear();
  } else if (files_.count(path) == 0) {
    throw platform::FileError(ENOENT, "open " + path);
  }
  return std::make_unique<MemoryFile>(files_[path]);
}

std::unique_ptr<platform::File> FaultyFileSystem::Open(const std::string& path,
                                                       platform::OpenMode mode) {
  return std::make_unique<FaultyFile>(inner_.Open(path, mode), *this);
}

}  // namespace qm::test
