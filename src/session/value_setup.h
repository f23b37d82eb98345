// ValueSetup, the model of the dialog that sets up one value list: its names in a list box
// and the commands add, edit, delete, up and down, each written through to the store at
// once. The window binds widgets to it; the name dialog and the popup of replacing names
// are the window's, and their answers come back through Add, Edit and ChooseReplacement.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/record_notice.h"
#include "session/value_item.h"
#include "session/value_lists.h"
#include "store/db_status.h"
#include "ui/ui.h"

namespace qm {

// What the deletion of a name needs of the defects. The defect table provides it; the
// defects are addressed by their 1-based position in that table.
class DefectFieldAccess {
 public:
  virtual ~DefectFieldAccess() = default;

  virtual std::uint32_t DefectCount() const = 0;
  // The record id of the defect at a position.
  virtual std::uint32_t DefectId(std::uint32_t position) const = 0;
  // Whether the defect holds `valueId` in the field `fieldCode` (kFieldType, ...); for
  // kFieldReproducible, in any of its reported-by rows.
  virtual bool UsesValue(std::uint32_t position, std::uint16_t fieldCode,
                         std::uint32_t valueId) const = 0;
  // Puts `newId` (0: none) where the field holds `oldId`; for kFieldReproducible, in each
  // reported-by row that holds it.
  virtual void ReplaceValue(std::uint32_t position, std::uint16_t fieldCode, std::uint32_t oldId,
                            std::uint32_t newId) = 0;
  // Writes the defect to its record, as SaveItem does.
  [[nodiscard]] virtual DBStatus SaveDefect(std::uint32_t position) = 0;
};

// The popup a deletion shows when defects use the name and the list reassigns them.
struct ReplacementQuestion {
  std::string text;
  std::string label;
  std::vector<std::string> names;  // the other names of the list, in list order
};

// A name as the name dialogs take it: without the blanks around it, cut to what a name
// holds.
std::string TypedName(std::string_view typed);
// The name of `table` that is `name` with its ASCII letters in any case, or null.
ValueItem* FindValueName(const CValueTable& table, std::string_view name);

// Works on the list's table, which must have a store. The list box rows are the table's
// items in table order, and a selection is a row from 1 (0: none). A failure of the store
// ends the command that met it and is thrown as StoreError; a busy store has been offered
// for retry by the table first.
class ValueSetup {
 public:
  static constexpr std::string_view kNameHint = "Enter a unique name for this item.";

  // `currentUserId` signs the change notices of a multi-user project. Without `defects`
  // (a project whose defects are not loaded) no defect uses a name.
  ValueSetup(CValueTable& table, const ValueListSettings& list, DefectFieldAccess* defects,
             ui::Ui& ui, std::uint32_t currentUserId);

  // The check before the dialog opens: false, after saying why, while other users are
  // logged in to a multi-user project, and then there is no dialog.
  bool Open();

  std::string Title() const;
  std::string Text() const;
  // The rows of the list box.
  std::vector<std::string> Names() const;

  std::uint32_t selection() const { return selection_; }
  // Selects a row; one that does not exist selects none.
  void Select(std::uint32_t row);

  // The titles of the name dialog for adding and editing; editing starts from the
  // selected name.
  std::string AddTitle() const;
  std::string EditTitle() const;
  std::string EditInput() const;

  // The name typed in the add dialog, trimmed of blanks, becomes the last name of the
  // list unless the list holds it already in any case. An empty name adds nothing.
  // Answers whether a name was added.
  bool Add(std::string_view typed);
  // Renames the selected name to the text typed, trimmed; nothing happens for the old
  // name itself or an empty one, and another name of the list in any case is refused.
  // Answers whether the name changed.
  bool Edit(std::string_view typed);

  enum class DeleteStep { kOver, kChooseReplacement };
  // Deletes the selected name after asking. When defects use it and the list reassigns,
  // the command waits for a replacing name: replacementQuestion() holds what to show, and
  // ChooseReplacement goes on from there.
  DeleteStep Delete();
  // While a deletion waits: what the popup shows.
  const ReplacementQuestion& replacementQuestion() const { return question_; }
  // The row of replacementQuestion().names chosen, from 1, or nothing for Cancel, which
  // ends the deletion with nothing changed.
  void ChooseReplacement(std::optional<std::uint32_t> row);

  // Moves the selected name one place up or down, the selection following it, and
  // rewrites the order of every name of the list.
  void MoveUp();
  void MoveDown();

 private:
  void Refuse(std::string text);
  bool IsNameTaken(std::string_view name, const ValueItem* except) const;
  // Steps 6 and 7 of a deletion: every defect that uses `item` takes `newId` instead, then
  // the name goes.
  void FinishDelete(ValueItem& item, bool used, std::uint32_t newId);
  void Move(std::uint32_t to);
  void PostChanged(std::uint32_t defectId);

  CValueTable& table_;
  CProjectStore& store_;
  const ValueListSettings& list_;
  DefectFieldAccess* defects_;
  ui::Ui& ui_;
  std::uint32_t currentUserId_;
  std::uint32_t selection_ = 0;
  // A deletion waiting for its replacing name: the name to go and the choices offered.
  ValueItem* pending_ = nullptr;
  std::vector<ValueItem*> choices_;
  ReplacementQuestion question_;
};

}  // namespace qm
