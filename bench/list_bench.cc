// What showing the defect list costs: opening a project of 100,000 defects with the first
// screenful of its list and closing it, against reading the same file once and SQLite
// reading the same rows; and a click on the Summary header, which sorts the loaded list
// and draws its top again, against SQLite sorting the same rows by summary.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_defects.h"
#include "bench/ratio_reporter.h"
#include "bench/read_file.h"
#include "bench/silent_ui.h"
#include "defects/defect.h"
#include "defects/defect_table.h"
#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "shell/record_list.h"
#include "support/quiet_host.h"

namespace qm {
namespace {

using bench::DefectRow;
using bench::DefectsOf;
using bench::kDefects;
using bench::kListColumns;
using bench::PutBackInRecordOrder;
using bench::SameOrder;
using bench::SetUpCase;
using bench::SqliteDefects;

// The rows a list window of the usual size shows before any scrolling.
constexpr std::uint32_t kScreenRows = 40;
// "Summary" among the defect list's own columns.
constexpr std::uint16_t kSummaryColumn = 3;

constexpr const char* kOpenName = "open/list_first_screen";
constexpr const char* kReadName = "open/read_file";
constexpr const char* kSqliteSelectName = "open/sqlite_select_all";
constexpr const char* kClickName = "sort/header_click_summary";
constexpr const char* kSqliteSortName = "sort/sqlite_summary";

// A header click leaves the list's second key as it was, the type; ties after it go by
// the record id, as they do in the defect table.
const std::string kSummarySql =
    std::string(kListColumns) + "ORDER BY summary COLLATE NOCASE, type_position, id";

// ---- the files ----

// The project and the SQLite file, made on first use and removed with their folder at exit.
const bench::DefectFiles& Files() {
  static const bench::DefectFiles files;
  return files;
}

std::uintmax_t ProjectSize() { return std::filesystem::file_size(Files().projectPath()); }

// ---- the list ----

// What a list window draws when it comes up or is sorted again: the texts of the top rows,
// every column. Answers their bytes, so that none of them goes unused.
std::size_t DrawFirstScreen(const CDefectListView& list) {
  const ItemTable& table = list.table();
  const std::uint32_t rows = std::min(kScreenRows, table.count());
  std::vector<std::string> cells;
  cells.reserve(rows * list.columns().size());
  std::size_t bytes = 0;
  for (std::uint32_t p = 1; p <= rows; ++p) {
    for (const ListColumn& column : list.columns()) {
      std::string& text = cells.emplace_back();
      list.GetCellText(*table.ItemAt(p), column.fieldId, text);
      bytes += text.size();
    }
  }
  benchmark::DoNotOptimize(cells.data());
  return bytes;
}

// One opening as the program does it with a remembered login, the defect list shown as its
// window brings it up, sorted by number, and the closing after, which frees every item.
bool OpenShowAndClose(const std::string& path) {
  bench::SilentUi ui;
  test::QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc(ui, kinds, host);
  if (doc.OpenProject(path, ui::LoginEntry{"admin", ""}) != 1) return false;
  {
    CDefectListView list(DefectsOf(doc), ui);
    list.SortByColumns();
    benchmark::DoNotOptimize(DrawFirstScreen(list));
  }
  doc.CloseProject();
  return true;
}

// The project open with its defect list up, for the header clicks. Made on first use,
// which comes after the openings are measured, since the administrator cannot be logged
// in twice; closed at exit.
class ShownList {
 public:
  static ShownList& Get() {
    static ShownList shown;
    return shown;
  }

  CDefectListView& list() { return *list_; }
  // The list as it came up: by number, in the order of the records.
  void PutBack() {
    CDefectTable& defects = DefectsOf(doc_);
    PutBackInRecordOrder(defects);
    defects.SetSortOrder({1, 1});
    list_->SetDefaultColumns();
  }

 private:
  ShownList() {
    bench::OpenAsAdmin(doc_, Files().projectPath());
    list_ = std::make_unique<CDefectListView>(DefectsOf(doc_), ui_);
  }
  ~ShownList() {
    list_.reset();
    doc_.CloseProject();
  }

  bench::SilentUi ui_;
  test::QuietHost host_;
  ProjectItemKinds kinds_;
  CDBDoc doc_{ui_, kinds_, host_};
  // Made once the opening has made the tables.
  std::unique_ptr<CDefectListView> list_;
};

// Before anything is timed: the opening shows defects 1 to 40 at the top of the list, and
// after the click the list and SQLite put the defects in the same order, so that the pair
// measures the same work.
void CheckListAgrees() {
  bench::SilentUi ui;
  test::QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc(ui, kinds, host);
  bench::OpenAsAdmin(doc, Files().projectPath());
  CDefectTable& defects = DefectsOf(doc);
  bool same = defects.count() == kDefects;
  for (std::uint32_t p = 1; same && p <= kScreenRows; ++p) same = defects.DefectAt(p)->number == p;
  if (!same) {
    std::fprintf(stderr, "the opened list does not start with defects 1 to %u\n", kScreenRows);
    std::exit(1);
  }
  CDefectListView list(defects, ui);
  if (list.columns().at(kSummaryColumn - 1).title != "Summary") {
    std::fprintf(stderr, "column %u of the defect list is not the summary\n", kSummaryColumn);
    std::exit(1);
  }
  list.OnHeaderClick(kSummaryColumn, false);
  if (!SameOrder(defects, SqliteDefects(Files().sqlitePath()).Rows(kSummarySql))) {
    std::fprintf(stderr, "the defect list and SQLite sort differently\n");
    std::exit(1);
  }
  doc.CloseProject();
}

// ---- the pairs ----

void OpenList(benchmark::State& state) {
  const std::string& path = Files().projectPath();
  for (auto _ : state) {
    if (!OpenShowAndClose(path)) {
      state.SkipWithError("the project did not open");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kDefects);
}

// The floor: every byte of the file read once.
void ReadFile(benchmark::State& state) { bench::ReadWholeFile(state, Files().projectPath()); }

// The same defects from SQLite as the opening has them: the file opened, every column of
// every row read into structs, the record's bytes included, and all of it freed and the
// file closed again, as the closing frees the defects.
void SqliteSelectAll(benchmark::State& state) {
  for (auto _ : state) {
    SqliteDefects sqlite(Files().sqlitePath());
    const std::vector<DefectRow> rows = sqlite.Rows("SELECT * FROM defects");
    if (rows.size() != kDefects) {
      state.SkipWithError("the select missed rows");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kDefects);
}

// The list put back as it came up before each click; then the click on Summary, which
// sorts the loaded defects by summary and then type, and the top of the list drawn again.
void HeaderClick(benchmark::State& state) {
  ShownList& shown = ShownList::Get();
  for (auto _ : state) {
    state.PauseTiming();
    shown.PutBack();
    state.ResumeTiming();
    shown.list().OnHeaderClick(kSummaryColumn, false);
    benchmark::DoNotOptimize(DrawFirstScreen(shown.list()));
  }
  shown.PutBack();
  state.SetItemsProcessed(state.iterations() * kDefects);
}

// The list's columns of every row in the same order, read, sorted and copied into structs;
// the freeing of the rows is not timed, as the click frees nothing.
void SqliteSortBySummary(benchmark::State& state) {
  SqliteDefects(Files().sqlitePath()).TimeRows(state, kSummarySql);
}

// ---- the ratios ----

class ListRatios : public bench::RatioReporter {
 protected:
  void WriteRatios() override {
    char unit[64];
    std::snprintf(unit, sizeof unit, "ms per file of %.1f MB",
                  static_cast<double>(ProjectSize()) / (1 << 20));
    const char* perDefects = "ms per 100,000 defects";
    Ratio("open, list, close / reading the file", kOpenName, kReadName, unit, 0.0);
    Ratio("open, list, close / SQLite SELECT *", kOpenName, kSqliteSelectName, perDefects, 0.0);
    Ratio("click on Summary / SQLite ORDER BY", kClickName, kSqliteSortName, perDefects, 0.0);
  }
};

void RegisterAll() {
  // The files are made, and the list checked, before the first timing; the check has read
  // both files, so they are warm.
  CheckListAgrees();
  // The openings go first: the clicks keep the project open from their first run on.
  SetUpCase(benchmark::RegisterBenchmark(kOpenName, OpenList));
  SetUpCase(benchmark::RegisterBenchmark(kReadName, ReadFile));
  SetUpCase(benchmark::RegisterBenchmark(kSqliteSelectName, SqliteSelectAll));
  SetUpCase(benchmark::RegisterBenchmark(kClickName, HeaderClick));
  SetUpCase(benchmark::RegisterBenchmark(kSqliteSortName, SqliteSortBySummary));
}

}  // namespace
}  // namespace qm

int main(int argc, char** argv) {
  qm::ListRatios reporter;
  return qm::bench::RunBenchmarks(argc, argv, qm::RegisterAll, reporter);
}