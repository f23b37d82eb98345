// The item classes of the tables a project loads, as this program has them.
#pragma once

#include "session/project_kinds.h"

namespace qm {

class ProjectItemKinds : public ProjectKinds {
 public:
  std::unique_ptr<ItemTable> MakeTable(Tag tag, CDBDoc& doc, ui::Ui& ui) const override;
  RecordItem& MakeAdministrator(ItemTable& users, ItemTable& groups) const override;
  // The workbook follows the defects assigned to the user logged in.
  void AfterLogin(CDBDoc& doc) const override;
  void ItemArrived(CDBDoc& doc, Tag table, RecordItem& item) const override;
  void BeforeRemove(CDBDoc& doc, Tag table, RecordItem& item) const override;
};

}  // namespace qm
