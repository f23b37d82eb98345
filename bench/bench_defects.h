// The 100,000 defects the defect-list benchmarks measure, made from a fixed seed into a
// project and into a SQLite file of the same rows, so that every program's figures are of
// one file; and SQLite's reading of those rows.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/bench_project.h"
#include "bench/setup_checks.h"
#include "bench/sqlite_check.h"
#include "defects/defect.h"
#include "defects/defect_event.h"
#include "defects/defect_table.h"
#include "defects/reported_by.h"
#include "people/user.h"
#include "platform/clock.h"
#include "session/db_doc.h"
#include "session/value_item.h"
#include "support/temp_dir.h"

namespace qm::bench {

inline constexpr std::uint32_t kDefects = 100'000;
inline constexpr std::uint32_t kStaff = 36;

// ---- the defects ----

inline constexpr std::string_view kFirstNames[] = {"Anna",  "Bernard", "Carla", "Dmitri", "Elena",
                                                   "Farid", "Greta",   "Hiro",  "Ines",   "Jonas",
                                                   "Luis",  "Marta",   "Nils",  "Olga",   "Pavel"};
inline constexpr std::string_view kLastNames[] = {
    "Abernathy", "Brandt",    "Castellano", "Dvorak",   "Eriksen", "Fontaine",
    "Horvath",   "Jankowski", "Moreau",     "Nakamura", "Petrov",  "Santoro"};
inline constexpr std::string_view kProducts[] = {"Ledgerline", "Ledgerline Server",
                                                 "Ledgerline Mobile Sync"};
inline constexpr std::string_view kComponents[] = {"Editor",  "Printing", "Import",   "Export",
                                                   "Reports", "Setup",    "Help",     "Mail",
                                                   "Filters", "Toolbar",  "Security", "Charts"};
inline constexpr std::string_view kSubjects[] = {"Report preview",
                                                 "Import of text files",
                                                 "The toolbar",
                                                 "Print dialog",
                                                 "Export to spreadsheet",
                                                 "Login window",
                                                 "Filter editor",
                                                 "Mail notification",
                                                 "Attachment list",
                                                 "Spelling checker",
                                                 "Chart legend",
                                                 "Setup program",
                                                 "Column chooser",
                                                 "Find next",
                                                 "Undo after paste",
                                                 "Date field",
                                                 "Status bar",
                                                 "Backup of the project",
                                                 "Help index",
                                                 "Window list",
                                                 "Page footer",
                                                 "Customer lookup",
                                                 "Password change",
                                                 "Sort by column"};
inline constexpr std::string_view kProblems[] = {"crashes",
                                                 "hangs for a minute",
                                                 "shows the wrong total",
                                                 "loses the last change",
                                                 "cuts long names",
                                                 "ignores the default printer",
                                                 "draws garbage",
                                                 "gives an error message",
                                                 "is very slow",
                                                 "forgets its settings",
                                                 "uses the wrong font",
                                                 "does not refresh",
                                                 "shows the wrong date",
                                                 "opens off screen",
                                                 "beeps twice",
                                                 "leaves a temporary file",
                                                 "rejects valid input",
                                                 "sorts in the wrong order",
                                                 "reports out of memory",
                                                 "does nothing"};
inline constexpr std::string_view kContexts[] = {"after changing the filter",
                                                 "on a network drive",
                                                 "with an empty project",
                                                 "when the window is maximized",
                                                 "with more than 64 columns",
                                                 "in single-user mode",
                                                 "after a long idle time",
                                                 "with a landscape page",
                                                 "when another user is saving",
                                                 "with accented characters",
                                                 "on a 640x480 display",
                                                 "after an upgrade from 2.0",
                                                 "with large fonts",
                                                 "when the disk is nearly full",
                                                 "from the keyboard only",
                                                 "on the second monitor",
                                                 "with a read-only file",
                                                 "during a backup",
                                                 "with the sample data",
                                                 "on the first run"};
inline constexpr std::string_view kDescriptionSentences[] = {
    "The problem shows up every time on the machine at the front desk. ",
    "It started after the last service pack was installed on the server. ",
    "Closing the program and opening it again makes it go away for a while. ",
    "Two other people in the office see the same thing with their own logins. ",
    "The customer sent a screen shot; the list is empty where it should not be. ",
    "Nothing is written to the log, and the program does not say what went wrong. ",
    "The same steps work in the previous release without any trouble. ",
    "With fewer than a hundred defects in the project it does not happen. "};
inline constexpr std::string_view kSteps[] = {
    "1. Open the sample project. 2. Choose the menu item. 3. Press OK twice.",
    "1. Log in as a tester. 2. Open the list. 3. Sort by any column. 4. Scroll down.",
    "1. Start with an empty project. 2. Add a defect. 3. Save and close the window."};
inline constexpr std::string_view kComments[] = {
    "Seen again at the customer site.",  "Could be the same as the printing problem.",
    "Looked at it; needs a debugger.",   "Customer asked for an update by Friday.",
    "Happens on the build machine too.", "Raised with the support team."};
inline constexpr std::string_view kVersions[] = {"2.0", "2.0.1", "2.1", "2.1.2", "2.2 beta"};

// Where a defect's life has got to; it decides its five events and so its status.
enum class Stage { kOpen, kFixed, kVerifyFailed, kVerified, kClosed, kReopened };

// The ids of the lists a defect names, each in the order of its list.
struct ListIds {
  std::vector<std::uint32_t> staff;
  std::vector<std::uint32_t> types;
  std::vector<std::uint32_t> priorities;
  std::vector<std::uint32_t> severities;
  std::vector<std::uint32_t> products;
  std::vector<std::uint32_t> components;
  std::vector<std::uint32_t> resolutions;
  std::vector<std::uint32_t> reproducible;
  std::vector<std::uint32_t> dispositions;
};

inline std::vector<std::uint32_t> IdsOf(const ItemTable& list) {
  std::vector<std::uint32_t> ids;
  for (std::uint32_t p = 1; p <= list.count(); ++p) ids.push_back(list.ItemAt(p)->GetId());
  return ids;
}

// A fixed seed: every run builds the same defects.
class Source {
 public:
  template <std::size_t N>
  std::string_view Pick(const std::string_view (&words)[N]) {
    return words[Below(N)];
  }
  std::size_t Below(std::size_t n) { return static_cast<std::size_t>(rng_() % n); }
  // An index and the id at it; the index + 1 is the value's place in its list.
  std::size_t PickIndex(const std::vector<std::uint32_t>& ids) { return Below(ids.size()); }
  std::uint32_t PickId(const std::vector<std::uint32_t>& ids) { return ids[Below(ids.size())]; }
  Stage PickStage() {
    // Out of 20: 6 open, 3 fixed, 1 failed, 2 verified, 7 closed, 1 re-opened.
    const std::size_t n = Below(20);
    if (n < 6) return Stage::kOpen;
    if (n < 9) return Stage::kFixed;
    if (n < 10) return Stage::kVerifyFailed;
    if (n < 12) return Stage::kVerified;
    if (n < 19) return Stage::kClosed;
    return Stage::kReopened;
  }

 private:
  std::mt19937 rng_{19970314};
};

// The columns a defect list shows, with the list fields as places in their lists, and in
// a full read the record's bytes too.
struct DefectRow {
  std::int64_t id = 0;
  std::uint32_t number = 0;
  std::string summary;
  std::uint32_t status = 0;
  std::uint32_t typePosition = 0;
  std::uint32_t priorityPosition = 0;
  std::uint32_t severityPosition = 0;
  std::uint32_t productPosition = 0;
  std::uint32_t componentPosition = 0;
  std::uint32_t assignedTo = 0;
  std::uint32_t foundBy = 0;
  std::uint32_t dateFound = 0;
  std::uint32_t dateModified = 0;
  std::vector<std::uint8_t> record;
};

// ---- the SQLite rows ----

inline constexpr const char* kCreateSql =
    "CREATE TABLE defects(id INTEGER PRIMARY KEY, number INTEGER, summary TEXT, status INTEGER, "
    "type_position INTEGER, priority_position INTEGER, severity_position INTEGER, "
    "product_position INTEGER, component_position INTEGER, assigned_to INTEGER, "
    "found_by INTEGER, date_found INTEGER, date_modified INTEGER, record BLOB)";
inline constexpr const char* kInsertSql =
    "INSERT INTO defects VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
inline constexpr const char* kListColumns =
    "SELECT id, number, summary, status, type_position, priority_position, severity_position, "
    "product_position, component_position, assigned_to, found_by, date_found, date_modified "
    "FROM defects ";

inline std::uint32_t Column32(sqlite3_stmt* statement, int column) {
  return static_cast<std::uint32_t>(sqlite3_column_int64(statement, column));
}

// The row under the statement into `row`; the record too when the statement has it.
inline void StepInto(sqlite3_stmt* statement, DefectRow& row) {
  row.id = sqlite3_column_int64(statement, 0);
  row.number = Column32(statement, 1);
  const auto* summary = reinterpret_cast<const char*>(sqlite3_column_text(statement, 2));
  row.summary.assign(summary, static_cast<std::size_t>(sqlite3_column_bytes(statement, 2)));
  row.status = Column32(statement, 3);
  row.typePosition = Column32(statement, 4);
  row.priorityPosition = Column32(statement, 5);
  row.severityPosition = Column32(statement, 6);
  row.productPosition = Column32(statement, 7);
  row.componentPosition = Column32(statement, 8);
  row.assignedTo = Column32(statement, 9);
  row.foundBy = Column32(statement, 10);
  row.dateFound = Column32(statement, 11);
  row.dateModified = Column32(statement, 12);
  if (sqlite3_column_count(statement) > 13) {
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement, 13));
    row.record.assign(bytes, bytes + sqlite3_column_bytes(statement, 13));
  }
}

// ---- the files ----

// The project and the SQLite file, made with the object and removed with their folder.
class DefectFiles {
 public:
  // The defects go in straight to the store under one access, committed once: through
  // the table each add would walk the sorted table, and a flush per record would make
  // the setup take minutes. The same rows go to SQLite in one transaction.
  DefectFiles() {
    BenchProject project(projectPath_);
    CDBDoc& doc = project.doc;
    CProjectStore& store = *doc.store();
    Source source;
    Check(store.BeginAccess(true), "begin access");
    const ListIds ids = AddLists(doc, source);

    sqlite3* db = nullptr;
    CheckSqlite(sqlite3_open(sqlitePath_.c_str(), &db), db, "sqlite open");
    CheckSqlite(sqlite3_exec(db, kCreateSql, nullptr, nullptr, nullptr), db, "sqlite create");
    CheckSqlite(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "sqlite begin");
    sqlite3_stmt* insert = nullptr;
    CheckSqlite(sqlite3_prepare_v2(db, kInsertSql, -1, &insert, nullptr), db, "sqlite prepare");

    // 1 January of the year the defects come in, at nine in the morning.
    const std::uint32_t yearStart = platform::StampFromCivil({2023, 1, 1, 9, 0, 0});
    for (std::uint32_t n = 1; n <= kDefects; ++n) {
      DefectRow row;
      CDefect defect;
      FillDefect(source, ids, yearStart, n, defect, row);
      row.record = defect.Pack();
      std::uint32_t id = 0;
      Check(store.AddRecord(kDefectTag, row.record, &id), "add defect");
      row.id = id;
      Insert(db, insert, row);
    }
    sqlite3_finalize(insert);
    CheckSqlite(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "sqlite commit");
    sqlite3_close(db);
    Check(store.EndAccess(true), "end access");
    doc.CloseProject();
  }

  const std::string& projectPath() const { return projectPath_; }
  const std::string& sqlitePath() const { return sqlitePath_; }

 private:
  // Staff to assign and fix, a few more products and the components; the other lists
  // keep the names a new project has.
  static ListIds AddLists(CDBDoc& doc, Source& source) {
    ListIds ids;
    ItemTable& users = *doc.GetTable(kUserTag);
    for (std::uint32_t n = 1; n <= kStaff; ++n) {
      auto person = std::make_unique<CUser>();
      const std::string first(source.Pick(kFirstNames));
      const std::string last(source.Pick(kLastNames));
      person->SetFirstName(first);
      person->SetLastName(last);
      person->SetLogin(first + std::to_string(n));
      CUser& added = *person;
      std::unique_ptr<RecordItem> item = std::move(person);
      Check(users.AddItem(item), "add user");
      ids.staff.push_back(added.GetId());
    }
    ItemTable& products = *doc.GetTable(MakeTag("prod"));
    for (const std::string_view name : kProducts) {
      std::unique_ptr<RecordItem> item =
          std::make_unique<ValueItem>(std::string(name), products.count() + 1);
      Check(products.AddItem(item), "add product");
    }
    ItemTable& components = *doc.GetTable(MakeTag("comp"));
    for (const std::string_view name : kComponents) {
      std::unique_ptr<RecordItem> item =
          std::make_unique<ValueItem>(std::string(name), components.count() + 1);
      Check(components.AddItem(item), "add component");
    }
    ids.types = IdsOf(*doc.GetTable(MakeTag("type")));
    ids.priorities = IdsOf(*doc.GetTable(MakeTag("prio")));
    ids.severities = IdsOf(*doc.GetTable(MakeTag("sevr")));
    ids.products = IdsOf(products);
    ids.components = IdsOf(components);
    ids.resolutions = IdsOf(*doc.GetTable(MakeTag("reso")));
    ids.reproducible = IdsOf(*doc.GetTable(MakeTag("rpro")));
    ids.dispositions = IdsOf(*doc.GetTable(MakeTag("usta")));
    return ids;
  }

  // Defect n: found on a day of the year, then five events some days apart, by staff.
  static void FillDefect(Source& source, const ListIds& ids, std::uint32_t yearStart,
                         std::uint32_t n, CDefect& defect, DefectRow& row) {
    constexpr std::uint32_t kDay = 24 * 60 * 60;
    const std::uint32_t found = yearStart + static_cast<std::uint32_t>(source.Below(300)) * kDay +
                                static_cast<std::uint32_t>(source.Below(8 * 60 * 60));
    std::uint32_t date = found;
    const auto nextDate = [&] {
      date += static_cast<std::uint32_t>(source.Below(6 * kDay) + kDay / 4);
      return date;
    };

    defect.number = n;
    defect.summary = std::string(source.Pick(kSubjects)) + " " +
                     std::string(source.Pick(kProblems)) + " " +
                     std::string(source.Pick(kContexts));
    const std::size_t type = source.PickIndex(ids.types);
    const std::size_t priority = source.PickIndex(ids.priorities);
    const std::size_t severity = source.PickIndex(ids.severities);
    const std::size_t product = source.PickIndex(ids.products);
    const std::size_t component = source.PickIndex(ids.components);
    defect.typeId = ids.types[type];
    defect.priorityId = ids.priorities[priority];
    defect.severityId = ids.severities[severity];
    defect.productId = ids.products[product];
    defect.componentId = ids.components[component];
    defect.dispositionId = source.PickId(ids.dispositions);
    defect.enteredById = source.PickId(ids.staff);
    defect.dateCreated = found;
    defect.dateEntered = found;

    auto report = std::make_unique<CReportedBy>();
    report->foundById = source.PickId(ids.staff);
    report->dateFound = found;
    report->versionFound = source.Pick(kVersions);
    report->description = std::string(source.Pick(kDescriptionSentences)) +
                          std::string(source.Pick(kDescriptionSentences));
    report->steps = source.Pick(kSteps);
    report->reproducedId = source.PickId(ids.reproducible);
    defect.AddReportedBy(std::move(report));
    defect.RefreshFromFirstReport();

    const auto assign = [&] {
      auto event = std::make_unique<CAssignEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      return event;
    };
    const auto comment = [&] {
      auto event = std::make_unique<CCommentEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      event->notes = source.Pick(kComments);
      return event;
    };
    const auto estimate = [&] {
      auto event = std::make_unique<CEstimateEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      event->hours = static_cast<double>(source.Below(40) + 1) / 2;
      event->estimatedDate = date + 14 * kDay;
      event->estimatedVersion = source.Pick(kVersions);
      return event;
    };
    const auto fix = [&] {
      auto event = std::make_unique<CFixEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      event->notes = "Fixed in the module named in the summary; see the change log.";
      event->hours = static_cast<double>(source.Below(24) + 1) / 2;
      event->resolutionId = source.PickId(ids.resolutions);
      event->fixVersion = source.Pick(kVersions);
      return event;
    };
    const auto verify = [&](bool passed) {
      auto event = std::make_unique<CVerifyEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      event->notes = passed ? "Checked on the test machine." : "Still happens on the laptop.";
      event->passed = passed;
      return event;
    };
    const auto close = [&] {
      auto event = std::make_unique<CCloseEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      event->resolutionId = source.PickId(ids.resolutions);
      return event;
    };
    const auto reopen = [&] {
      auto event = std::make_unique<CReOpenEvent>();
      event->userId = source.PickId(ids.staff);
      event->date = nextDate();
      event->notes = "Came back with the next build.";
      return event;
    };
    switch (source.PickStage()) {
      case Stage::kOpen:
        defect.AddEvent(assign());
        defect.AddEvent(comment());
        defect.AddEvent(estimate());
        defect.AddEvent(comment());
        defect.AddEvent(assign());
        break;
      case Stage::kFixed:
        defect.AddEvent(assign());
        defect.AddEvent(estimate());
        defect.AddEvent(comment());
        defect.AddEvent(fix());
        defect.AddEvent(comment());
        break;
      case Stage::kVerifyFailed:
        defect.AddEvent(assign());
        defect.AddEvent(estimate());
        defect.AddEvent(fix());
        defect.AddEvent(verify(false));
        defect.AddEvent(comment());
        break;
      case Stage::kVerified:
        defect.AddEvent(assign());
        defect.AddEvent(estimate());
        defect.AddEvent(fix());
        defect.AddEvent(verify(true));
        defect.AddEvent(comment());
        break;
      case Stage::kClosed:
        defect.AddEvent(assign());
        defect.AddEvent(fix());
        defect.AddEvent(verify(true));
        defect.AddEvent(close());
        defect.AddEvent(comment());
        break;
      case Stage::kReopened:
        defect.AddEvent(assign());
        defect.AddEvent(fix());
        defect.AddEvent(verify(true));
        defect.AddEvent(close());
        defect.AddEvent(reopen());
        break;
    }
    defect.dateModified = date;

    row.number = n;
    row.summary = defect.summary;
    row.status = defect.status();
    row.typePosition = static_cast<std::uint32_t>(type + 1);
    row.priorityPosition = static_cast<std::uint32_t>(priority + 1);
    row.severityPosition = static_cast<std::uint32_t>(severity + 1);
    row.productPosition = static_cast<std::uint32_t>(product + 1);
    row.componentPosition = static_cast<std::uint32_t>(component + 1);
    row.assignedTo = defect.copies().assignedToId;
    row.foundBy = defect.foundById;
    row.dateFound = defect.dateFound;
    row.dateModified = defect.dateModified;
  }

  static void Insert(sqlite3* db, sqlite3_stmt* insert, const DefectRow& row) {
    sqlite3_bind_int64(insert, 1, row.id);
    sqlite3_bind_int64(insert, 2, row.number);
    sqlite3_bind_text(insert, 3, row.summary.data(), static_cast<int>(row.summary.size()),
                      SQLITE_TRANSIENT);
    const std::uint32_t numbers[] = {
        row.status,          row.typePosition,      row.priorityPosition, row.severityPosition,
        row.productPosition, row.componentPosition, row.assignedTo,       row.foundBy,
        row.dateFound,       row.dateModified};
    int column = 4;
    for (const std::uint32_t value : numbers) sqlite3_bind_int64(insert, column++, value);
    sqlite3_bind_blob(insert, column, row.record.data(), static_cast<int>(row.record.size()),
                      SQLITE_TRANSIENT);
    CheckSqlite(sqlite3_step(insert), db, "sqlite insert");
    sqlite3_reset(insert);
  }

  test::TempDir dir_;
  std::string projectPath_ = dir_.File("defects.qmk");
  std::string sqlitePath_ = dir_.File("defects.db");
};

// The SQLite file, open for reading.
class SqliteDefects {
 public:
  explicit SqliteDefects(const std::string& path) {
    CheckSqlite(sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READONLY, nullptr), db_,
                "sqlite open");
  }
  ~SqliteDefects() { sqlite3_close(db_); }
  SqliteDefects(const SqliteDefects&) = delete;
  SqliteDefects& operator=(const SqliteDefects&) = delete;

  // Every row of the statement, each stepped into a struct of its own.
  std::vector<DefectRow> Rows(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    CheckSqlite(sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr), db_,
                "sqlite prepare");
    std::vector<DefectRow> rows;
    int rc = SQLITE_OK;
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW) StepInto(statement, rows.emplace_back());
    CheckSqlite(rc, db_, "sqlite step");
    sqlite3_finalize(statement);
    return rows;
  }

  // The rows of the statement read in each of the state's iterations; their freeing is not
  // timed.
  void TimeRows(benchmark::State& state, const std::string& sql) {
    for (auto _ : state) {
      std::vector<DefectRow> rows = Rows(sql);
      if (rows.size() != kDefects) state.SkipWithError("the select missed rows");
      state.PauseTiming();
      rows = {};
      state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kDefects);
  }

 private:
  sqlite3* db_ = nullptr;
};

// The project opened as the administrator, as with a remembered login; the setup gives up
// when it does not open.
inline void OpenAsAdmin(CDBDoc& doc, const std::string& path) {
  if (doc.OpenProject(path, ui::LoginEntry{"admin", ""}) != 1) {
    std::fprintf(stderr, "the project did not open\n");
    std::exit(1);
  }
}

// The defect table a project's opening loaded.
inline CDefectTable& DefectsOf(const CDBDoc& doc) {
  return *static_cast<CDefectTable*>(doc.GetTable(kDefectTag));
}

// Back to the order of the records, as the opening leaves the table.
inline void PutBackInRecordOrder(CDefectTable& table) {
  table.SortBy([](const RecordItem& a, const RecordItem& b) {
    return a.GetId() < b.GetId() ? -1 : (a.GetId() > b.GetId() ? 1 : 0);
  });
}

// Whether the table holds the rows' records, in the rows' order.
inline bool SameOrder(const ItemTable& table, const std::vector<DefectRow>& rows) {
  bool same = rows.size() == table.count();
  for (std::uint32_t p = 1; same && p <= table.count(); ++p) {
    same = static_cast<std::int64_t>(table.ItemAt(p)->GetId()) == rows[p - 1].id;
  }
  return same;
}

// How a case is timed: untimed for a while first, so that the first run in the process does
// not pay for growing the heap, then three times, the ratios taking the medians, since a
// shared machine's disk and caches wander.
inline void SetUpCase(benchmark::internal::Benchmark* b) {
  b->MinWarmUpTime(0.5)
      ->MinTime(1.0)
      ->Repetitions(3)
      ->ReportAggregatesOnly(true)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace qm::bench
