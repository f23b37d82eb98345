// The dialog of one computer's description, as a report of a defect holds its own, and the
// limit of a line edit to the bytes its field stores.
#pragma once

#include <cstddef>

class QLineEdit;
class QWidget;

namespace qm {
class CTestConfig;
}

namespace qm::app {

// Typing beyond `bytes` bytes of UTF-8 is refused, so that a stored field never cuts a
// character in half and what is shown is what is kept.
void LimitBytes(QLineEdit* edit, std::size_t bytes);

// Edits `config` in a modal dialog; true when OK wrote the fields back. Read-only, every
// field is disabled and the dialog only shows them.
bool EditComputerConfig(QWidget* parent, CTestConfig& config, bool editable);

}  // namespace qm::app
