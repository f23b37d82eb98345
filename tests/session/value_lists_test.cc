// Value lists over a real project file: list names as stored, the set-up dialog's commands
// with their messages, writes and notices, and the numbering dialog with its records.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "session/item_error.h"
#include "session/numbering.h"
#include "session/value_item.h"
#include "session/value_lists.h"
#include "session/value_setup.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

using ByteList = std::vector<std::uint8_t>;
using Strings = std::vector<std::string>;
using Step = ValueSetup::DeleteStep;

constexpr Tag kType = MakeTag("type");
constexpr Tag kProd = MakeTag("prod");
constexpr Tag kMisc = MakeTag("misc");

// Defects of one field each, the field that a deletion looks at or another one.
struct FakeDefects : DefectFieldAccess {
  struct Defect {
    std::uint32_t id;
    std::uint16_t code;
    std::uint32_t value;
    int saves = 0;
  };
  std::uint32_t DefectCount() const override { return static_cast<std::uint32_t>(list.size()); }
  std::uint32_t DefectId(std::uint32_t p) const override { return list[p - 1].id; }
  bool UsesValue(std::uint32_t p, std::uint16_t code, std::uint32_t id) const override {
    return list[p - 1].code == code && list[p - 1].value == id;
  }
  void ReplaceValue(std::uint32_t p, std::uint16_t code, std::uint32_t from,
                    std::uint32_t to) override {
    if (UsesValue(p, code, from)) list[p - 1].value = to;
  }
  DBStatus SaveDefect(std::uint32_t p) override {
    ++list[p - 1].saves;
    return DBStatus::kOk;
  }
  std::vector<Defect> list;
};

// The open project's SetCounter and the highest defect number, as the numbering dialog
// sees them.
struct Counters : ProjectCounters, DefectNumbers {
  explicit Counters(CProjectStore& s) : store(s) {}
  DBStatus SetCounter(Tag tag, std::uint32_t id, std::uint32_t value) override {
    return store.UpdateRecord(tag, id, Bytes().u32(value).b);
  }
  std::uint32_t HighestNumber() const override { return 100; }
  CProjectStore& store;
};

class ValueListsTest : public ::testing::Test {
 protected:
  void Make(std::uint16_t multiUser) {
    path = dir.File("p.qmk");
    ASSERT_EQ(store.Create(path, multiUser), DBStatus::kOk);
    for (Tag tag : {kMisc, kType, kProd}) ASSERT_EQ(store.AddTable(tag, ""), DBStatus::kOk);
  }
  // The header's change counter: one step for every committed change of the file.
  std::uint32_t Changes() const { return BeU32(ReadFileBytes(path), 24); }
  ByteList Stored(Tag tag, std::uint32_t id) {
    ByteList out;
    EXPECT_EQ(store.ReadRecord(tag, id, out), DBStatus::kOk);
    return out;
  }
  Strings Reloaded(Tag tag) {
    CValueTable table(&store, tag, ui);
    table.LoadTable(true);
    Strings names;
    for (std::uint32_t p = 1; p <= table.count(); ++p) names.push_back(table.ValueAt(p)->name);
    return names;
  }
  // A name in the newest layout.
  static ByteList Name(std::uint8_t deleted, const std::string& name, std::uint32_t order) {
    return Bytes().u16(257).u8(deleted).str8(name).u32(order).b;
  }

  TempDir dir;
  std::string path;
  ScriptedUi ui;
  CProjectStore store{ui};
  FakeDefects defects;
};

TEST_F(ValueListsTest, NamesLoadInListOrderAndAMoveRewritesEveryOne) {
  Make(0);
  // Records of both layouts, stored out of list order and with a gap in the orders.
  std::uint32_t id = 0;
  ASSERT_EQ(store.AddRecord(kType, Bytes().u16(256).u8(5).text("Never").u32(5).b, &id),
            DBStatus::kOk);
  ASSERT_EQ(store.AddRecord(kType, Name(1, "Always", 1), &id), DBStatus::kOk);
  ASSERT_EQ(store.AddRecord(kType, Name(0, "Sometimes", 2), &id), DBStatus::kOk);
  CValueTable table(&store, kType, ui);
  table.LoadTable(true);
  ValueSetup setup(table, *FindValueList(kType), &defects, ui, 0);
  EXPECT_EQ(setup.Names(), (Strings{"Always", "Sometimes", "Never"}));
  EXPECT_TRUE(table.ValueAt(1)->deleted);
  for (std::uint16_t version : {std::uint16_t{255}, std::uint16_t{258}}) {
    EXPECT_THROW(table.ItemFromRecord(Bytes().u16(version).u8(0).u8(1).text("x").u32(1).b),
                 ItemError)
        << version;
  }

  const std::uint32_t before = Changes();
  setup.Select(1);
  setup.MoveUp();
  setup.Select(3);
  setup.MoveDown();
  EXPECT_EQ(Changes(), before);
  setup.MoveUp();
  EXPECT_EQ(Changes(), before + 3) << "every name, not only the two that changed places";
  EXPECT_EQ(setup.selection(), 2u);
  setup.Select(1);
  setup.MoveDown();
  EXPECT_EQ(setup.selection(), 2u);
  EXPECT_EQ(setup.Names(), (Strings{"Never", "Always", "Sometimes"}));
  EXPECT_EQ(Reloaded(kType), setup.Names());
  EXPECT_EQ(Stored(kType, 1), Name(0, "Never", 1)) << "in the newest layout";
  EXPECT_EQ(Stored(kType, 3), Name(0, "Sometimes", 3)) << "without the gap";
}

// The dialog opens only while the user is alone. An edit keeps names unique without regard
// to case, though its own name in other letters is no other name. A name that defects use
// goes after a choice of the one they take, each with a notice to the other clients; a
// product may go without a choice, its defects losing it.
TEST_F(ValueListsTest, EditsKeepNamesUniqueAndDeletionsMoveTheDefects) {
  Make(1);
  ASSERT_EQ(store.LoginUser(1), DBStatus::kOk);
  ScriptedUi otherUi;
  CProjectStore other(otherUi);
  ASSERT_EQ(other.Open(path), DBStatus::kOk);
  CValueTable table(&store, kType, ui);
  ValueSetup setup(table, *FindValueList(kType), &defects, ui, 1);
  EXPECT_EQ(setup.Title(), "Set Up Defect Type");
  EXPECT_EQ(setup.Text(),
            "Use this dialog to add, edit, delete or re-order the defect type names.");
  EXPECT_TRUE(setup.Open());
  ASSERT_EQ(other.LoginUser(2), DBStatus::kOk);
  EXPECT_FALSE(setup.Open());
  ASSERT_EQ(other.LogoutUser(2), DBStatus::kOk);
  EXPECT_TRUE(setup.Open());

  for (const char* name : {"A", "B", "C"}) ASSERT_TRUE(setup.Add(name));
  setup.Select(2);
  EXPECT_EQ(setup.EditInput(), "B");
  EXPECT_FALSE(setup.Edit(" B "));
  EXPECT_FALSE(setup.Edit("c"));
  const std::uint32_t before = Changes();
  EXPECT_TRUE(setup.Edit("b "));
  EXPECT_EQ(Changes(), before + 1);
  EXPECT_EQ(Stored(kType, 2), Name(0, "b", 2));
  EXPECT_EQ(ui.Texts(), (Strings{"Cannot configure field value names while other users are "
                                 "logged in. Ask all other users to log out and try again.",
                                 "An item with that name already exists, please enter a unique "
                                 "name."}));
  ui.shown.clear();

  defects.list = {{10, kFieldType, 2}, {11, kFieldProduct, 1}, {12, kFieldType, 2}};
  ui.Script({ui::Answer::kOk});
  ASSERT_EQ(setup.Delete(), Step::kChooseReplacement);
  EXPECT_EQ(setup.replacementQuestion().text,
            "One or more defects use this field name. Quillmark will change these defects to "
            "use the field name you choose from the popup menu.");
  EXPECT_EQ(setup.replacementQuestion().label, "New name:");
  EXPECT_EQ(setup.replacementQuestion().names, (Strings{"A", "C"}));
  setup.ChooseReplacement(2);  // C
  EXPECT_EQ(ui.Texts(), Strings{"Are you sure that you want to delete the selected name? There is "
                                "no undo available."});
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kOkCancel);
  EXPECT_EQ(ui.progress,
            (Strings{"[Set Up Defect Type]", "Updating defect 1 of 3...",
                     "Updating defect 2 of 3...", "Updating defect 3 of 3...", "[end]"}));
  EXPECT_EQ(defects.list[0].value, 3u);
  EXPECT_EQ(defects.list[0].saves, 1);
  EXPECT_EQ(defects.list[1].saves, 0);
  EXPECT_EQ(setup.Names(), (Strings{"A", "C"}));
  EXPECT_EQ(setup.selection(), 0u);
  for (std::uint32_t defectId : {10u, 12u}) {
    Notice notice;
    ASSERT_EQ(other.GetNextMessage(notice), DBStatus::kOk);
    EXPECT_EQ(notice.kind, 1002u);
    EXPECT_EQ(notice.sender, 1u);
    EXPECT_EQ(notice.data, Bytes().text("dfct").u32(defectId).b);
  }
  Notice none;
  EXPECT_EQ(other.GetNextMessage(none), DBStatus::kNoMessage);

  CValueTable products(&store, kProd, ui);
  ValueSetup productSetup(products, *FindValueList(kProd), &defects, ui, 1);
  ASSERT_TRUE(productSetup.Add("Widget"));
  productSetup.Select(1);
  ui.progress.clear();
  ui.Script({ui::Answer::kOk});
  EXPECT_EQ(productSetup.Delete(), Step::kOver);
  EXPECT_EQ(ui.progress,
            (Strings{"[Set Up Product]", "Updating defect 1 of 3...", "Updating defect 2 of 3...",
                     "Updating defect 3 of 3...", "[end]"}));
  EXPECT_EQ(defects.list[1].value, 0u);
  EXPECT_EQ(defects.list[1].saves, 1);
  EXPECT_TRUE(Reloaded(kProd).empty());
}

TEST_F(ValueListsTest, TheNextNumberMayGoBackOnlyAboveTheHighestDefect) {
  Make(0);
  ASSERT_EQ(store.PutRecord(kMisc, Bytes().u32(200).b, 7, PutMode::kReplace), DBStatus::kOk);
  Counters counters(store);
  ProjectOptions options{true, true, true, false};
  NumberingSetup dialog(store, options, counters, counters, ui);
  dialog.Open();
  EXPECT_EQ(dialog.nextNumber, 201u);
  EXPECT_TRUE(dialog.numberOnWispNoteImport);

  // The options record keeps the fourth option, which the dialog does not show, as it
  // was; the counter is not written when its number stays.
  dialog.numberOnWispNoteImport = false;
  const std::uint32_t before = Changes();
  EXPECT_TRUE(dialog.Accept());
  EXPECT_EQ(Changes(), before + 1);
  EXPECT_EQ(Stored(kMisc, 8), Bytes().u16(1).u8(1).u8(0).u8(1).u8(0).b);
  EXPECT_EQ(options, (ProjectOptions{true, false, true, false}));
  EXPECT_EQ(DecodeOptions(Bytes().u16(1).u8(0).u8(1).u8(0).u8(1).b),
            (ProjectOptions{false, true, false, true}));
  EXPECT_FALSE(DecodeOptions(Bytes().u16(1).u8(1).u8(1).u8(1).b).has_value());

  dialog.nextNumber = 100;
  EXPECT_FALSE(dialog.Accept());
  EXPECT_EQ(Stored(kMisc, 7), Bytes().u32(200).b);
  dialog.nextNumber = 101;
  EXPECT_TRUE(dialog.Accept());
  EXPECT_EQ(Stored(kMisc, 7), Bytes().u32(100).b);

  // A raise does not take the counter back where it has passed the number meanwhile.
  dialog.Open();
  ASSERT_EQ(store.UpdateRecord(kMisc, 7, Bytes().u32(450).b), DBStatus::kOk);
  dialog.nextNumber = 400;
  EXPECT_TRUE(dialog.Accept());
  EXPECT_EQ(Stored(kMisc, 7), Bytes().u32(450).b);
}

}  // namespace
}  // namespace qm::test
