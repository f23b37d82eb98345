// The hand-over between two starts of the program. A request is a QDataStream of whether
// a file is named, the file, whether a login is given, the name and the password; the
// answer is one string, empty when the request was taken.
#include "instance_link.h"

#include <unistd.h>

#include <QDataStream>
#include <QLocalSocket>

#include "qt_ui.h"

namespace qm::app {
namespace {

// The name of the per-user socket that the first copy listens on.
QString InstanceName() { return QString("quillmark-%1").arg(::getuid()); }

constexpr int kConnectMs = 500;
// A first copy answers at once unless it is stuck in long work, as a wait for the file.
constexpr int kAnswerMs = 5000;

}  // namespace

bool HandToFirstCopy(const StartRequest& request, std::string& refusal) {
  refusal.clear();
  QLocalSocket socket;
  socket.connectToServer(InstanceName());
  if (!socket.waitForConnected(kConnectMs)) return false;
  QDataStream out(&socket);
  out << request.file.has_value() << ToQt(request.file.value_or("")) << request.login.has_value()
      << ToQt(request.login ? request.login->name : "")
      << ToQt(request.login ? request.login->password : "");
  socket.waitForBytesWritten(kConnectMs);
  const bool asking = request.file || request.login;
  QDataStream in(&socket);
  QString answer;
  for (;;) {
    in.startTransaction();
    in >> answer;
    if (in.commitTransaction()) break;
    if (!socket.waitForReadyRead(asking ? kAnswerMs : kConnectMs)) {
      // Coming to the front needs no answer; a project to open does.
      if (asking) {
        refusal =
            "Quillmark is already running, but it is busy and did not answer. Nothing was "
            "opened; try again in a moment.";
      }
      return true;
    }
  }
  refusal = FromQt(answer);
  return true;
}

FirstCopy::FirstCopy() {
  // A socket left behind by a copy that crashed stops nobody.
  QLocalServer::removeServer(InstanceName());
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  server_.listen(InstanceName());
  connect(&server_, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        QDataStream in(socket);
        in.startTransaction();
        bool hasFile = false;
        bool hasLogin = false;
        QString file;
        QString name;
        QString password;
        in >> hasFile >> file >> hasLogin >> name >> password;
        if (!in.commitTransaction()) return;  // the rest is still on its way
        StartRequest request;
        if (hasFile) request.file = FromQt(file);
        if (hasLogin) request.login = ui::LoginEntry{FromQt(name), FromQt(password)};
        const std::string answer = take ? take(request) : std::string();
        QDataStream out(socket);
        out << ToQt(answer);
        socket->flush();
        socket->disconnectFromServer();
      });
    }
  });
}

}  // namespace qm::app
