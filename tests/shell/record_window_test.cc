// The record window over a multi-user project's priority list: stepping, saving and
// adding, and two windows of one program on one item. The lock retry against another
// process is the defect window's test.
#include "shell/record_window.h"

#include <gtest/gtest.h>

#include "session/value_item.h"
#include "shell_project.h"

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

class RecordWindowTest : public ShellProject {
 protected:
  void SetUp() override {
    MakeProject(path);
    Open();
  }
  ItemTable& priorities() { return table(kPriorityTag); }
  std::vector<RecordItem*> First(std::uint32_t n) {
    std::vector<RecordItem*> items;
    for (std::uint32_t p = 1; p <= n; ++p) items.push_back(priorities().ItemAt(p));
    return items;
  }
  bool LockedInStore(const RecordItem* item) {
    bool locked = false;
    EXPECT_EQ(doc->store()->IsRecordLocked(kPriorityTag, item->GetId(), locked), DBStatus::kOk);
    return locked;
  }
  std::unique_ptr<PriorityWindow> Window() {
    return std::make_unique<PriorityWindow>(*doc, priorities(), ui, marks, clock);
  }
};

TEST_F(RecordWindowTest, StepStoresAChangedItemUnaskedAndAcceptReleasesTheLock) {
  auto& first = static_cast<ValueItem&>(*priorities().ItemAt(1));
  auto& second = static_cast<ValueItem&>(*priorities().ItemAt(2));
  auto window = Window();
  window->Open(CRecordWindow::kEdit, First(2), 1);
  EXPECT_EQ(marks.HolderOf(&first), window.get());
  EXPECT_FALSE(window->previousButton().enabled);
  EXPECT_FALSE(window->OnPreviousRecord()) << "refused at the start";

  window->name = "Right Now";
  ASSERT_TRUE(window->OnNextRecord());
  EXPECT_TRUE(window->previousButton().enabled);
  EXPECT_FALSE(window->nextButton().enabled);
  EXPECT_FALSE(window->OnNextRecord()) << "refused at the end";
  EXPECT_TRUE(ui.shown.empty()) << "no question before storing";
  EXPECT_FALSE(LockedInStore(&first));
  EXPECT_EQ(marks.HolderOf(&first), nullptr);
  EXPECT_TRUE(LockedInStore(&second));
  first.name = "scribbled";
  priorities().ReloadItem(first);
  EXPECT_EQ(first.name, "Right Now") << "the record holds the edit";

  // A step stores unasked, but not what OK would refuse: the window stays on the item.
  window->name = "Right Now";
  EXPECT_FALSE(window->OnPreviousRecord());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"That name is taken."});
  EXPECT_EQ(window->refusedField(), "name");
  EXPECT_EQ(window->position(), 2u);
  ui.shown.clear();

  window->name = "Soon";
  EXPECT_TRUE(window->OnAcceptButton());
  EXPECT_EQ(window->refusedField(), "");
  EXPECT_FALSE(window->lockHeld());
  EXPECT_FALSE(LockedInStore(&second));
  EXPECT_EQ(marks.HolderOf(&second), nullptr);
  second.name = "scribbled";
  priorities().ReloadItem(second);
  EXPECT_EQ(second.name, "Soon");

  // Cancel gives the edit up and the lock too.
  auto again = Window();
  again->Open(CRecordWindow::kEdit, First(1));
  again->name = "Never";
  again->OnCancelButton();
  EXPECT_FALSE(LockedInStore(&first));
  EXPECT_EQ(first.name, "Right Now");
  EXPECT_TRUE(ui.shown.empty());
}

TEST_F(RecordWindowTest, AddKeepsTheFieldsOnARefusalAndModeThreeCloses) {
  const std::uint32_t before = priorities().count();
  auto add = Window();
  add->Open(CRecordWindow::kAdd);
  add->name = "Immediate";
  EXPECT_FALSE(add->OnAcceptButton());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"That name is taken."});
  EXPECT_EQ(add->name, "Immediate") << "the fields stay as they were";
  EXPECT_EQ(priorities().count(), before);

  add->name = "Someday";
  EXPECT_FALSE(add->OnAcceptButton()) << "mode 0 stays open for the next item";
  EXPECT_EQ(add->added, std::vector<std::string>{"Someday"});
  EXPECT_EQ(add->name, "");
  ASSERT_EQ(priorities().count(), before + 1);
  const std::vector<RecordItem*> found =
      priorities().FilterTable([](const RecordItem& i) { return i.GetName() == "Someday"; });
  ASSERT_EQ(found.size(), 1u);
  EXPECT_NE(found[0]->GetId(), 0u);
  EXPECT_EQ(found[0]->changedAt, clock.now);

  auto addOne = Window();
  addOne->name = "left over";
  addOne->Open(CRecordWindow::kAddClose);
  EXPECT_EQ(addOne->name, "") << "mode 3 resets the fields";
  addOne->name = "Later";
  EXPECT_TRUE(addOne->OnAcceptButton());
  EXPECT_EQ(addOne->added, std::vector<std::string>{"Later"});
  EXPECT_EQ(priorities().count(), before + 2);
}

TEST_F(RecordWindowTest, ASecondWindowOfTheProgramOffersToGoToTheFirst) {
  RecordItem* item = priorities().ItemAt(2);
  auto first = Window();
  first->Open(CRecordWindow::kEdit, {item});
  auto second = Window();
  second->Open(CRecordWindow::kEdit, {item});
  EXPECT_TRUE(second->lockFailed());
  EXPECT_FALSE(second->enabled);
  EXPECT_FALSE(second->OnAcceptButton()) << "nothing to accept without the lock";

  const std::string question =
      "You are editing this item in another window. Do you want to go there?";
  ui.Script({ui::Answer::kYes, ui::Answer::kNo});
  EXPECT_EQ(second->OnLockedBy(), first.get());
  EXPECT_EQ(second->OnLockedBy(), nullptr);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{question, question}));
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kYesNo);

  clock.now += CRecordWindow::kRetrySeconds;
  second->OnIdle();
  EXPECT_TRUE(second->lockFailed()) << "the first window still holds it";
  first->OnCancelButton();
  clock.now += CRecordWindow::kRetrySeconds;
  second->OnIdle();
  EXPECT_TRUE(second->lockHeld());
  EXPECT_EQ(marks.HolderOf(item), second.get());
  EXPECT_TRUE(LockedInStore(item));
}

}  // namespace
}  // namespace qm::test
