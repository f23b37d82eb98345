// The Ui of the window program: message boxes, file dialogs, the status bar, a progress
// window, the keyboard's modifier keys, and the login and password dialogs.
#pragma once

#include <QPointer>
#include <QStatusBar>
#include <QWidget>
#include <memory>

#include "ui/ui.h"

class QDialog;
class QDialogButtonBox;
class QProgressDialog;

namespace qm::app {

class QtUi : public ui::Ui {
 public:
  QtUi();
  ~QtUi() override;

  // The window the dialogs belong to, and the status bar the status text goes to.
  void SetOwner(QWidget* owner, QStatusBar* statusBar);

  ui::Answer Ask(const ui::Message& message) override;
  std::optional<std::string> ChooseFile(const ui::FileChoice& choice) override;
  void SetStatusText(const std::string& text) override;
  void BeginProgress(const std::string& title) override;
  void ProgressStep(const std::string& line) override;
  void EndProgress() override;
  ui::Modifiers HeldModifiers() override;
  std::optional<ui::LoginEntry> AskLogin(const std::string& text,
                                         const ui::LoginEntry& start) override;
  std::optional<std::string> AskPassword(const std::string& text) override;

 private:
  QPointer<QWidget> owner_;
  QPointer<QStatusBar> statusBar_;
  std::unique_ptr<QProgressDialog> progress_;
};

// Text between the core's UTF-8 and Qt.
inline QString ToQt(const std::string& text) { return QString::fromUtf8(text); }
inline std::string FromQt(const QString& text) { return text.toUtf8().toStdString(); }
// Stored text ends its lines with CR; the edit controls with LF.
// OK and Cancel under a dialog, named for a screen reader: Enter accepts, Esc cancels.
QDialogButtonBox* OkCancelButtons(QDialog& dialog);

QString ToQtLines(std::string text);
std::string FromQtLines(const QString& text);

}  // namespace qm::app
