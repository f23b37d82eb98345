// ProjectHost: what the program around an open project does when the project opens and
// closes: its windows, its preferences, its mail and its timers. The window program and
// quillmark-cli each provide one; the project calls it at the fixed points of its life.
#pragma once

#include <cstdint>
#include <string>

#include "ui/ui.h"

namespace qm {

class CDBDoc;

class ProjectHost {
 public:
  virtual ~ProjectHost() = default;

  // The project is loaded and its user logged in: the path becomes the last opened
  // file, the preferences are written, and the list windows of the last session open
  // (with Ctrl held at that moment, only the defect list).
  virtual void ProjectLoaded(CDBDoc& doc) = 0;
  // A user logged in at the opening; with AutoLogin on, the name and password become the
  // remembered login.
  virtual void RememberLogin(const ui::LoginEntry& login) = 0;
  // Seconds between checks of a multi-user project for changes; -1 for never.
  virtual std::int32_t DatabaseCheckSeconds() const = 0;
  // The opening is over: background mail and the timers of the project start.
  virtual void StartBackgroundWork(CDBDoc& doc) = 0;
  // Closing begins: the mail queues are saved or dropped, the record windows close.
  virtual void BeforeClose(CDBDoc& doc) = 0;
  // The user is logged out: the open list windows are noted in the preferences, each
  // keeps its place, and they close.
  virtual void CloseListWindows(CDBDoc& doc) = 0;
};

}  // namespace qm
