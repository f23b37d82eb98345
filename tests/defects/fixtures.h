// What the tests of defects share: lookups over plain maps, a defect that uses a value of
// each list, and a multi-user project on disk with a second client that holds records.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "defects/defect.h"
#include "defects/defect_lookups.h"
#include "defects/defect_table.h"
#include "people/test_config.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "session/record_notice.h"
#include "session/value_item.h"
#include "shell/project_item_kinds.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {

// An id that a test did not enter names nothing.
class FakeLookups : public DefectLookups {
 public:
  const CUser* User(std::uint32_t id) const override { return Find(users, id); }
  const CUserGroup* Group(std::uint32_t) const override { return nullptr; }
  const CTestConfig* TestConfig(std::uint32_t id) const override { return Find(configs, id); }
  const ValueItem* Value(Tag list, std::uint32_t id) const override {
    return Find(values, std::pair(list, id));
  }
  std::uint32_t ValuePosition(Tag list, std::uint32_t id) const override {
    auto it = positions.find({list, id});
    return it != positions.end() ? it->second : 0;
  }
  std::uint32_t CurrentUserId() const override { return 0; }

  void AddValues(std::initializer_list<std::tuple<Tag, std::uint32_t, const char*>> names) {
    for (const auto& [list, id, name] : names) {
      values.emplace(std::piecewise_construct, std::forward_as_tuple(list, id),
                     std::forward_as_tuple(name, 1u));
    }
  }

  std::map<std::uint32_t, CUser> users;
  std::map<std::uint32_t, CTestConfig> configs;
  std::map<std::pair<Tag, std::uint32_t>, ValueItem> values;
  std::map<std::pair<Tag, std::uint32_t>, std::uint32_t> positions;

 private:
  template <typename Map, typename Key>
  static const typename Map::mapped_type* Find(const Map& map, const Key& key) {
    auto it = map.find(key);
    return it != map.end() ? &it->second : nullptr;
  }
};

// A day of 2025. Made on use: the clock's calendar is not ready while statics are set up.
inline std::uint32_t Day(int month, int day, int hour = 0) {
  return platform::StampFromCivil({2025, month, day, hour, 0, 0});
}

// Users 2 (Smith, Ann of Acme) and 3 (Lee), configuration 5, a value or two in each list,
// and defect 7 using one of each, with one reported-by row.
class SampleDefect : public ::testing::Test {
 protected:
  SampleDefect() {
    lookups.users[2].SetLastName("Smith");
    lookups.users[2].SetFirstName("Ann");
    lookups.users[2].SetCompany("Acme");
    lookups.users[3].SetLastName("Lee");
    lookups.configs[5].name = "Lab <PC>";
    lookups.AddValues({{MakeTag("prod"), 1, "Atlas"},
                       {MakeTag("prod"), 11, "Beacon"},
                       {MakeTag("comp"), 2, "Parser"},
                       {MakeTag("comp"), 12, "Lexer"},
                       {MakeTag("type"), 3, "Cosmetic"},
                       {MakeTag("type"), 13, "Crash"},
                       {MakeTag("prio"), 4, "Immediate"},
                       {MakeTag("sevr"), 5, "Workaround"},
                       {MakeTag("reso"), 6, "Code Change"},
                       {MakeTag("reso"), 8, "As \"designed\" <x> & y"},
                       {MakeTag("rpro"), 7, "Always"},
                       {MakeTag("rpro"), 17, "Sometimes"}});
    d.number = 7;
    d.summary = "Crash <on> save";
    d.productId = 1;
    d.componentId = 2;
    d.typeId = 3;
    d.priorityId = 4;
    d.severityId = 5;
    d.reference = "R-1";
    d.enteredById = 2;
    d.dateEntered = Day(1, 2);
    d.workaround = "Save\rtwice";
    d.AddReportedBy(Row(2, Day(1, 2)));
  }
  static std::unique_ptr<CReportedBy> Row(std::uint32_t who, std::uint32_t date) {
    auto row = std::make_unique<CReportedBy>();
    row->foundById = who;
    row->dateFound = date;
    row->versionFound = "1.0";
    row->description = "It crashes";
    row->reproducedId = 7;
    return row;
  }
  template <class Event>
  Event& Add(int day, std::uint32_t user, const char* notes) {
    auto e = std::make_unique<Event>();
    e->date = Day(2, day);
    e->userId = user;
    e->notes = notes;
    Event& raw = *e;
    d.AddEvent(std::move(e));
    return raw;
  }

  FakeLookups lookups;
  CDefect d{&lookups};
};

// A new multi-user project with its administrator logged in.
class ProjectTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(doc.NewProject(path, true), 1); }
  CDefectTable& defects() { return static_cast<CDefectTable&>(*doc.GetTable(kDefectTag)); }
  // A defect added to the project, with one assignment when `assignee` is given.
  CDefect& AddDefect(const char* summary, std::uint32_t number = 0, std::uint32_t assignee = 0) {
    std::unique_ptr<RecordItem> item = defects().NewItem();
    auto& d = static_cast<CDefect&>(*item);
    d.summary = summary;
    d.number = number;
    if (assignee != 0) {
      auto assign = std::make_unique<CAssignEvent>();
      assign->userId = assignee;
      assign->date = Day(5, 1);
      d.AddEvent(std::move(assign));
    }
    EXPECT_EQ(defects().AddItem(item), DBStatus::kOk);
    return d;
  }
  // Another client of the file, a process of its own, that holds `ids` of `table` locked
  // until it is sent a line. Its answer is then 0 when `deleted` is 0 or its next notice says
  // that this record of `table` was deleted.
  std::unique_ptr<Child> LockingClient(Tag table, std::vector<std::uint32_t> ids,
                                       std::uint32_t deleted = 0) {
    auto child = std::make_unique<Child>([file = path, table, ids, deleted](Child::Channel& c) {
      ScriptedUi childUi;
      CProjectStore store(childUi);
      if (store.Open(file) != DBStatus::kOk || store.LoginUser(77) != DBStatus::kOk) return 1;
      for (const std::uint32_t id : ids) {
        if (store.LockRecord(table, id, 77) != DBStatus::kOk) return 1;
      }
      c.Send("locked");
      c.Receive();
      if (deleted == 0) return 0;
      Notice notice;
      if (store.GetNextMessage(notice) != DBStatus::kOk) return 2;
      return notice.kind == kNoticeDeleted && notice.data == Bytes().u32(table).u32(deleted).b ? 0
                                                                                               : 3;
    });
    EXPECT_EQ(child->Receive(), "locked");
    return child;
  }

  TempDir dir;
  std::string path = dir.File("p.qmk");
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc{ui, kinds, host};
};

}  // namespace qm::test
