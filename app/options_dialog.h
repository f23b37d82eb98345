// The Options dialog: a page per tab, bound to the Options dialog logic.
#pragma once

#include <QDialog>
#include <functional>

#include "shell/options_pages.h"

namespace qm::app {

// The dialog's pages over the logic; Store puts the widgets' values into it.
class OptionsDialogWidget : public QDialog {
 public:
  // `doc` is the open project, null for none.
  OptionsDialogWidget(QWidget* parent, OptionsDialog& options, CDBDoc* doc);
  void Store();

 private:
  std::function<void()> store_;
};

// Shows the dialog over `parent`; on OK the values are applied. Answers whether the lists
// are to be drawn again ("Gray out closed defects" changed); false on Cancel.
bool RunOptionsDialog(QWidget* parent, OptionsDialog& options, CDBDoc* doc);

}  // namespace qm::app
