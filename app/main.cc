// quillmark: the window program. One copy per user runs at a time; a second one hands its
// file and user to the first, or says why the first cannot take them, and ends. Without a
// project on the command line it opens the last project, or offers the new project or Open
// dialog, as the preferences decide.
//
//   quillmark [FILE] [--user NAME --password TEXT]
#include <QApplication>
#include <QFileInfo>
#include <QStringList>
#include <iostream>
#include <optional>
#include <string>

#include "instance_link.h"
#include "main_frame.h"
#include "platform/preference_file.h"
#include "qt_ui.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("Quillmark");

  qm::app::StartRequest request;
  std::optional<std::string>& file = request.file;
  std::optional<qm::ui::LoginEntry>& login = request.login;
  const QStringList args = QApplication::arguments();
  for (qsizetype i = 1; i < args.size(); ++i) {
    if (args[i] == "--user" && i + 1 < args.size()) {
      if (!login) login.emplace();
      login->name = qm::app::FromQt(args[++i]);
    } else if (args[i] == "--password" && i + 1 < args.size()) {
      if (!login) login.emplace();
      login->password = qm::app::FromQt(args[++i]);
    } else {
      file = qm::app::FromQt(QFileInfo(args[i]).absoluteFilePath());
    }
  }
  if (std::string refusal; qm::app::HandToFirstCopy(request, refusal)) {
    if (refusal.empty()) return 0;
    std::cerr << refusal << "\n";
    qm::app::QtUi().Tell(refusal, qm::ui::Icon::kWarning);
    return 1;
  }
  qm::app::FirstCopy instance;

  qm::CAppPreferences preferences(qm::platform::PreferenceFile::DefaultPath());
  preferences.Load();
  qm::app::QtUi ui;
  qm::app::CMainFrame frame(ui, preferences);
  ui.SetOwner(&frame, frame.statusBar());
  instance.take = [&frame](const qm::app::StartRequest& later) {
    return frame.TakeRequest(later.file, later.login);
  };
  frame.RestorePlacement();

  if (file) {
    frame.OpenProject(*file, login);
  } else {
    std::string last;
    const int found = preferences.GetLastOpenFile(last);
    const auto listValue = preferences.GetWindowValue(qm::kDefectListWindow.valueName);
    const bool firstRun = !listValue || listValue->empty();
    if (preferences.openLastFile != 0 && found == 0) {
      std::optional<qm::ui::LoginEntry> remembered = login;
      if (!remembered && preferences.autoLogin != 0) {
        remembered.emplace();
        preferences.GetLastUser(remembered->name, remembered->password);
      }
      if (!frame.OpenProject(last, remembered)) return 1;
    } else if (preferences.openLastFile != 0 && found == 2) {
      ui.Tell(
          "Warning!  Cannot find the file that was open when you last ran the program. "
          "Please choose another.",
          qm::ui::Icon::kWarning);
      preferences.SetLastOpenFile("");
      preferences.Save();
      frame.ChooseProject();
    } else if (found == 1 && firstRun) {
      frame.NewProject();
    } else {
      frame.ChooseProject();
    }
  }
  return QApplication::exec();
}
