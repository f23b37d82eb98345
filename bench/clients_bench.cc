// Costs of sharing one file: an idle client's poll of the change counter, and adds per
// second as more processes write to the same file at once.
#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

#include "bench/silent_ui.h"
#include "store/project_store.h"
#include "support/temp_dir.h"

namespace qm {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

std::string MakeFile(const test::TempDir& dir) {
  bench::SilentUi ui;
  CProjectStore store(ui);
  const std::string path = dir.File("clients.qmk");
  if (store.Create(path, 1) != DBStatus::kOk || store.AddTable(kDfct, "") != DBStatus::kOk ||
      store.AddRecord(kDfct, std::vector<std::uint8_t>(1024, 7), nullptr) != DBStatus::kOk) {
    std::abort();
  }
  return path;
}

// What an idle client pays each time it looks for changes.
void BM_IdlePoll(benchmark::State& state) {
  test::TempDir dir;
  const std::string path = MakeFile(dir);
  bench::SilentUi ui;
  CProjectStore store(ui);
  if (store.Open(path) != DBStatus::kOk) std::abort();
  for (auto _ : state) benchmark::DoNotOptimize(store.HasChanged());
}
BENCHMARK(BM_IdlePoll);

// For scale: reading one 1 KB record, the cheapest operation that takes the write lock.
void BM_ReadOneRecord(benchmark::State& state) {
  test::TempDir dir;
  const std::string path = MakeFile(dir);
  bench::SilentUi ui;
  CProjectStore store(ui);
  if (store.Open(path) != DBStatus::kOk) std::abort();
  std::vector<std::uint8_t> out;
  for (auto _ : state) {
    if (store.ReadRecord(kDfct, 1, out) != DBStatus::kOk) std::abort();
  }
}
BENCHMARK(BM_ReadOneRecord);

// N processes each add 1 KB records to one multi-user file; items are all their adds.
void BM_ConcurrentAdds(benchmark::State& state) {
  const int processes = static_cast<int>(state.range(0));
  constexpr int kAddsEach = 200;
  test::TempDir dir;
  const std::string path = MakeFile(dir);
  for (auto _ : state) {
    std::vector<pid_t> children;
    for (int p = 0; p < processes; ++p) {
      const pid_t pid = fork();
      if (pid == 0) {
        bench::SilentUi ui;
        CProjectStore store(ui);
        if (store.Open(path) != DBStatus::kOk) _exit(1);
        const std::vector<std::uint8_t> payload(1024, static_cast<std::uint8_t>(p));
        for (int i = 0; i < kAddsEach; ++i) {
          if (store.AddRecord(kDfct, payload, nullptr) != DBStatus::kOk) _exit(2);
        }
        _exit(0);
      }
      children.push_back(pid);
    }
    for (pid_t pid : children) {
      int status = 0;
      waitpid(pid, &status, 0);
      if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("a writer failed");
    }
  }
  state.SetItemsProcessed(state.iterations() * processes * kAddsEach);
}
BENCHMARK(BM_ConcurrentAdds)
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Arg(8)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qm
