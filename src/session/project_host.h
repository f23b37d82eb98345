// ProjectHost: what the program around an open project does when the project opens and
// closes: its windows, its preferences, its mail and its timers. The window program and
// quillmark-cli each provide one; the project calls it at the fixed points of its life.
#pragma once

#include <cstdint>
#include <string>

#include "store/blocks.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;
class RecordItem;

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

  // What the check for other users' changes finds. A program without list windows (the
  // command line) keeps the answers below: no list is open, and nobody needs telling.
  //
  // Whether the list window of a table is open; only then do the records that other users
  // add to it join the table before the next opening.
  virtual bool ListWindowOpen(Tag /*table*/) const { return false; }
  // An item of another user's joined its table, marked new.
  virtual void ItemAdded(Tag /*table*/, RecordItem& /*item*/) {}
  // An item was read again after another user changed it.
  virtual void ItemChanged(Tag /*table*/, RecordItem& /*item*/) {}
  // Another user deleted the item, which is about to leave its table and be destroyed:
  // the windows showing it close.
  virtual void ItemRemoving(Tag /*table*/, RecordItem& /*item*/) {}
  // Someone else assigned one or more defects to the user logged in: the alert, once per
  // check however many there were.
  virtual void AlertAssignment() {}
};

}  // namespace qm
