// ProjectKinds: the item classes of the tables an open project loads, given to the project
// by the program, since those classes live in the libraries above the session.
#pragma once

#include <memory>

#include "session/item_table.h"
#include "store/bytes.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

class ProjectKinds {
 public:
  virtual ~ProjectKinds() = default;

  // The empty table of the items kept under `tag`, reading through the store of `doc`,
  // its items free to look at the rest of `doc`; null for a table whose items this
  // program does not load (its records stay as they are). The value lists are the
  // project's own and never come from here.
  virtual std::unique_ptr<ItemTable> MakeTable(Tag tag, CDBDoc& doc, ui::Ui& ui) const = 0;

  // The administrator of a new multi-user project: the user "admin" and the group
  // "Administration", each a member of the other, both saved. Answers the user,
  // who stays in `users`. A failure of the store is thrown as StoreError.
  virtual RecordItem& MakeAdministrator(ItemTable& users, ItemTable& groups) const = 0;

  // The items that stand for others and follow them: the workbook's tasks of the defects
  // assigned to the user logged in. Made again after every login; told when another
  // client's item joined or changed (to be added, or dropped when no longer the user's),
  // and before one leaves its table (the tasks standing for it go first).
  virtual void AfterLogin(CDBDoc& /*doc*/) const {}
  virtual void ItemArrived(CDBDoc& /*doc*/, Tag /*table*/, RecordItem& /*item*/) const {}
  virtual void BeforeRemove(CDBDoc& /*doc*/, Tag /*table*/, RecordItem& /*item*/) const {}
};

}  // namespace qm
