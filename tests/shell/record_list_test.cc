// The list window logic of the defect list: its saved state against hand-built bytes in
// each version, column insert and remove with their sort marks, the header's hit test, the
// title, the window placement in front of the state, and a window pulled into the area.
#include "shell/record_list.h"

#include <gtest/gtest.h>

#include <tuple>

#include "defects/defect.h"
#include "defects/defect_table.h"
#include "people/user.h"
#include "shell/window_fit.h"
#include "store/file_bytes.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

class RecordListTest : public ::testing::Test {
 protected:
  std::vector<std::uint16_t> Fields() const {
    std::vector<std::uint16_t> fields;
    for (const ListColumn& c : list.columns()) fields.push_back(c.fieldId);
    return fields;
  }

  ScriptedUi ui;
  CDefectTable table{nullptr, ui, static_cast<const DefectLookups*>(nullptr)};
  CDefectListView list{table, ui};
};

TEST_F(RecordListTest, TheDefaultStateIsWrittenAsVersion258) {
  Bytes expected;
  expected.u16({258, 6});
  expected.u16({65535, 28, 0, 0, 0}).str8("").u16(1);
  expected.u16({1, 32, 20, 100, 130}).str8("No.").u16(0);
  expected.u16({2, 234, 50, 400, 129}).str8("Summary").u16(0);
  expected.u16({4, 112, 50, 200, 129}).str8("Type").u16(0);
  expected.u16({5, 78, 50, 200, 129}).str8("Priority").u16(0);
  expected.u16({6, 102, 50, 200, 129}).str8("Status").u16(0);
  expected.u16({2, 0, 0, 0});
  EXPECT_EQ(list.WriteState(), expected.b);
  EXPECT_EQ(list.columns()[2].x, 60) << "the widths of the columns before it";

  // Read back into a list that was changed, it restores everything, kept words included.
  Bytes changed;
  changed.u16({258, 2});
  changed.u16({2, 300, 50, 400, 129}).str8("Summary").u16(0);
  changed.u16({33, 90, 20, 400, 130}).str8("Severity").u16(0);
  changed.u16({2, 1, 7, 9});
  EXPECT_EQ(list.ReadState(changed.b), changed.b.size());
  EXPECT_EQ(Fields(), (std::vector<std::uint16_t>{2, 33}));
  EXPECT_EQ(list.primarySortColumn(), 2);
  EXPECT_EQ(list.secondarySortColumn(), 1);
  EXPECT_EQ(list.WriteState(), changed.b);
}

TEST_F(RecordListTest, OlderStatesKeepTheSortColumnsAndWorkOutTheirFlags) {
  Bytes v256;
  v256.u16({256, 2});
  v256.u16({65535, 28, 0, 0, 0}).str8("");
  v256.u16({2, 234, 50, 400, 129}).str8("Summary");
  list.ReadState(v256.b);
  ASSERT_EQ(list.columns().size(), 2u);
  EXPECT_EQ(list.columns()[0].flags, 1) << "a field id negative as a signed number";
  EXPECT_EQ(list.columns()[1].flags, 0);
  EXPECT_EQ(list.primarySortColumn(), 2) << "the defaults stay";

  Bytes v257;
  v257.u16({257, 1});
  v257.u16({65535, 28, 0, 0, 0}).str8("").u16(0);
  list.ReadState(v257.b);
  EXPECT_EQ(list.columns()[0].flags, 0) << "flags as stored";
  EXPECT_EQ(list.primarySortColumn(), 2);
}

TEST_F(RecordListTest, AStateThatCannotBeReadLeavesTheColumns) {
  const std::vector<std::uint8_t> before = list.WriteState();
  EXPECT_THROW(list.ReadState(Bytes().u16({259, 0}).b), ListStateError);
  Bytes cut;
  cut.u16({258, 2, 2, 234, 50, 400, 129}).str8("Summary").u16({0, 4});
  EXPECT_THROW(list.ReadState(cut.b), ListStateError);
  EXPECT_EQ(list.WriteState(), before);

  // A placement whose state cannot be read is no placement.
  std::vector<std::uint8_t> value(WindowPlacement::kSize, 0);
  value.insert(value.end(), cut.b.begin(), cut.b.end());
  EXPECT_EQ(list.RestorePlacement(value), std::nullopt);
  EXPECT_EQ(list.RestorePlacement(std::vector<std::uint8_t>(5, 0)), std::nullopt);
  EXPECT_EQ(list.WriteState(), before);
}

TEST_F(RecordListTest, ThePlacementStandsLittleEndianBeforeTheState) {
  const WindowPlacement placement{true, WindowPlacement::kMaximised, {10, -20, 640, 480}};
  const std::vector<std::uint8_t> value = list.SavePlacement(placement);
  const std::vector<std::uint8_t> head = {1,    0,    0,    0,    1, 0, 10, 0,    0, 0, 0xEC,
                                          0xFF, 0xFF, 0xFF, 0x80, 2, 0, 0,  0xE0, 1, 0, 0};
  ASSERT_GT(value.size(), head.size());
  EXPECT_EQ(std::vector<std::uint8_t>(value.begin(), value.begin() + 22), head);
  EXPECT_EQ(std::vector<std::uint8_t>(value.begin() + 22, value.end()), list.WriteState());
  EXPECT_EQ(list.RestorePlacement(value), placement);
}

TEST_F(RecordListTest, ColumnsAreInsertedRemovedAndFilledWithTheirSortMarksKept) {
  // Insert before the number column, the primary sort column: the mark stays on "No.".
  list.ColumnCommand(2, CRecordListView::kInsertColumn);
  EXPECT_EQ(Fields(), (std::vector<std::uint16_t>{65535, 0, 1, 2, 4, 5, 6}));
  EXPECT_EQ(list.columns()[1].title, "<not set>");
  EXPECT_EQ(list.primarySortColumn(), 3);

  // Field choice 33 of the menu is the 33rd field of the catalogue.
  const std::vector<ColumnChoice> menu = list.GetColumnMenu();
  ASSERT_EQ(menu.size(), 55u);
  list.ColumnCommand(2, 33);
  EXPECT_EQ(list.columns()[1].fieldId, menu[32].fieldId);
  EXPECT_EQ(list.columns()[1].title, menu[32].title);

  list.ColumnCommand(3, CRecordListView::kRemoveColumn);
  EXPECT_EQ(list.primarySortColumn(), CRecordListView::kNoSortColumn) << "its column went";
  while (list.columns().size() > 2) list.ColumnCommand(2, CRecordListView::kRemoveColumn);
  EXPECT_TRUE(ui.shown.empty());
  list.ColumnCommand(2, CRecordListView::kRemoveColumn);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"Sorry, you cannot remove the last column in the list."});
  EXPECT_EQ(list.columns().size(), 2u);
}

TEST_F(RecordListTest, TheHeaderHitTestAndTheTitle) {
  // Columns: marker 0-28, "No." 28-60, "Summary" 60-294.
  EXPECT_EQ(list.HeaderHit(10), 0) << "the marker column has no popup";
  EXPECT_EQ(list.HeaderHit(31), 0) << "within 3 pixels of an edge";
  EXPECT_EQ(list.HeaderHit(32), 2);
  EXPECT_EQ(list.HeaderHit(56), 2);
  EXPECT_EQ(list.HeaderHit(57), 0);
  EXPECT_EQ(list.HeaderHit(100), 3);
  const std::uint16_t widths[] = {28, 100};
  list.SetWidths(widths);
  EXPECT_EQ(list.HeaderHit(100), 2) << "the widths read back from the header";

  EXPECT_EQ(list.Title(0), "Defects - (0 items, 0 selected)");
  CDefect one;
  table.AddSorted(&one);
  EXPECT_EQ(list.Title(1), "Defects - (1 item, 1 selected)");
}

TEST_F(RecordListTest, HeaderClicksSortByTwoKeys) {
  // Records in the opposite order of the numbers, so that a tie falls to the record id.
  std::vector<std::unique_ptr<CDefect>> defects;
  for (const auto& [number, summary] :
       {std::pair{1u, "b"}, std::pair{2u, "a"}, std::pair{3u, "a"}}) {
    defects.push_back(std::make_unique<CDefect>());
    defects.back()->number = number;
    defects.back()->summary = summary;
    defects.back()->SetId(4 - number);
    table.AddSorted(defects.back().get());
  }
  const auto numbers = [this] {
    std::string order;
    for (std::uint32_t p = 1; p <= table.count(); ++p) {
      order += std::to_string(table.DefectAt(p)->number);
    }
    return order;
  };
  list.SortByColumns();
  EXPECT_EQ(table.sortOrder().field, 1) << "a new list shows the defects by number";
  EXPECT_EQ(table.sortOrder().direction, 1);
  EXPECT_EQ(numbers(), "123");
  list.OnHeaderClick(3, false);  // Summary
  EXPECT_EQ(numbers(), "321");
  list.OnHeaderClick(3, false);
  EXPECT_EQ(numbers(), "123") << "a second click turns the direction round";
  list.OnHeaderClick(2, false);
  EXPECT_EQ(numbers(), "321") << "another column keeps the direction";
  list.OnHeaderClick(3, false);
  list.OnHeaderClick(2, true);  // the number as the second key, still descending
  EXPECT_EQ(list.primarySortColumn(), 3);
  EXPECT_EQ(list.secondarySortColumn(), 2);
  EXPECT_EQ(table.secondaryField(), 1);
  EXPECT_EQ(numbers(), "132");

  std::string text;
  defects[0]->isNew = true;
  ASSERT_TRUE(list.GetCellText(*defects[0], ListColumn::kMarkerField, text));
  EXPECT_EQ(text, "+");
  ASSERT_TRUE(list.GetCellText(*defects[0], 2, text));
  EXPECT_EQ(text, "b");
}

// A customer who reported a defect twice counts it once; a user counts what is assigned.
TEST(PeopleLists, UsersAndCustomersShareATableAndCountTheirDefects) {
  ScriptedUi ui;
  CUserTable people(nullptr, ui);
  CUser tess, acme;
  tess.SetFirstName("Tess");
  tess.SetLastName("Ng");
  tess.SetId(1);
  acme.SetLastName("Buyer");
  acme.SetCustomer(true);
  acme.SetId(3);
  people.AddSorted(&tess);
  people.AddSorted(&acme);
  CDefectTable defects(nullptr, ui, static_cast<const DefectLookups*>(nullptr));
  CDefect found;
  for (int n = 0; n < 2; ++n) {
    auto row = std::make_unique<CReportedBy>();
    row->foundById = 3;
    found.AddReportedBy(std::move(row));
  }
  auto assign = CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kAssign));
  assign->userId = 1;
  found.AddEvent(std::move(assign));
  defects.AddSorted(&found);

  CUserListView users(people, ui, nullptr);
  CCustomerListView customers(people, ui);
  users.Recount(defects);
  customers.Recount(defects);
  const auto cell = [](const CRecordListView& list, const CUser& person, std::uint16_t key) {
    std::string text;
    EXPECT_TRUE(list.GetCellText(person, key, text));
    return text;
  };
  users.SetFirstNameFirst(true);
  EXPECT_EQ(cell(users, tess, 1), "Tess Ng") << "Display names as: First Last";
  EXPECT_EQ(cell(users, tess, 11), "1");
  EXPECT_EQ(cell(customers, acme, 10), "1") << "one defect, however many of its rows";
  EXPECT_EQ(customers.columns()[3].title, "Reported");
}

// A window's rectangle pulled into the main window's area, over the places a remembered or
// default placement can leave it.
TEST(WindowFitTest, EveryWindowEndsWithinTheArea) {
  struct Case {
    const char* what;
    AreaRect rect;
    std::int32_t width, height;
    AreaRect fitted;
  };
  const Case cases[] = {
      {"inside stays", {10, 20, 410, 320}, 800, 600, {10, 20, 410, 320}},
      {"over the right edge moves left", {600, 20, 1000, 320}, 800, 600, {400, 20, 800, 320}},
      {"above and left of the area moves in", {-50, -30, 350, 270}, 800, 600, {0, 0, 400, 300}},
      {"from a larger screen, far off", {2000, 1500, 2760, 2060}, 800, 600, {40, 40, 800, 600}},
      {"wider than the area takes its width", {100, 10, 1100, 310}, 800, 600, {0, 10, 800, 310}},
      {"larger both ways takes the whole area", {-5, -5, 2000, 2000}, 640, 480, {0, 0, 640, 480}},
      {"an area not laid out yet changes nothing",
       {600, 500, 1000, 900},
       0,
       0,
       {600, 500, 1000, 900}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FitIntoArea(c.rect, c.width, c.height), c.fitted) << c.what;
  }
}

}  // namespace
}  // namespace qm::test
