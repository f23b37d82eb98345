// Lookups through the open project's tables, the value lists' walk over the defects, and
// the numbers in use.
#include "defects/project_defects.h"

#include <algorithm>

#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/value_item.h"
#include "session/value_lists.h"

namespace qm {

const RecordItem* DocLookups::Find(Tag table, std::uint32_t id) const {
  const ItemTable* items = doc_.GetTable(table);
  return items != nullptr && id != 0 ? items->ItemById(id) : nullptr;
}

const CUser* DocLookups::User(std::uint32_t id) const {
  return dynamic_cast<const CUser*>(Find(kUserTag, id));
}

const CUserGroup* DocLookups::Group(std::uint32_t id) const {
  return dynamic_cast<const CUserGroup*>(Find(kGroupTag, id));
}

const CTestConfig* DocLookups::TestConfig(std::uint32_t id) const {
  return dynamic_cast<const CTestConfig*>(Find(MakeTag("scfg"), id));
}

const ValueItem* DocLookups::Value(Tag list, std::uint32_t id) const {
  return dynamic_cast<const ValueItem*>(Find(list, id));
}

std::uint32_t DocLookups::ValuePosition(Tag list, std::uint32_t id) const {
  const ItemTable* items = doc_.GetTable(list);
  const RecordItem* item = Find(list, id);
  return item != nullptr ? items->PositionOf(item) : 0;
}

std::uint32_t DocLookups::CurrentUserId() const { return doc_.currentUserId(); }

std::uint32_t DefectTableNumbers::HighestNumber() const {
  std::uint32_t highest = 0;
  for (std::uint32_t p = 1; p <= defects_.count(); ++p) {
    const CDefect* defect = defects_.DefectAt(p);
    if (!defect->deleted) highest = std::max(highest, defect->number);
  }
  return highest;
}

std::uint32_t DefectValueAccess::DefectId(std::uint32_t position) const {
  return defects_.DefectAt(position)->GetId();
}

namespace {

// The resolution a fix or close event names; null for the other kinds.
std::uint32_t* EventResolution(CDefectEvent& event) {
  if (auto* fix = dynamic_cast<CFixEvent*>(&event)) return &fix->resolutionId;
  if (auto* close = dynamic_cast<CCloseEvent*>(&event)) return &close->resolutionId;
  return nullptr;
}

}  // namespace

bool DefectValueAccess::UsesValue(std::uint32_t position, std::uint16_t fieldCode,
                                  std::uint32_t valueId) const {
  const CDefect& defect = *defects_.DefectAt(position);
  if (fieldCode == kFieldResolution) {
    // The resolution of a defect is its events': every one that names it counts.
    for (std::uint32_t n = 1; n <= defect.EventCount(); ++n) {
      const std::uint32_t* resolution = EventResolution(*defect.EventAt(n));
      if (resolution != nullptr && *resolution == valueId) return true;
    }
    return false;
  }
  if (fieldCode != kFieldReproducible) return defect.GetIdField(fieldCode) == valueId;
  for (std::uint32_t n = 1; n <= defect.ReportedByCount(); ++n) {
    if (defect.ReportedByAt(n)->reproducedId == valueId) return true;
  }
  return false;
}

void DefectValueAccess::ReplaceValue(std::uint32_t position, std::uint16_t fieldCode,
                                     std::uint32_t oldId, std::uint32_t newId) {
  CDefect& defect = *defects_.DefectAt(position);
  if (fieldCode == kFieldResolution) {
    for (std::uint32_t n = 1; n <= defect.EventCount(); ++n) {
      std::uint32_t* resolution = EventResolution(*defect.EventAt(n));
      if (resolution != nullptr && *resolution == oldId) *resolution = newId;
    }
    defect.Replay();
    return;
  }
  if (fieldCode != kFieldReproducible) {
    if (defect.GetIdField(fieldCode) == oldId) defect.SetIdField(fieldCode, newId);
    return;
  }
  for (std::uint32_t n = 1; n <= defect.ReportedByCount(); ++n) {
    CReportedBy& row = *defect.ReportedByAt(n);
    if (row.reproducedId == oldId) row.reproducedId = newId;
  }
  defect.RefreshFromFirstReport();
}

DBStatus DefectValueAccess::SaveDefect(std::uint32_t position) {
  return defects_.SaveItem(*defects_.DefectAt(position));
}

}  // namespace qm
