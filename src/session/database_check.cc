// The check for other users' changes: the change counter, then the notices they posted
// and the records they added, table by table in the order of the directory.
#include <algorithm>
#include <string>

#include "session/db_doc.h"
#include "session/numbering.h"
#include "session/record_notice.h"
#include "store/bytes.h"
#include "store/store_error.h"

namespace qm {
namespace {

// The tables whose new records join an open list window at once.
constexpr Tag kWatchedTables[] = {MakeTag("dflt"), MakeTag("dfct"), MakeTag("rprt"),
                                  MakeTag("task"), MakeTag("scfg"), MakeTag("ugrp"),
                                  MakeTag("user")};

bool Watched(Tag tag) { return std::ranges::find(kWatchedTables, tag) != std::end(kWatchedTables); }

const TableEntry* EntryOf(const TableDirectory& directory, Tag tag) {
  for (const TableEntry& e : directory.entries) {
    if (e.tag == tag) return &e;
  }
  return nullptr;
}

}  // namespace

void CDBDoc::IdleWork() {
  if (!idleEnabled_ || !store_) return;
  idleEnabled_ = false;
  // The next check must have passed, not merely come.
  if (nextDatabaseCheck_ != platform::kNoStamp && nextDatabaseCheck_ < Now() && multiUser()) {
    CheckDatabase();
  }
  idleEnabled_ = true;
}

void CDBDoc::ApplySchedule() {
  if (!store_) return;
  const std::int32_t seconds = host_.DatabaseCheckSeconds();
  nextDatabaseCheck_ = seconds < 0 ? platform::kNoStamp : 0;
}

bool CDBDoc::CheckDatabase() {
  if (!store_ || !multiUser()) return false;
  bool alert = false;
  if (store_->HasChanged()) {
    try {
      Check(store_->RefreshDirectory());
      const TableDirectory now = store_->directory();
      for (std::size_t i = 0; i < std::min<std::size_t>(now.capacity, TableDirectory::kCapacity);
           ++i) {
        const TableEntry& entry = now.entries[i];
        if (entry.tag == kFreeTag) continue;
        const TableEntry* seen = EntryOf(snapshot_, entry.tag);
        const std::uint32_t from = seen != nullptr ? seen->nextId : entry.nextId;
        if (entry.nextId <= from) continue;
        if (entry.tag == kMessagesTag) {
          alert = ReadNotices() || alert;
        } else if (Watched(entry.tag) && host_.ListWindowOpen(entry.tag)) {
          alert = LoadNewRecords(entry.tag, from, entry.nextId) || alert;
        }
      }
      snapshot_ = now;
      std::vector<std::uint8_t> record;
      if (store_->ReadRecord(kMiscTag, kOptionsRecord, record) == DBStatus::kOk) {
        if (const auto stored = DecodeOptions(record)) options_ = *stored;
      }
    } catch (const StoreError& e) {
      // The next check looks again; what this one missed is still in the file.
      ui::DebugOutput("database check: failed with " + std::to_string(static_cast<int>(e.status)));
    }
  }
  if (alert) host_.AlertAssignment();
  ScheduleCheck();
  return alert;
}

bool CDBDoc::ReadNotices() {
  bool alert = false;
  Notice notice;
  while (store_->GetNextMessage(notice) == DBStatus::kOk) {
    try {
      alert = ActOnNotice(notice) || alert;
    } catch (const StoreError&) {
      // A record that cannot be read again now is read at its next notice or opening.
    }
    CProjectStore::FreeMessage(notice);
  }
  return alert;
}

bool CDBDoc::MarkForUser(RecordItem& item) {
  if (!item.IsAssignedTo(currentUserId())) return false;
  item.isAssigned = true;
  return true;
}

bool CDBDoc::LoadNewRecords(Tag tag, std::uint32_t from, std::uint32_t to) {
  ItemTable* table = GetTable(tag);
  if (table == nullptr) return false;
  bool alert = false;
  for (std::uint32_t id = from; id < to; ++id) {
    if (table->ItemById(id) != nullptr) continue;
    RecordItem* item = table->LoadItem(id);
    if (item == nullptr) continue;
    item->isNew = true;
    alert = MarkForUser(*item) || alert;
    kinds_.ItemArrived(*this, tag, *item);
    host_.ItemAdded(tag, *item);
  }
  return alert;
}

bool CDBDoc::ActOnNotice(const Notice& notice) {
  if (notice.kind == kNoticeText) {
    ui_.Tell(std::string(notice.data.begin(), notice.data.end()), ui::Icon::kInformation);
    return false;
  }
  BeReader in(notice.data.data());
  if (notice.kind == kNoticeAssigned) {
    if (notice.data.size() < 4) return false;
    ItemTable* defects = GetTable(kDefectTag);
    RecordItem* defect = defects != nullptr ? defects->ItemById(in.U32()) : nullptr;
    if (defect == nullptr) return false;
    defect->isAssigned = true;
    kinds_.ItemArrived(*this, kDefectTag, *defect);
    host_.ItemChanged(kDefectTag, *defect);
    return true;
  }
  if (notice.data.size() < 8) return false;  // an unknown or short notice is dropped
  const Tag tag = in.U32();
  const std::uint32_t id = in.U32();
  ItemTable* table = GetTable(tag);
  if (table == nullptr) return false;
  RecordItem* item = table->ItemById(id);
  switch (notice.kind) {
    case kNoticeChanged:
      if (item == nullptr) return false;
      table->ReloadItem(*item);
      kinds_.ItemArrived(*this, tag, *item);
      if (tag != kDefectTag) {
        host_.ItemChanged(tag, *item);
        return false;
      }
      {
        item->isChanged = true;
        const bool mine = MarkForUser(*item);
        host_.ItemChanged(tag, *item);
        return mine;
      }
    case kNoticeDeleted:
      if (item == nullptr) return false;
      host_.ItemRemoving(tag, *item);
      kinds_.BeforeRemove(*this, tag, *item);
      table->RemoveItem(item);  // and destroyed here
      return false;
    case kNoticeAdded:
      if (item != nullptr) return false;
      return LoadNewRecords(tag, id, id + 1);
    default:
      return false;
  }
}

}  // namespace qm
