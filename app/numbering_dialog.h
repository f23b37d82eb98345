// The "Defect Numbering" dialog: when defects get their numbers, and the next number,
// bound to the NumberingSetup of the open project.
#pragma once

#include <QDialog>

#include "session/numbering.h"
#include "ui/ui.h"

class QCheckBox;
class QLineEdit;

namespace qm {
class CDBDoc;
}

namespace qm::app {

class NumberingDialog : public QDialog {
 public:
  // `setup` has been opened: its fields hold what the dialog starts with.
  NumberingDialog(QWidget* parent, NumberingSetup& setup, ui::Ui& ui);

  // OK: the fields go to the setup, which stores them; a number it refuses keeps the
  // dialog open with the number selected.
  void accept() override;

  QCheckBox* userEntry() const { return userEntry_; }
  QCheckBox* wispNote() const { return wispNote_; }
  QCheckBox* mail() const { return mail_; }
  QLineEdit* nextNumber() const { return nextNumber_; }

 private:
  NumberingSetup& setup_;
  ui::Ui& ui_;
  QCheckBox* userEntry_ = nullptr;
  QCheckBox* wispNote_ = nullptr;
  QCheckBox* mail_ = nullptr;
  QLineEdit* nextNumber_ = nullptr;
};

// The dialog over `parent` on the open project; a failure of the store is told.
void RunNumberingDialog(QWidget* parent, CDBDoc& doc, ui::Ui& ui);

}  // namespace qm::app
