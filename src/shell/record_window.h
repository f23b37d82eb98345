// CRecordWindow, the logic of the window that adds, edits or views one item of a table:
// its modes, the browse list with Next and Previous, the record lock and its retry, and
// the states of its buttons. Each item type derives a window that adds its fields.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "session/item_table.h"
#include "session/record_item.h"
#include "store/project_store.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;
class CRecordWindow;

// Which items the record windows of this running program hold for edit, and which window
// holds each. The store's record lock is not re-entrant and does not tell two windows of
// one program apart; this does. One object is shared by all the windows of a program.
class EditMarks {
 public:
  // The window that holds the item, or null.
  CRecordWindow* HolderOf(const RecordItem* item) const;
  void Set(const RecordItem* item, CRecordWindow* window) { holders_[item] = window; }
  void Clear(const RecordItem* item) { holders_.erase(item); }

 private:
  std::map<const RecordItem*, CRecordWindow*> holders_;
};

// Why the fields cannot be saved as they are: the message, and the field to put the focus
// on, named as the window's view names its control ("summary"); empty for none.
struct FieldRefusal {
  FieldRefusal(std::string text, std::string control = {})
      : message(std::move(text)), field(std::move(control)) {}
  std::string message;
  std::string field;
};

// What a button shows. The tip is the control's tool tip.
struct ButtonState {
  bool visible = true;
  bool enabled = true;
  std::string label;
  std::string tip;
};

class CRecordWindow {
 public:
  enum Mode : std::uint16_t {
    kAdd = 0,       // adds one item after another: "Add & Reset"
    kEdit = 1,      // edits the items of the browse list under their record locks
    kView = 2,      // shows the items, nothing to save
    kAddClose = 3,  // adds one item and closes: "Add & Close"
  };
  // Seconds between two tries to take a record lock that someone else holds.
  static constexpr std::uint32_t kRetrySeconds = 10;

  // The window edits items of `table`, an owning table of `doc`. `marks` is shared by the
  // record windows of the program.
  CRecordWindow(CDBDoc& doc, ItemTable& table, ui::Ui& ui, EditMarks& marks,
                platform::Clock& clock = platform::Clock::System());
  CRecordWindow(const CRecordWindow&) = delete;
  CRecordWindow& operator=(const CRecordWindow&) = delete;
  // Gives up a lock the window still holds.
  virtual ~CRecordWindow();

  // The project's check for other users' changes, which the frame fills in. It runs before
  // an item is loaded, so that the window shows the newest data, and when the window
  // closes, so that the lists are current. It must not destroy the items of the browse
  // list. May be empty, and then nothing runs.
  std::function<void()> changeCheck;
  // Shows the display name of the user who holds the record lock, in the frame's small
  // dialog. When empty the name is told through the Ui.
  std::function<void(const std::string& name)> showLockHolder;

  // Opens the window in `mode` over `browse`, the items to step through (empty for none,
  // as when adding), at the 1-based `start`. Modes 1 and 2 load the item there; mode 3
  // resets the fields for a new item. `readOnly` shows the items of an edit with their
  // fields read-only, and saves nothing.
  void Open(std::uint16_t mode, std::vector<RecordItem*> browse = {}, std::uint32_t start = 1,
            bool readOnly = false);

  // The second button. Answers whether the window closes; it stays open after a failed
  // validation, a failed add, and each add in mode 0.
  bool OnAcceptButton();
  // The field of the last refusal, of the second button or of a step away from changed
  // fields; empty when the last of them passed the checks.
  const std::string& refusedField() const { return refusedField_; }
  // The first button, and any other close: the edit is given up and the lock released.
  void OnCancelButton();
  // Whether the window may close by other means than its own buttons (its frame, the end
  // of the project or of the program). With changes not yet saved the person is asked:
  // Yes saves them, and the window stays when they cannot be; No gives them up; Cancel
  // keeps the window open. The caller then closes with OnCancelButton. `saved` tells
  // whether something was written, for the lists to show it.
  bool QueryClose(bool* saved = nullptr);
  // Steps through the browse list; false when the step is refused at the end, or when the
  // changed fields, which a step stores, do not pass the checks.
  bool OnNextRecord();
  bool OnPreviousRecord();
  // Tells who holds the item's lock. When another window of this program holds it, asks
  // whether to go there and answers that window on Yes; otherwise null.
  CRecordWindow* OnLockedBy();
  // From the frame's idle work: tries the lock again once the retry time has passed.
  void OnIdle();

  std::uint16_t mode() const { return mode_; }
  const std::string& title() const { return title_; }
  // The item shown; null while adding.
  RecordItem* currentItem() const { return item_; }
  std::uint32_t position() const { return position_; }
  bool lockHeld() const { return lockHeld_; }
  bool lockFailed() const { return lockFailed_; }
  // Whether the fields may change: not while someone else holds the lock, nor when the
  // window was opened read-only or the item is one the person may not change.
  bool editable() const { return mode_ != kView && !lockFailed_ && !readOnly_ && !editRefused_; }
  bool retryActive() const { return retryActive_; }
  // The first button (the cancel kind) and the second (the accept kind).
  const ButtonState& firstButton() const { return first_; }
  const ButtonState& secondButton() const { return second_; }
  const ButtonState& nextButton() const { return next_; }
  const ButtonState& previousButton() const { return previous_; }
  const ButtonState& lockedByButton() const { return lockedBy_; }

 protected:
  // The rest of the title after "Add ", "Edit " or "View ".
  virtual std::string GetWindowTitle(std::uint16_t mode) const = 0;
  virtual void LoadFields(const RecordItem& item) = 0;
  virtual void StoreFields(RecordItem& item) = 0;
  // A new empty item to add.
  virtual std::unique_ptr<RecordItem> NewItem() { return table_.NewItem(); }
  // Why the fields cannot be saved as they are, or nothing when they can.
  virtual std::optional<FieldRefusal> ValidateFields() = 0;
  // After an item joined the table, and after an edit was written.
  virtual void AfterAdd(RecordItem& /*item*/) {}
  virtual void AfterUpdate(RecordItem& /*item*/) {}
  // Makes the fields editable, or read-only while someone else holds the lock.
  virtual void EnableFields(bool enable) = 0;
  // True when the person changed something since the fields were loaded.
  virtual bool FieldsChanged() const = 0;
  // Empties the fields for the next new item.
  virtual void ResetForAdd() = 0;
  // Whether the person may change `item` at all. One that may not is shown as in a view,
  // and its lock is left for others.
  virtual bool MayEdit(const RecordItem& /*item*/) const { return true; }

  CDBDoc& doc() const { return doc_; }
  ItemTable& table() const { return table_; }
  ui::Ui& userInterface() const { return ui_; }

 private:
  bool Adding() const { return mode_ == kAdd || mode_ == kAddClose; }
  bool UsesStoreLocks() const;
  void SetButtons();
  void SetTitle();
  // Shows Next and Previous as the list and position allow.
  void SetStepButtons();
  // Loads the item at the current position, taking its lock in edit mode.
  void LoadCurrent();
  // Takes the store lock (in a multi-user project) and the mark; false when either is held
  // elsewhere.
  bool TakeLock();
  void LockTaken();
  // Reads the item again from its record, under the lock just taken.
  void Reload();
  void ReleaseLock();
  bool Step(std::int32_t delta);
  // Writes the fields to the current item; false after the failure was shown.
  bool StoreEdit();
  // ValidateFields, with a refusal told and its field kept; true when the fields pass.
  bool FieldsPass();
  // Adds a new item from the fields; false after the failure was shown.
  bool AddFromFields();
  // What every close does: the lock goes, the lists catch up.
  void Close();

  CDBDoc& doc_;
  ItemTable& table_;
  ui::Ui& ui_;
  EditMarks& marks_;
  platform::Clock& clock_;

  std::uint16_t mode_ = kAdd;
  std::vector<RecordItem*> browse_;
  std::uint32_t position_ = 0;  // 1-based in browse_; 0 without a list
  bool readOnly_ = false;
  bool editRefused_ = false;  // the item shown is one MayEdit refuses
  RecordItem* item_ = nullptr;
  bool lockHeld_ = false;
  bool lockFailed_ = false;
  bool retryActive_ = false;
  std::uint32_t nextRetry_ = 0;
  std::string title_;
  std::string refusedField_;

  ButtonState first_;
  ButtonState second_;
  ButtonState next_;
  ButtonState previous_;
  ButtonState lockedBy_;
};

}  // namespace qm
