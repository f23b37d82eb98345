// quillmark: the window program. One copy per user runs at a time; a second one asks the
// first to come to the front and ends. Without a project on the command line it opens the
// last project, or offers the new project or Open dialog, as the preferences decide.
//
//   quillmark [FILE] [--user NAME --password TEXT]
#include <unistd.h>

#include <QApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStringList>
#include <optional>
#include <string>

#include "main_frame.h"
#include "platform/preference_file.h"
#include "qt_ui.h"

namespace {

// The name of the per-user socket that the first copy listens on.
QString InstanceName() { return QString("quillmark-%1").arg(::getuid()); }

// True when another copy answered; it has been asked to come to the front.
bool AskFirstCopy() {
  QLocalSocket socket;
  socket.connectToServer(InstanceName());
  if (!socket.waitForConnected(500)) return false;
  socket.write("activate\n");
  socket.waitForBytesWritten(500);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("Quillmark");
  if (AskFirstCopy()) return 0;
  // A socket left behind by a copy that crashed stops nobody.
  QLocalServer::removeServer(InstanceName());
  QLocalServer instance;
  instance.listen(InstanceName());

  std::optional<std::string> file;
  std::optional<qm::ui::LoginEntry> login;
  const QStringList args = QApplication::arguments();
  for (qsizetype i = 1; i < args.size(); ++i) {
    if (args[i] == "--user" && i + 1 < args.size()) {
      if (!login) login.emplace();
      login->name = qm::app::FromQt(args[++i]);
    } else if (args[i] == "--password" && i + 1 < args.size()) {
      if (!login) login.emplace();
      login->password = qm::app::FromQt(args[++i]);
    } else {
      file = qm::app::FromQt(args[i]);
    }
  }

  qm::CAppPreferences preferences(qm::platform::PreferenceFile::DefaultPath());
  preferences.Load();
  qm::app::QtUi ui;
  qm::app::CMainFrame frame(ui, preferences);
  ui.SetOwner(&frame, frame.statusBar());
  QObject::connect(&instance, &QLocalServer::newConnection, &frame, [&frame, &instance] {
    delete instance.nextPendingConnection();
    frame.showNormal();
    frame.raise();
    frame.activateWindow();
  });
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
