// The About box.
#include "about_dialog.h"

#include <QMessageBox>
#include <QPushButton>

namespace qm::app {

QString ProgramNameAndVersion() { return QStringLiteral("Quillmark " QM_VERSION); }

QString ProgramSummary() {
  return "A defect tracker for software teams: one project file on a shared folder holds the "
         "team's whole tracking, opened by everyone at once.";
}

void ShowAbout(QWidget* parent) {
  QMessageBox box(QMessageBox::Information, "About Quillmark",
                  ProgramNameAndVersion() + "\n\n" + ProgramSummary(), QMessageBox::Ok, parent);
  box.setAccessibleName("About Quillmark");
  box.button(QMessageBox::Ok)->setAccessibleName("OK");
  box.setEscapeButton(QMessageBox::Ok);
  box.exec();
}

}  // namespace qm::app
