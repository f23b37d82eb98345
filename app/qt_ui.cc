// The window program's dialogs behind the Ui seam.
#include "qt_ui.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace qm::app {
namespace {

QMessageBox::Icon IconOf(ui::Icon icon) {
  switch (icon) {
    case ui::Icon::kInformation:
      return QMessageBox::Information;
    case ui::Icon::kWarning:
      return QMessageBox::Warning;
    case ui::Icon::kError:
      return QMessageBox::Critical;
    case ui::Icon::kQuestion:
      return QMessageBox::Question;
    default:
      return QMessageBox::NoIcon;
  }
}

// "Project Files (*.qmk)" as Qt writes a filter: the same words.
QString Filters(const std::vector<std::string>& filters) {
  QStringList list;
  for (const std::string& f : filters) list << ToQt(f);
  return list.join(";;");
}

}  // namespace

QString ToQtLines(std::string text) {
  std::replace(text.begin(), text.end(), '\r', '\n');
  return ToQt(text);
}

std::string FromQtLines(const QString& text) {
  std::string bytes = FromQt(text);
  std::replace(bytes.begin(), bytes.end(), '\n', '\r');
  return bytes;
}

QtUi::QtUi() = default;
QtUi::~QtUi() = default;

void QtUi::SetOwner(QWidget* owner, QStatusBar* statusBar) {
  owner_ = owner;
  statusBar_ = statusBar;
}

ui::Answer QtUi::Ask(const ui::Message& message) {
  QMessageBox box(IconOf(message.icon),
                  ToQt(message.caption.empty() ? "Quillmark" : message.caption), ToQt(message.text),
                  QMessageBox::NoButton, owner_);
  switch (message.buttons) {
    case ui::Buttons::kOk:
      box.setStandardButtons(QMessageBox::Ok);
      break;
    case ui::Buttons::kOkCancel:
      box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
      box.setDefaultButton(QMessageBox::Cancel);
      break;
    case ui::Buttons::kYesNo:
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
      box.setDefaultButton(message.noByDefault ? QMessageBox::No : QMessageBox::Yes);
      break;
    case ui::Buttons::kRetryCancel:
      box.setStandardButtons(QMessageBox::Retry | QMessageBox::Cancel);
      break;
    case ui::Buttons::kYesNoCancel:
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
      box.setDefaultButton(QMessageBox::Yes);
      box.setEscapeButton(QMessageBox::Cancel);
      break;
  }
  switch (box.exec()) {
    case QMessageBox::Ok:
      return ui::Answer::kOk;
    case QMessageBox::Yes:
      return ui::Answer::kYes;
    case QMessageBox::No:
      return ui::Answer::kNo;
    case QMessageBox::Retry:
      return ui::Answer::kRetry;
    default:
      return ui::Answer::kCancel;
  }
}

std::optional<std::string> QtUi::ChooseFile(const ui::FileChoice& choice) {
  QString path;
  if (choice.folder) {
    path = QFileDialog::getExistingDirectory(owner_, ToQt(choice.title));
  } else if (choice.forSaving) {
    path = QFileDialog::getSaveFileName(owner_, ToQt(choice.title), ToQt(choice.defaultName),
                                        Filters(choice.filters));
  } else {
    path = QFileDialog::getOpenFileName(owner_, ToQt(choice.title), ToQt(choice.defaultName),
                                        Filters(choice.filters));
  }
  if (path.isEmpty()) return std::nullopt;
  return FromQt(path);
}

void QtUi::SetStatusText(const std::string& text) {
  if (statusBar_ == nullptr) return;
  statusBar_->showMessage(ToQt(text));
  // Long loops show their progress without returning to the event loop.
  statusBar_->repaint();
}

void QtUi::BeginProgress(const std::string& title) {
  progress_ = std::make_unique<QProgressDialog>(ToQt(title), QString(), 0, 0, owner_);
  progress_->setWindowTitle(ToQt(title));
  progress_->setMinimumDuration(0);
  progress_->show();
}

void QtUi::ProgressStep(const std::string& line) {
  if (progress_ == nullptr) return;
  progress_->setLabelText(ToQt(line));
  QApplication::processEvents();
}

void QtUi::EndProgress() { progress_.reset(); }

ui::Modifiers QtUi::HeldModifiers() {
  const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
  return {held.testFlag(Qt::ControlModifier), held.testFlag(Qt::AltModifier),
          held.testFlag(Qt::ShiftModifier)};
}

std::optional<ui::LoginEntry> QtUi::AskLogin(const std::string& text, const ui::LoginEntry& start) {
  QDialog dialog(owner_);
  dialog.setWindowTitle("Login");
  auto* layout = new QVBoxLayout(&dialog);
  auto* label = new QLabel(ToQt(text));
  label->setWordWrap(true);
  layout->addWidget(label);
  auto* form = new QFormLayout;
  auto* name = new QLineEdit(ToQt(start.name));
  auto* password = new QLineEdit(ToQt(start.password));
  password->setEchoMode(QLineEdit::Password);
  form->addRow("User Name:", name);
  form->addRow("Password:", password);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(dialog));
  if (start.name.empty()) {
    name->setFocus();
  } else {
    password->setFocus();
  }
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return ui::LoginEntry{FromQt(name->text()), FromQt(password->text())};
}

QDialogButtonBox* OkCancelButtons(QDialog& dialog) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->setAccessibleName("Dialog buttons");
  buttons->button(QDialogButtonBox::Ok)->setAccessibleName("OK");
  buttons->button(QDialogButtonBox::Cancel)->setAccessibleName("Cancel");
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  return buttons;
}

std::optional<std::string> QtUi::AskPassword(const std::string& text) {
  QDialog dialog(owner_);
  dialog.setWindowTitle("Password");
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(new QLabel(ToQt(text)));
  auto* password = new QLineEdit;
  password->setEchoMode(QLineEdit::Password);
  layout->addWidget(password);
  layout->addWidget(OkCancelButtons(dialog));
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return FromQt(password->text());
}

}  // namespace qm::app
