// One copy of the program per user: a second start hands what it was asked for (a project
// file, a user) to the first copy over a per-user local socket, and hears whether it was
// taken or why not.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <functional>
#include <optional>
#include <string>

#include "ui/ui.h"

namespace qm::app {

// What a start of the program was asked for on its command line.
struct StartRequest {
  std::optional<std::string> file;  // absolute, for the first copy works in its own folder
  std::optional<ui::LoginEntry> login;
};

// The second start: false when no copy of the program answers. Otherwise true, with
// `refusal` empty when the first copy took the request, else why it could not.
bool HandToFirstCopy(const StartRequest& request, std::string& refusal);

// The first copy: listens for later starts and answers each request with what `take`
// says, empty for taken.
class FirstCopy : public QObject {
 public:
  FirstCopy();

  std::function<std::string(const StartRequest&)> take;

 private:
  QLocalServer server_;
};

}  // namespace qm::app
