// The set-up dialog of one value list: its names in a list box, with add, edit, delete and
// move up and down, each written to the project at once by the list's ValueSetup.
#pragma once

#include <QDialog>
#include <QString>
#include <array>
#include <functional>
#include <optional>

#include "session/value_lists.h"
#include "session/value_setup.h"

class QListWidget;
class QPushButton;

namespace qm {
class CDBDoc;
}

namespace qm::app {

class ValueSetupDialog : public QDialog {
 public:
  // `setup` has passed its Open() check; `ui` tells what the store's failures were.
  ValueSetupDialog(QWidget* parent, ValueSetup& setup, ui::Ui& ui);

  // The name dialog (title, hint, the name it starts with) and the popup of replacing
  // names (the row chosen, from 1). Nothing stands for Cancel. Qt dialogs unless a test
  // answers them.
  std::function<std::optional<QString>(const QString&, const QString&, const QString&)> askName;
  std::function<std::optional<std::uint32_t>(const ReplacementQuestion&)> askReplacement;

  QListWidget* names() const { return names_; }
  QPushButton* button(int index) const { return buttons_[static_cast<std::size_t>(index)]; }
  enum Button { kAdd, kEdit, kDelete, kUp, kDown, kButtonCount };

 private:
  // Runs one command; a failure of the store ends it, and the person is told.
  void Run(const std::function<void()>& command);
  void Fill();
  // Edit and delete need a selection; up and down a place to move to.
  void UpdateButtons();
  void Add();
  void Edit();
  void Delete();

  ValueSetup& setup_;
  ui::Ui& ui_;
  QListWidget* names_ = nullptr;
  std::array<QPushButton*, kButtonCount> buttons_{};
};

// The set-up of `list` over `parent`, when nobody else is logged in to the project.
// Answers whether the dialog was shown, after which the lists show the names anew.
bool RunValueSetup(QWidget* parent, CDBDoc& doc, const ValueListSettings& list, ui::Ui& ui);

// What a command says when the store failed under it.
void TellStoreFailure(ui::Ui& ui, DBStatus status);

}  // namespace qm::app
