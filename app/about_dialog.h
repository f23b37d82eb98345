// Help > About: the program's name, its version and what it is.
#pragma once

#include <QString>

class QWidget;

namespace qm::app {

// "Quillmark" and the version, as the title of the box says it.
QString ProgramNameAndVersion();
// What the program is, in a line.
QString ProgramSummary();

// The About box over `parent`; Enter and Esc close it.
void ShowAbout(QWidget* parent);

}  // namespace qm::app
