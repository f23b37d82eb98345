// Stand-ins for the operating system in tests: files kept in memory, real files with
// faults put in, and a clock that stands still unless told to move.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"

namespace qm::test {

// Files held in memory by path. Locks always succeed and nobody else ever holds one.
class MemoryFileSystem : public platform::FileSystem {
 public:
  std::unique_ptr<platform::File> Open(const std::string& path, platform::OpenMode mode) override;
  void Remove(const std::string& path) override { files_.erase(path); }
  // The bytes of a file; created empty when absent.
  std::vector<std::uint8_t>& Bytes(const std::string& path) { return files_[path]; }

 private:
  std::map<std::string, std::vector<std::uint8_t>> files_;
};

// Passes every call to another file system's files, with the faults it is given: an
// input/output error from the k-th counted call (reads, writes and flushes of all its
// files, from 1), flushes that do nothing, a length that reads one byte short.
class FaultyFileSystem : public platform::FileSystem {
 public:
  explicit FaultyFileSystem(platform::FileSystem& inner = platform::FileSystem::Real())
      : inner_(inner) {}
  std::unique_ptr<platform::File> Open(const std::string& path, platform::OpenMode mode) override;
  void Remove(const std::string& path) override { inner_.Remove(path); }

  void FailAt(long call) {
    failAt_ = call;
    calls_ = 0;
  }
  long calls() const { return calls_; }
  // Whether this call fails; counts it.
  bool Count() { return ++calls_ == failAt_; }

  bool flushes = true;
  bool shortLength = false;

 private:
  platform::FileSystem& inner_;
  long calls_ = 0;
  long failAt_ = -1;
};

// Time that moves only when told, and ticks that move by `pauseTicks` at each Pause.
class FakeClock : public platform::Clock {
 public:
  std::uint32_t Now() override { return now; }
  std::uint32_t Ticks() override { return ticks; }
  void Pause() override {
    ticks += pauseTicks;
    ++pauses;
  }

  std::uint32_t now = 3'000'000'000u;
  std::uint32_t ticks = 1000;
  std::uint32_t pauseTicks = 1;
  long pauses = 0;
};

}  // namespace qm::test
