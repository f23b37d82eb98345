// Tables for the kinds of items this program knows, and the administrator of a new project.
#include "shell/project_item_kinds.h"

#include "defects/defect_table.h"
#include "defects/project_defects.h"
#include "defects/task.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "store/store_error.h"

namespace qm {

std::unique_ptr<ItemTable> ProjectItemKinds::MakeTable(Tag tag, CDBDoc& doc, ui::Ui& ui) const {
  CProjectStore* store = doc.store();
  if (tag == kDefectTag) {
    return std::make_unique<CDefectTable>(store, ui, std::make_unique<DocLookups>(doc));
  }
  if (tag == MakeTag("user")) return std::make_unique<CUserTable>(store, ui);
  if (tag == MakeTag("ugrp")) return std::make_unique<CUserGroupTable>(store, ui);
  if (tag == MakeTag("scfg")) return std::make_unique<CTestConfigTable>(store, ui);
  if (tag == kTasksTag) {
    return std::make_unique<CTaskTable>(store, ui, std::make_unique<DocLookups>(doc));
  }
  return nullptr;
}

RecordItem& ProjectItemKinds::MakeAdministrator(ItemTable& users, ItemTable& groups) const {
  auto user = std::make_unique<CUser>();
  user->SetLastName("Project Admin");
  user->SetLogin("admin");
  user->SetNotes(
      "Administrator for this project. Responsible for managing security and backing up "
      "this project file.");
  auto group = std::make_unique<CUserGroup>();
  group->name = "Administration";
  group->description = "Project file administration";
  group->customFlags = 0x3F;  // the administrators may type new names into every list field

  // Each needs the other's id: the user is stored first to get one, then the group
  // with its member, then the user again with its group.
  CUser& admin = *user;
  std::unique_ptr<RecordItem> item = std::move(user);
  if (DBStatus s = users.AddItem(item); s != DBStatus::kOk) Fail(s);
  group->AddUser(admin.GetId());
  CUserGroup& administration = *group;
  item = std::move(group);
  if (DBStatus s = groups.AddItem(item); s != DBStatus::kOk) Fail(s);
  admin.SetGroupId(administration.GetId());
  if (DBStatus s = users.SaveItem(admin); s != DBStatus::kOk) Fail(s);
  return admin;
}

namespace {

CTaskTable* Workbook(CDBDoc& doc) { return dynamic_cast<CTaskTable*>(doc.GetTable(kTasksTag)); }

}  // namespace

void ProjectItemKinds::AfterLogin(CDBDoc& doc) const {
  CTaskTable* tasks = Workbook(doc);
  const auto* defects = dynamic_cast<const CDefectTable*>(doc.GetTable(kDefectTag));
  if (tasks == nullptr || defects == nullptr) return;
  doc.userInterface().SetStatusText("Adding assigned defects to workbook...");
  RebuildWorkbook(*tasks, *defects, doc.currentUserId());
  doc.userInterface().SetStatusText("");
}

void ProjectItemKinds::ItemArrived(CDBDoc& doc, Tag table, RecordItem& item) const {
  CTaskTable* tasks = Workbook(doc);
  if (table != kDefectTag || tasks == nullptr) return;
  const auto& defect = static_cast<const CDefect&>(item);
  // A defect that is the user's now gets its task, once; one that is not loses it.
  DropDefectTasks(*tasks, defect);
  if (defect.IsAssignedTo(doc.currentUserId()) && !defect.deleted) {
    AddDefectTask(*tasks, defect);
  }
}

void ProjectItemKinds::BeforeRemove(CDBDoc& doc, Tag table, RecordItem& item) const {
  CTaskTable* tasks = Workbook(doc);
  if (table == kDefectTag && tasks != nullptr) {
    DropDefectTasks(*tasks, static_cast<const CDefect&>(item));
  }
}

}  // namespace qm
