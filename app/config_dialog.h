// The dialog of one computer's description, as a report of a defect holds its own, and the
// limit of a line edit to the bytes its field stores.
#pragma once

#include <QWidget>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace qm {
class CTestConfig;
}

namespace qm::app {

// `content` in a scroll area without a frame: a small window keeps its fields at their
// height and its buttons in reach.
QWidget* Scrolling(QWidget* content);

// Typing beyond `bytes` bytes of UTF-8 is refused, so that a stored field never cuts a
// character in half and what is shown is what is kept.
void LimitBytes(QLineEdit* edit, std::size_t bytes);

// The fields of one computer's description, its devices each with its flag, and the button
// that fills them from the computer at hand.
class ComputerConfigForm : public QWidget {
 public:
  // One text field of the configuration and how it is bound.
  struct TextField {
    const char* label;
    QLineEdit* edit;
    std::function<std::string(const CTestConfig&)> get;
    std::function<void(CTestConfig&, const std::string&)> set;
  };

  explicit ComputerConfigForm(QWidget* parent = nullptr);

  void Show(const CTestConfig& config);
  // Writes the fields into `config`; its name is left as it is.
  void Keep(CTestConfig& config) const;
  void SetEditable(bool editable);
  // A field was changed by the person or by a capture.
  std::function<void()> onEdited;

 private:
  struct Device {
    const char* label;
    bool CTestConfig::*flag;
    TextField text;
    QCheckBox* box = nullptr;
  };
  std::vector<TextField> fields_;
  std::vector<Device> devices_;
  QCheckBox* monitors_ = nullptr;
  TextField other_;
  QPushButton* capture_ = nullptr;
  bool editable_ = true;
  bool showing_ = false;
};

// Edits `config` in a modal dialog; true when OK wrote the fields back. Read-only, every
// field is disabled and the dialog only shows them.
bool EditComputerConfig(QWidget* parent, CTestConfig& config, bool editable);

}  // namespace qm::app
