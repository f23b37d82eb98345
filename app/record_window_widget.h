// What every record window of the program has, whatever its item: the window logic under
// it, the lock retry of the tick, and the two things it tells the frame.
#pragma once

#include <QLayout>
#include <QPushButton>
#include <QWidget>
#include <functional>
#include <string_view>
#include <vector>

#include "shell/record_window.h"

namespace qm::app {

class RecordWindowWidget : public QWidget {
 public:
  using QWidget::QWidget;

  virtual CRecordWindow& logic() = 0;
  // Opens the logic in `mode` over the items to step through, and shows the first.
  void Open(std::uint16_t mode, std::vector<RecordItem*> browse = {}, std::uint32_t start = 1);
  // From the frame's tick: the lock retry, and the fields shown again when it succeeds.
  void OnIdle();

  // The name its placement is kept under: "DefectViewPos", "UserViewPos", ...
  std::string_view placementName;
  // The window is done (saved, cancelled, or its item went): the frame closes it.
  std::function<void()> onClosed;
  // An item was added or saved: the lists show it.
  std::function<void()> onSaved;

 protected:
  // Previous, Next, Locked By? and the two main buttons, wired to the logic.
  QLayout* MakeButtonRow();
  // The buttons as the logic has them now, and the title.
  void ShowButtons();
  // Everything shown again from the logic: after a step, a retry, an accepted add.
  virtual void Show() = 0;
  // A close by the window's frame (its close button, Ctrl+F4): asked like any close that
  // would lose an edit, then told to the frame like the window's own buttons.
  void closeEvent(QCloseEvent* event) override;
  // Esc and Enter as the window's two main buttons.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // After a refusal: the field it names, found by its object name, gets the focus and has
  // its text selected.
  void FocusRefusedField();

  QPushButton* first_ = nullptr;
  QPushButton* second_ = nullptr;
  QPushButton* previous_ = nullptr;
  QPushButton* next_ = nullptr;
  QPushButton* lockedBy_ = nullptr;
};

}  // namespace qm::app
