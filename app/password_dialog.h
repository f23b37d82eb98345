// The dialog that sets a password in its stages (the old one, the new one, the new one
// again), bound to PasswordChange; it serves the user's own password and the password of
// a single-user project.
#pragma once

#include <QDialog>
#include <optional>
#include <string>

#include "session/login.h"
#include "ui/ui.h"

class QLabel;
class QLineEdit;

namespace qm {
class CAppPreferences;
class CDBDoc;
class EditMarks;
}  // namespace qm

namespace qm::app {

class PasswordDialog : public QDialog {
 public:
  // `old` is the password now, empty for none.
  PasswordDialog(QWidget* parent, const QString& title, std::string old, ui::Ui& ui);

  // OK: the field goes to the stage it answers. A wrong text is told, and the dialog
  // stays, at the stage the change has reached; the last stage ends it.
  void accept() override;

  // Once accepted: the new password, empty to have none.
  const std::string& password() const { return change_.result(); }
  QLabel* prompt() const { return prompt_; }
  QLineEdit* field() const { return field_; }

 private:
  PasswordChange change_;
  ui::Ui& ui_;
  QLabel* prompt_ = nullptr;
  QLineEdit* field_ = nullptr;
};

// "Change Password...": the dialog over `parent`, then the new password stored where the
// old one was. Nothing happens when the session may not change a password.
void RunPasswordChange(QWidget* parent, CDBDoc& doc, const EditMarks* marks,
                       CAppPreferences* preferences, ui::Ui& ui);

}  // namespace qm::app
