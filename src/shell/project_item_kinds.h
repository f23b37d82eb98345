// The item classes of the tables a project loads, as this program has them.
#pragma once

#include "session/project_kinds.h"

namespace qm {

class ProjectItemKinds : public ProjectKinds {
 public:
  std::unique_ptr<ItemTable> MakeTable(Tag tag, CDBDoc& doc, ui::Ui& ui) const override;
  RecordItem& MakeAdministrator(ItemTable& users, ItemTable& groups) const override;
};

}  // namespace qm
