// The floor an opening is measured against: every byte of the file read once.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace qm::bench {

// The file read with read() in chunks of 1 MB into a buffer made before the timing, so the
// figure is the read and nothing else. Warm, as the opening.
inline void ReadWholeFile(benchmark::State& state, const std::string& path) {
  constexpr std::size_t kReadChunk = 1 << 20;
  std::vector<char> buffer(static_cast<std::size_t>(std::filesystem::file_size(path)) + kReadChunk);
  std::int64_t bytes = 0;
  for (auto _ : state) {
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
      state.SkipWithError("the project file did not open");
      break;
    }
    std::size_t at = 0;
    ssize_t got = 0;
    while ((got = ::read(fd, buffer.data() + at, std::min(kReadChunk, buffer.size() - at))) > 0) {
      at += static_cast<std::size_t>(got);
    }
    ::close(fd);
    benchmark::DoNotOptimize(buffer.data());
    bytes += static_cast<std::int64_t>(at);
  }
  state.SetBytesProcessed(bytes);
}

}  // namespace qm::bench
