// What a large table costs the store: one add to a table of 100,000 records against one to
// a table of 100, and a full read of 100,000 records against SQLite's scan of the same rows.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "bench/ratio_reporter.h"
#include "bench/setup_checks.h"
#include "bench/silent_ui.h"
#include "bench/sqlite_check.h"
#include "store/project_store.h"
#include "support/temp_dir.h"

namespace qm {
namespace {

using bench::Check;
using bench::CheckSqlite;

constexpr Tag kDfct = MakeTag("dfct");
constexpr std::uint32_t kLargeTable = 100'000;
constexpr std::uint32_t kSmallTable = 100;
constexpr std::size_t kRecordSize = 1024;
// An index grows by 128 entries at a time and is then written whole at the end of the
// file, so any 128 adds in a row pay for exactly one such rewrite.
constexpr int kAddsPerIteration = 128;
constexpr int kAddIterations = 24;
constexpr const char* kSmallAddCounter = "ms_per_add_100";
constexpr const char* kLargeAddCounter = "ms_per_add_100000";

// Payloads differ from record to record, so that every checksum is worked for.
std::vector<std::uint8_t> Payload(std::uint32_t seed) {
  std::vector<std::uint8_t> bytes(kRecordSize);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(seed * 31 + i * 7);
  }
  return bytes;
}

// The files of the run, made on first use and removed with their folder at exit.
class Files {
 public:
  static Files& Get() {
    static Files files;
    return files;
  }

  // A multi-user project whose table dfct holds kLargeTable records of 1 KB. The adds
  // below append to it, so readers read exactly the first kLargeTable positions.
  const std::string& Large() {
    if (large_.empty()) large_ = BuildProject("large.qmk", kLargeTable);
    return large_;
  }
  const std::string& Small() {
    if (small_.empty()) small_ = BuildProject("small.qmk", kSmallTable);
    return small_;
  }
  const std::string& Sqlite() {
    if (sqlite_.empty()) sqlite_ = BuildSqlite("large.db", kLargeTable);
    return sqlite_;
  }
  std::string Scratch(const std::string& name) const { return dir_.File(name); }

 private:
  // The records go in under one access of the caller's, committed once: a flush per
  // record would make the setup take minutes and measure nothing.
  std::string BuildProject(const std::string& name, std::uint32_t records) {
    const std::string path = dir_.File(name);
    bench::SilentUi ui;
    CProjectStore store(ui);
    Check(store.Create(path, 1), "create");
    Check(store.AddTable(kDfct, "Defects"), "add table");
    Check(store.BeginAccess(true), "begin access");
    for (std::uint32_t n = 1; n <= records; ++n) {
      Check(store.AddRecord(kDfct, Payload(n), nullptr), "add record");
    }
    Check(store.EndAccess(true), "end access");
    Check(store.Close(), "close");
    return path;
  }

  std::string BuildSqlite(const std::string& name, std::uint32_t rows) {
    const std::string path = dir_.File(name);
    sqlite3* db = nullptr;
    CheckSqlite(sqlite3_open(path.c_str(), &db), db, "sqlite open");
    CheckSqlite(sqlite3_exec(db, "CREATE TABLE t(id INTEGER PRIMARY KEY, data BLOB NOT NULL)",
                             nullptr, nullptr, nullptr),
                db, "sqlite create");
    CheckSqlite(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "sqlite begin");
    sqlite3_stmt* insert = nullptr;
    CheckSqlite(
        sqlite3_prepare_v2(db, "INSERT INTO t(id, data) VALUES(?, ?)", -1, &insert, nullptr), db,
        "sqlite prepare");
    for (std::uint32_t n = 1; n <= rows; ++n) {
      const std::vector<std::uint8_t> payload = Payload(n);
      sqlite3_bind_int64(insert, 1, n);
      sqlite3_bind_blob(insert, 2, payload.data(), static_cast<int>(payload.size()),
                        SQLITE_TRANSIENT);
      CheckSqlite(sqlite3_step(insert), db, "sqlite insert");
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    CheckSqlite(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "sqlite commit");
    sqlite3_close(db);
    return path;
  }

  test::TempDir dir_;
  std::string large_;
  std::string small_;
  std::string sqlite_;
};

// ---- adds ----

// A multi-user project to add to. Before each timed run it is opened afresh and its index
// read, as in a client that has been at work; a target with a first copy is put back to
// it first.
class AddTarget {
 public:
  AddTarget(std::string path, std::string firstCopy = {})
      : path_(std::move(path)), firstCopy_(std::move(firstCopy)) {}

  void Reopen() {
    Check(store_.Close(), "close");
    if (!firstCopy_.empty()) {
      std::filesystem::copy_file(firstCopy_, path_,
                                 std::filesystem::copy_options::overwrite_existing);
    }
    Check(store_.Open(path_), "open");
    std::vector<IndexEntry> index;
    Check(store_.ReadIndex(kDfct, index), "read index");
  }
  // Makes kAddsPerIteration adds of 1 KB, each committed with its flush; their seconds.
  double TimeAdds(const std::vector<std::uint8_t>& payload) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kAddsPerIteration; ++i) {
      Check(store_.AddRecord(kDfct, payload, nullptr), "add record");
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

 private:
  std::string path_;
  std::string firstCopy_;
  bench::SilentUi ui_;
  CProjectStore store_{ui_};
};

// Each iteration makes kAddsPerIteration adds to the table of 100 records and then as
// many to the table of 100,000, each run timed on its own: a shared disk has slow and
// fast spells, and alternating lets them fall on both alike. The small table is put
// back to its 100 records before each of its runs; the large one is not (a copy takes
// longer than the run) and ends some 9% larger, which if anything weighs against it.
void AddRecords(benchmark::State& state) {
  Files& files = Files::Get();
  AddTarget small(files.Scratch("small-work.qmk"), files.Small());
  AddTarget large(files.Large());
  const std::vector<std::uint8_t> payload = Payload(0);
  double smallSeconds = 0;
  double largeSeconds = 0;
  for (auto _ : state) {
    state.PauseTiming();
    small.Reopen();
    state.ResumeTiming();
    smallSeconds += small.TimeAdds(payload);
    state.PauseTiming();
    large.Reopen();
    state.ResumeTiming();
    largeSeconds += large.TimeAdds(payload);
  }
  const double adds = static_cast<double>(state.iterations() * kAddsPerIteration);
  state.counters[kSmallAddCounter] = smallSeconds * 1000 / adds;
  state.counters[kLargeAddCounter] = largeSeconds * 1000 / adds;
  state.SetItemsProcessed(state.iterations() * kAddsPerIteration * 2);
}

// ---- full reads ----

enum class ReadMode { kClaimed, kSingleUser, kUnclaimed };

// Reads positions 1 to kLargeTable of dfct, each payload checked against its checksum.
std::uint64_t ReadAllRecords(CProjectStore& store) {
  std::vector<std::uint8_t> out;
  std::uint64_t bytes = 0;
  for (std::uint32_t position = 1; position <= kLargeTable; ++position) {
    std::uint32_t id = 0;
    Check(store.ReadRecordByIndex(kDfct, position, out, &id), "read record");
    benchmark::DoNotOptimize(out.data());
    bytes += out.size();
  }
  return bytes;
}

// kClaimed: a multi-user file under one LockDatabase claim, the way a bulk reader works.
// kSingleUser: the same file switched to single-user for the measurement.
// kUnclaimed: for scale, each read in its own access, taking the write lock and rereading
// the header, the TableEntry and the index head.
void ReadAll(benchmark::State& state, ReadMode mode) {
  bench::SilentUi ui;
  CProjectStore store(ui);
  Check(store.Open(Files::Get().Large()), "open");
  if (mode == ReadMode::kClaimed) Check(store.LockDatabase(kDfct), "lock database");
  if (mode == ReadMode::kSingleUser) Check(store.SetMultiUser(0), "single-user");
  std::uint64_t bytes = 0;
  for (auto _ : state) bytes += ReadAllRecords(store);
  if (mode == ReadMode::kClaimed) Check(store.UnlockDatabase(), "unlock database");
  if (mode == ReadMode::kSingleUser) Check(store.SetMultiUser(1), "multi-user");
  state.SetItemsProcessed(state.iterations() * kLargeTable);
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

// SQLite with its defaults, stepping through every row and copying each blob out, as
// the store hands each payload to its caller in a buffer of the caller's own.
void SqliteScan(benchmark::State& state) {
  sqlite3* db = nullptr;
  CheckSqlite(sqlite3_open_v2(Files::Get().Sqlite().c_str(), &db, SQLITE_OPEN_READONLY, nullptr),
              db, "sqlite open");
  sqlite3_stmt* select = nullptr;
  CheckSqlite(sqlite3_prepare_v2(db, "SELECT id, data FROM t", -1, &select, nullptr), db,
              "sqlite prepare");
  std::vector<std::uint8_t> out;
  std::uint64_t bytes = 0;
  for (auto _ : state) {
    std::uint32_t rows = 0;
    int rc = SQLITE_OK;
    while ((rc = sqlite3_step(select)) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_int64(select, 0));
      const auto* data = static_cast<const std::uint8_t*>(sqlite3_column_blob(select, 1));
      const auto size = static_cast<std::size_t>(sqlite3_column_bytes(select, 1));
      out.assign(data, data + size);
      benchmark::DoNotOptimize(out.data());
      bytes += size;
      ++rows;
    }
    CheckSqlite(rc, db, "sqlite step");
    sqlite3_reset(select);
    if (rows != kLargeTable) state.SkipWithError("the scan missed rows");
  }
  sqlite3_finalize(select);
  sqlite3_close(db);
  state.SetItemsProcessed(state.iterations() * kLargeTable);
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

// ---- the ratios ----

// The console report, and at the end each measured pair as a ratio with its target.
class StoreRatios : public bench::RatioReporter {
 protected:
  void WriteRatios() override {
    Ratio("add, 100,000 records / 100 records", kLargeAddCounter, kSmallAddCounter, "ms per add",
          1.5);
    Ratio("full read, claimed / SQLite scan", "read_all/claimed", "sqlite_scan",
          "ms per 100,000 records", 1.0);
    Ratio("full read, single-user / SQLite scan", "read_all/single_user", "sqlite_scan",
          "ms per 100,000 records", 1.0);
    Ratio("full read, unclaimed / SQLite scan", "read_all/unclaimed", "sqlite_scan",
          "ms per 100,000 records", 0.0);
  }
};

void RegisterAll() {
  // Reads first: the adds append to the large file. Each case runs three times and the
  // ratios take the medians, since a shared machine's disk and caches wander.
  constexpr int kRepetitions = 3;
  auto reads = [](benchmark::internal::Benchmark* b) {
    b->Repetitions(kRepetitions)->ReportAggregatesOnly(true)->Unit(benchmark::kMillisecond);
  };
  reads(benchmark::RegisterBenchmark("read_all/claimed", ReadAll, ReadMode::kClaimed));
  reads(benchmark::RegisterBenchmark("read_all/single_user", ReadAll, ReadMode::kSingleUser));
  reads(benchmark::RegisterBenchmark("read_all/unclaimed", ReadAll, ReadMode::kUnclaimed));
  reads(benchmark::RegisterBenchmark("sqlite_scan", SqliteScan));
  benchmark::RegisterBenchmark("add/alternating", AddRecords)
      ->Iterations(kAddIterations)
      ->Repetitions(kRepetitions)
      ->ReportAggregatesOnly(true)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace qm

int main(int argc, char** argv) {
  qm::StoreRatios reporter;
  return qm::bench::RunBenchmarks(argc, argv, qm::RegisterAll, reporter);
}
