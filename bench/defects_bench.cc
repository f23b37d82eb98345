// What the defect list costs: loading the 100,000 defects of a project and sorting them two
// ways, against SQLite reading and sorting the same rows into structs of its own.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_defects.h"
#include "bench/ratio_reporter.h"
#include "bench/silent_ui.h"
#include "defects/defect_table.h"
#include "defects/project_defects.h"
#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "support/quiet_host.h"

namespace qm {
namespace {

using bench::kDefects;
using bench::PutBackInRecordOrder;
using bench::SameOrder;
using bench::SetUpCase;

constexpr const char* kLoadName = "load/defects";
constexpr const char* kSqliteLoadName = "load/sqlite_select_all";
constexpr const char* kSummaryName = "sort/summary";
constexpr const char* kSqliteSummaryName = "sort/sqlite_summary";
constexpr const char* kStatusTypeName = "sort/status_type";
constexpr const char* kSqliteStatusTypeName = "sort/sqlite_status_type";

// Ties go by the record id, as they do in the defect table.
const std::string kSummarySql =
    std::string(bench::kListColumns) + "ORDER BY summary COLLATE NOCASE, id";
const std::string kStatusTypeSql =
    std::string(bench::kListColumns) + "ORDER BY status, type_position, id";

// ---- the files ----

// The project and the SQLite file, made on first use; the project stays open, as in a
// program whose list windows are up, and everything goes with the folder at exit.
class Project {
 public:
  static Project& Get() {
    static Project project;
    return project;
  }

  CProjectStore& store() const { return *doc_.store(); }
  const DefectLookups& lookups() const { return lookups_; }
  ui::Ui& ui() { return ui_; }
  // The table the opening loaded, in the order of its records.
  CDefectTable& defects() const { return bench::DefectsOf(doc_); }
  const std::string& sqlitePath() const { return files_.sqlitePath(); }

 private:
  Project() {
    bench::OpenAsAdmin(doc_, files_.projectPath());
    if (defects().count() != kDefects) {
      std::fprintf(stderr, "the opening loaded %u defects\n", defects().count());
      std::exit(1);
    }
  }
  ~Project() { doc_.CloseProject(); }

  bench::DefectFiles files_;
  bench::SilentUi ui_;
  test::QuietHost host_;
  ProjectItemKinds kinds_;
  CDBDoc doc_{ui_, kinds_, host_};
  DocLookups lookups_{doc_};
};

// ---- the orders ----

enum class Order { kSummary, kStatusType };

// The list sorted by summary alone (ties by record id), or by status and then type.
void SetOrder(CDefectTable& table, Order order) {
  if (order == Order::kSummary) {
    table.SetSecondaryField(kNoSortField);
    table.SetSortOrder({2, 1});
  } else {
    table.SetSecondaryField(4);
    table.SetSortOrder({6, 1});
  }
}

// Before anything is timed: both sides put the defects in the same order, so that the
// pair measures the same work.
void CheckOrdersAgree() {
  CDefectTable& table = Project::Get().defects();
  bench::SqliteDefects sqlite(Project::Get().sqlitePath());
  for (const Order order : {Order::kSummary, Order::kStatusType}) {
    SetOrder(table, order);
    table.Sort();
    if (!SameOrder(table, sqlite.Rows(order == Order::kSummary ? kSummarySql : kStatusTypeSql))) {
      std::fprintf(stderr, "the defect table and SQLite sort differently\n");
      std::exit(1);
    }
    PutBackInRecordOrder(table);
  }
}

// ---- the pairs ----

// A table made over the open store, loaded whole as the opening loads it; the freeing of
// its defects is not timed, as the freeing of SQLite's rows is not.
void LoadDefects(benchmark::State& state) {
  Project& project = Project::Get();
  for (auto _ : state) {
    auto table = std::make_unique<CDefectTable>(&project.store(), project.ui(), &project.lookups());
    table->LoadTable(false);
    if (table->count() != kDefects) state.SkipWithError("the load missed defects");
    state.PauseTiming();
    table.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kDefects);
}

// Every column of every row, the record's bytes included, copied into structs.
void SqliteLoad(benchmark::State& state) {
  bench::SqliteDefects(Project::Get().sqlitePath()).TimeRows(state, "SELECT * FROM defects");
}

// The loaded defects, put back in the order of their records before each sort, sorted as
// a list window sorts them. They are in memory already; SQLite reads its rows as it sorts.
void SortDefects(benchmark::State& state, Order order) {
  CDefectTable& table = Project::Get().defects();
  for (auto _ : state) {
    state.PauseTiming();
    PutBackInRecordOrder(table);
    SetOrder(table, order);
    state.ResumeTiming();
    table.Sort();
  }
  PutBackInRecordOrder(table);
  state.SetItemsProcessed(state.iterations() * kDefects);
}

// The list's columns of every row in the order, copied into structs.
void SqliteSort(benchmark::State& state, Order order) {
  bench::SqliteDefects(Project::Get().sqlitePath())
      .TimeRows(state, order == Order::kSummary ? kSummarySql : kStatusTypeSql);
}

// ---- the ratios ----

class DefectRatios : public bench::RatioReporter {
 protected:
  void WriteRatios() override {
    const char* unit = "ms per 100,000 defects";
    Ratio("loading / SQLite SELECT *", kLoadName, kSqliteLoadName, unit, 0.0);
    Ratio("sort by summary / SQLite ORDER BY", kSummaryName, kSqliteSummaryName, unit, 0.0);
    Ratio("sort by status, type / SQLite ORDER BY", kStatusTypeName, kSqliteStatusTypeName, unit,
          0.0);
  }
};

void RegisterAll() {
  // The files are made, and the orders checked, before the first timing; that check has
  // read both files and sorted both ways, so the files are warm.
  CheckOrdersAgree();
  SetUpCase(benchmark::RegisterBenchmark(kLoadName, LoadDefects));
  SetUpCase(benchmark::RegisterBenchmark(kSqliteLoadName, SqliteLoad));
  SetUpCase(benchmark::RegisterBenchmark(kSummaryName, SortDefects, Order::kSummary));
  SetUpCase(benchmark::RegisterBenchmark(kSqliteSummaryName, SqliteSort, Order::kSummary));
  SetUpCase(benchmark::RegisterBenchmark(kStatusTypeName, SortDefects, Order::kStatusType));
  SetUpCase(benchmark::RegisterBenchmark(kSqliteStatusTypeName, SqliteSort, Order::kStatusType));
}

}  // namespace
}  // namespace qm

int main(int argc, char** argv) {
  qm::DefectRatios reporter;
  return qm::bench::RunBenchmarks(argc, argv, qm::RegisterAll, reporter);
}