// The record window over a multi-user project's priority list: buttons per mode, stepping,
// saving and adding, two windows of one program on one item, and the lock retry against
// another process that holds the record.
#include "shell/record_window.h"

#include <gtest/gtest.h>

#include <tuple>

#include "session/db_doc.h"
#include "session/value_item.h"
#include "shell/project_item_kinds.h"
#include "support/child_process.h"
#include "support/fake_files.h"
#include "support/made_project.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

constexpr Tag kPriorityTag = MakeTag("prio");

// A window with one field, the name of a priority.
class PriorityWindow : public CRecordWindow {
 public:
  using CRecordWindow::CRecordWindow;

  std::string name;
  bool enabled = true;
  std::vector<std::string> added;

 protected:
  std::string GetWindowTitle(std::uint16_t) const override { return "Priority"; }
  void LoadFields(const RecordItem& item) override {
    name = loaded_ = static_cast<const ValueItem&>(item).name;
  }
  void StoreFields(RecordItem& item) override { static_cast<ValueItem&>(item).name = name; }
  std::optional<FieldRefusal> ValidateFields() override {
    for (std::uint32_t p = 1; p <= table().count(); ++p) {
      const RecordItem* item = table().ItemAt(p);
      if (item != currentItem() && item->GetName() == name)
        return FieldRefusal("That name is taken.", "name");
    }
    return std::nullopt;
  }
  void AfterAdd(RecordItem& item) override { added.push_back(item.GetName()); }
  void EnableFields(bool enable) override { enabled = enable; }
  bool FieldsChanged() const override { return name != loaded_; }
  void ResetForAdd() override { name = loaded_ = ""; }

 private:
  std::string loaded_;
};

auto Shown(const ButtonState& b) { return std::tuple(b.visible, b.enabled, b.label, b.tip); }

class RecordWindowTest : public ::testing::Test {
 protected:
  // A multi-user project with a second user, tess, closed again so that a child process
  // can be forked without sharing its locks.
  void SetUp() override { MakeProject(path, true, {}, "pw"); }
  // Opens the project as admin in this process.
  void Open() {
    doc = std::make_unique<CDBDoc>(ui, kinds, host);
    ASSERT_EQ(doc->OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
    priorities = doc->GetTable(kPriorityTag);
  }
  std::vector<RecordItem*> First(std::uint32_t n) const {
    std::vector<RecordItem*> items;
    for (std::uint32_t p = 1; p <= n; ++p) items.push_back(priorities->ItemAt(p));
    return items;
  }
  bool LockedInStore(const RecordItem* item) {
    bool locked = false;
    EXPECT_EQ(doc->store()->IsRecordLocked(kPriorityTag, item->GetId(), locked), DBStatus::kOk);
    return locked;
  }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  FakeClock clock;
  EditMarks marks;
  std::unique_ptr<CDBDoc> doc;
  ItemTable* priorities = nullptr;
};

TEST_F(RecordWindowTest, ButtonsFollowTheModeAndTheBrowseList) {
  Open();
  PriorityWindow add(*doc, *priorities, ui, marks, clock);
  add.Open(CRecordWindow::kAdd);
  EXPECT_EQ(add.title(), "Add Priority");
  EXPECT_EQ(Shown(add.firstButton()), Shown({true, true, "Close", "Close (no save)"}));
  EXPECT_EQ(Shown(add.secondButton()), Shown({true, true, "Add", "Add & Reset"}));
  EXPECT_FALSE(add.nextButton().visible);
  EXPECT_FALSE(add.previousButton().visible);
  EXPECT_FALSE(add.lockedByButton().visible);

  PriorityWindow addOne(*doc, *priorities, ui, marks, clock);
  addOne.name = "left over";
  addOne.Open(CRecordWindow::kAddClose);
  EXPECT_EQ(addOne.title(), "Add Priority");
  EXPECT_EQ(addOne.name, "") << "mode 3 resets the fields";
  EXPECT_EQ(Shown(addOne.firstButton()), Shown({true, true, "Cancel", "Cancel Add"}));
  EXPECT_EQ(Shown(addOne.secondButton()), Shown({true, true, "Add", "Add & Close"}));

  PriorityWindow view(*doc, *priorities, ui, marks, clock);
  view.Open(CRecordWindow::kView, First(1));
  EXPECT_EQ(view.title(), "View Priority");
  EXPECT_EQ(view.name, "Immediate");
  EXPECT_FALSE(view.firstButton().visible);
  EXPECT_EQ(Shown(view.secondButton()), Shown({true, true, "OK", "Close"}));
  EXPECT_FALSE(view.nextButton().visible) << "a list of one item";
  EXPECT_FALSE(view.previousButton().visible);
  EXPECT_FALSE(view.lockHeld());
  EXPECT_FALSE(LockedInStore(priorities->ItemAt(1))) << "viewing takes no lock";
  EXPECT_FALSE(view.OnNextRecord());

  PriorityWindow edit(*doc, *priorities, ui, marks, clock);
  edit.Open(CRecordWindow::kEdit, First(3), 1);
  EXPECT_EQ(edit.title(), "Edit Priority");
  EXPECT_EQ(Shown(edit.firstButton()), Shown({true, true, "Cancel", "Cancel Edit"}));
  EXPECT_EQ(Shown(edit.secondButton()), Shown({true, true, "OK", "Save & Close"}));
  EXPECT_FALSE(edit.lockedByButton().visible);
  EXPECT_EQ(edit.lockedByButton().tip, "Locked By?");
  EXPECT_EQ(Shown(edit.nextButton()), Shown({true, true, "", "Next Record"}));
  EXPECT_EQ(Shown(edit.previousButton()), Shown({true, false, "", "Previous Record"}));
  EXPECT_FALSE(edit.OnPreviousRecord()) << "refused at the start";
  ASSERT_TRUE(edit.OnNextRecord());
  EXPECT_TRUE(edit.nextButton().enabled);
  EXPECT_TRUE(edit.previousButton().enabled);
  ASSERT_TRUE(edit.OnNextRecord());
  EXPECT_EQ(edit.position(), 3u);
  EXPECT_EQ(edit.name, "Before Beta");
  EXPECT_FALSE(edit.nextButton().enabled);
  EXPECT_TRUE(edit.previousButton().enabled);
  EXPECT_FALSE(edit.OnNextRecord()) << "refused at the end";
  EXPECT_TRUE(ui.shown.empty());
}

TEST_F(RecordWindowTest, StepStoresAChangedItemUnaskedAndAcceptReleasesTheLock) {
  Open();
  auto& first = static_cast<ValueItem&>(*priorities->ItemAt(1));
  auto& second = static_cast<ValueItem&>(*priorities->ItemAt(2));
  PriorityWindow window(*doc, *priorities, ui, marks, clock);
  window.Open(CRecordWindow::kEdit, First(2), 1);
  ASSERT_TRUE(window.lockHeld());
  EXPECT_TRUE(LockedInStore(&first));
  EXPECT_EQ(marks.HolderOf(&first), &window);

  window.name = "Right Now";
  ASSERT_TRUE(window.OnNextRecord());
  EXPECT_TRUE(ui.shown.empty()) << "no question before storing";
  EXPECT_FALSE(LockedInStore(&first));
  EXPECT_EQ(marks.HolderOf(&first), nullptr);
  EXPECT_TRUE(LockedInStore(&second));
  first.name = "scribbled";
  priorities->ReloadItem(first);
  EXPECT_EQ(first.name, "Right Now") << "the record holds the edit";

  // A step stores unasked, but not what OK would refuse: the window stays on the item.
  window.name = "Right Now";
  EXPECT_FALSE(window.OnPreviousRecord());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"That name is taken."});
  EXPECT_EQ(window.refusedField(), "name");
  EXPECT_EQ(window.position(), 2u);
  EXPECT_TRUE(LockedInStore(&second));
  ui.shown.clear();

  window.name = "Soon";
  EXPECT_TRUE(window.OnAcceptButton());
  EXPECT_EQ(window.refusedField(), "");
  EXPECT_FALSE(window.lockHeld());
  EXPECT_FALSE(LockedInStore(&second));
  EXPECT_EQ(marks.HolderOf(&second), nullptr);
  second.name = "scribbled";
  priorities->ReloadItem(second);
  EXPECT_EQ(second.name, "Soon");

  // Cancel gives the edit up and the lock too.
  PriorityWindow again(*doc, *priorities, ui, marks, clock);
  again.Open(CRecordWindow::kEdit, First(1));
  again.name = "Never";
  again.OnCancelButton();
  EXPECT_FALSE(LockedInStore(&first));
  EXPECT_EQ(first.name, "Right Now");
  EXPECT_TRUE(ui.shown.empty());
}

TEST_F(RecordWindowTest, AddKeepsTheFieldsOnARefusalAndModeThreeCloses) {
  Open();
  const std::uint32_t before = priorities->count();
  PriorityWindow add(*doc, *priorities, ui, marks, clock);
  add.Open(CRecordWindow::kAdd);
  add.name = "Immediate";
  EXPECT_FALSE(add.OnAcceptButton());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"That name is taken."});
  EXPECT_EQ(add.name, "Immediate") << "the fields stay as they were";
  EXPECT_EQ(priorities->count(), before);
  EXPECT_TRUE(add.added.empty());

  add.name = "Someday";
  EXPECT_FALSE(add.OnAcceptButton()) << "mode 0 stays open for the next item";
  EXPECT_EQ(add.added, std::vector<std::string>{"Someday"});
  EXPECT_EQ(add.name, "");
  ASSERT_EQ(priorities->count(), before + 1);
  const std::vector<RecordItem*> found =
      priorities->FilterTable([](const RecordItem& i) { return i.GetName() == "Someday"; });
  ASSERT_EQ(found.size(), 1u);
  const RecordItem* someday = found[0];
  EXPECT_NE(someday->GetId(), 0u);
  EXPECT_EQ(someday->changedAt, clock.now);

  PriorityWindow addOne(*doc, *priorities, ui, marks, clock);
  addOne.Open(CRecordWindow::kAddClose);
  addOne.name = "Later";
  EXPECT_TRUE(addOne.OnAcceptButton());
  EXPECT_EQ(addOne.added, std::vector<std::string>{"Later"});
  EXPECT_EQ(priorities->count(), before + 2);
  EXPECT_EQ(ui.shown.size(), 1u);
}

TEST_F(RecordWindowTest, ASecondWindowOfTheProgramOffersToGoToTheFirst) {
  Open();
  RecordItem* item = priorities->ItemAt(2);
  PriorityWindow first(*doc, *priorities, ui, marks, clock);
  first.Open(CRecordWindow::kEdit, {item});
  PriorityWindow second(*doc, *priorities, ui, marks, clock);
  second.Open(CRecordWindow::kEdit, {item});
  EXPECT_TRUE(second.lockFailed());
  EXPECT_TRUE(second.lockedByButton().visible);
  EXPECT_FALSE(second.secondButton().enabled);
  EXPECT_FALSE(second.enabled);
  EXPECT_EQ(second.name, "Before Alpha") << "shown read-only";
  EXPECT_FALSE(second.OnAcceptButton()) << "nothing to accept without the lock";

  const std::string question =
      "You are editing this item in another window. Do you want to go there?";
  ui.Script({ui::Answer::kYes, ui::Answer::kNo});
  EXPECT_EQ(second.OnLockedBy(), &first);
  EXPECT_EQ(second.OnLockedBy(), nullptr);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{question, question}));
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kYesNo);

  clock.now += CRecordWindow::kRetrySeconds;
  second.OnIdle();
  EXPECT_TRUE(second.lockFailed()) << "the first window still holds it";
  first.OnCancelButton();
  clock.now += CRecordWindow::kRetrySeconds;
  second.OnIdle();
  EXPECT_TRUE(second.lockHeld());
  EXPECT_TRUE(second.enabled);
  EXPECT_EQ(marks.HolderOf(item), &second);
  EXPECT_TRUE(LockedInStore(item));
}

TEST_F(RecordWindowTest, ARecordLockedByAnotherProcessTurnsEditableTenSecondsAfterItsRelease) {
  const std::string file = path;
  Child other([file](Child::Channel& c) {
    ScriptedUi childUi;
    QuietHost childHost;
    ProjectItemKinds childKinds;
    CDBDoc mine(childUi, childKinds, childHost);
    if (mine.OpenProject(file, ui::LoginEntry{"tess", "pw"}) != 1) return 1;
    auto& beta = static_cast<ValueItem&>(*mine.GetTable(kPriorityTag)->ItemAt(3));
    if (mine.store()->LockRecord(kPriorityTag, beta.GetId(), mine.currentUserId()) !=
        DBStatus::kOk) {
      return 2;
    }
    c.Send("locked");
    c.Receive();
    beta.name = "Before Beta Two";
    if (mine.GetTable(kPriorityTag)->SaveItem(beta) != DBStatus::kOk) return 3;
    if (mine.store()->UnlockRecord(kPriorityTag, beta.GetId()) != DBStatus::kOk) return 4;
    c.Send("released");
    c.Receive();
    return 0;
  });
  ASSERT_EQ(other.Receive(), "locked");
  Open();
  PriorityWindow window(*doc, *priorities, ui, marks, clock);
  window.Open(CRecordWindow::kEdit, First(3), 3);
  EXPECT_TRUE(window.lockFailed());
  EXPECT_FALSE(window.lockHeld());
  EXPECT_TRUE(window.lockedByButton().visible);
  EXPECT_FALSE(window.secondButton().enabled);
  EXPECT_FALSE(window.enabled);
  EXPECT_EQ(window.name, "Before Beta");

  std::string holder;
  window.showLockHolder = [&holder](const std::string& name) { holder = name; };
  EXPECT_EQ(window.OnLockedBy(), nullptr);
  EXPECT_EQ(holder, "Tess");

  other.Send("save and release");
  ASSERT_EQ(other.Receive(), "released");
  clock.now += CRecordWindow::kRetrySeconds - 1;
  window.OnIdle();
  EXPECT_TRUE(window.lockFailed()) << "no retry before 10 seconds";
  EXPECT_FALSE(window.enabled);
  clock.now += 1;
  window.OnIdle();
  EXPECT_TRUE(window.lockHeld());
  EXPECT_FALSE(window.lockFailed());
  EXPECT_FALSE(window.retryActive());
  EXPECT_FALSE(window.lockedByButton().visible);
  EXPECT_TRUE(window.secondButton().enabled);
  EXPECT_TRUE(window.enabled);
  EXPECT_EQ(window.name, "Before Beta Two") << "what the other process saved";
  EXPECT_TRUE(LockedInStore(priorities->ItemAt(3)));

  window.OnCancelButton();
  EXPECT_FALSE(LockedInStore(priorities->ItemAt(3)));
  other.Send("end");
  EXPECT_EQ(other.Wait(), 0);
  EXPECT_TRUE(ui.shown.empty());
}

}  // namespace
}  // namespace qm::test
