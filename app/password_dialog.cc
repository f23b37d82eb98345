// The password dialog's widgets.
#include "password_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "qt_ui.h"
#include "session/db_doc.h"
#include "shell/session_commands.h"

namespace qm::app {

PasswordDialog::PasswordDialog(QWidget* parent, const QString& title, std::string old, ui::Ui& ui)
    : QDialog(parent), change_(std::move(old)), ui_(ui) {
  setWindowTitle(title);
  setAccessibleName(title);
  auto* layout = new QVBoxLayout(this);
  prompt_ = new QLabel(ToQt(std::string(change_.prompt())));
  prompt_->setAccessibleName("Prompt");
  field_ = new QLineEdit;
  field_->setAccessibleName("Password");
  field_->setEchoMode(QLineEdit::Password);
  field_->setMaxLength(static_cast<int>(PasswordChange::kMaxLength));
  prompt_->setBuddy(field_);
  layout->addWidget(prompt_);
  layout->addWidget(field_);
  layout->addWidget(OkCancelButtons(*this));
  field_->setFocus();
  resize(340, sizeHint().height());
}

void PasswordDialog::accept() {
  const std::optional<std::string> message = change_.Submit(FromQt(field_->text()));
  if (message) ui_.Tell(*message, ui::Icon::kWarning);
  if (change_.done()) {
    QDialog::accept();
    return;
  }
  prompt_->setText(ToQt(std::string(change_.prompt())));
  field_->clear();
  field_->setFocus();
}

void RunPasswordChange(QWidget* parent, CDBDoc& doc, const EditMarks* marks,
                       CAppPreferences* preferences, ui::Ui& ui) {
  const std::optional<std::string> old = CurrentPassword(doc);
  if (!old) return;
  PasswordDialog dialog(parent, doc.multiUser() ? "Change Password" : "Project Password", *old, ui);
  if (dialog.exec() == QDialog::Accepted) {
    StorePassword(doc, marks, preferences, dialog.password(), ui);
  }
}

}  // namespace qm::app
