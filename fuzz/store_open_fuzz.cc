// Opens arbitrary bytes as a project file and reads every record of every table: any
// damage must come back as a status, never as a crash or a sanitizer report.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "bench/silent_ui.h"
#include "store/project_store.h"
#include "support/fake_files.h"

namespace {

// Enough for every record of a small file, few enough that no input runs for long.
constexpr int kMaxReads = 4096;

void ReadEverything(qm::CProjectStore& store) {
  int reads = 0;
  std::vector<std::uint8_t> payload;
  for (const qm::Tag tag : store.TableTags()) {
    std::uint32_t count = 0;
    if (store.CountRecords(tag, count) == qm::DBStatus::kOk) {
      for (std::uint32_t position = 1; position <= count && reads < kMaxReads; ++position) {
        std::uint32_t id = 0;
        (void)store.ReadRecordByIndex(tag, position, payload, &id);
        ++reads;
      }
    }
    std::vector<qm::IndexEntry> index;
    if (store.ReadIndex(tag, index) != qm::DBStatus::kOk) continue;
    for (const qm::IndexEntry& entry : index) {
      if (reads++ >= kMaxReads) break;
      (void)store.ReadRecord(tag, entry.id, payload);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qm::test::MemoryFileSystem files;
  qm::test::FakeClock clock;
  files.Bytes("fuzz.qmk").assign(data, data + size);
  qm::bench::SilentUi ui;
  qm::CProjectStore store(ui, files, clock);
  if (store.Open("fuzz.qmk") == qm::DBStatus::kOk) ReadEverything(store);
  return 0;
}
