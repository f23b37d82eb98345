// Reading defects under a guard, and comparing them field by field.
#include "defects/defect_table.h"

#include <string>

#include "people/record_fields.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/item_error.h"
#include "session/value_item.h"

namespace qm {

namespace {

template <class T>
int Order(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// A date's raw value as a signed number, so that a date not set (all ones) comes first.
int CompareDates(std::uint32_t a, std::uint32_t b) {
  return Order(static_cast<std::int32_t>(a), static_cast<std::int32_t>(b));
}

bool HasAttachments(const CDefect& d) {
  for (std::uint32_t n = 1; n <= d.ReportedByCount(); ++n) {
    if (d.ReportedByAt(n)->AttachmentCount() > 0) return true;
  }
  return false;
}

}  // namespace

CDefectTable::CDefectTable(CProjectStore* store, ui::Ui& ui, const DefectLookups* lookups)
    : ItemTable(store, kDefectTag, ui), ui_(ui), lookups_(lookups) {
  SetSortOrder({1, 1});
}

CDefectTable::CDefectTable(CProjectStore* store, ui::Ui& ui, std::unique_ptr<DefectLookups> lookups)
    : CDefectTable(store, ui, lookups.get()) {
  ownedLookups_ = std::move(lookups);
}

void CDefectTable::SetSecondaryField(std::int16_t field) {
  secondary_ = field;
  SetSortOrder(sortOrder());
}

std::unique_ptr<RecordItem> CDefectTable::NewItem() const {
  return std::make_unique<CDefect>(lookups_);
}

std::unique_ptr<RecordItem> CDefectTable::ItemFromRecord(std::span<const std::uint8_t> payload,
                                                         std::uint32_t id) const {
  auto defect = std::make_unique<CDefect>(lookups_);
  PayloadReader in(payload);
  try {
    defect->ReadFrom(in);
  } catch (const ItemError&) {
    ui_.Tell("Defect #" + std::to_string(id) +
                 " is corrupt (probably due to a system crash.) Re-edit it to correct the "
                 "problem.",
             ui::Icon::kWarning);
  }
  return defect;
}

std::vector<std::pair<Tag, std::uint32_t>> CDefectTable::OwnedRecords(
    const RecordItem& item) const {
  const auto& defect = static_cast<const CDefect&>(item);
  std::vector<std::pair<Tag, std::uint32_t>> records;
  for (std::uint32_t n = 1; n <= defect.ReportedByCount(); ++n) {
    const CReportedBy& row = *defect.ReportedByAt(n);
    for (std::uint32_t a = 1; a <= row.AttachmentCount(); ++a) {
      const std::uint32_t id = row.AttachmentAt(a)->storeId;
      if (id != 0 && id != CFileAttachment::kInFolder) records.emplace_back(MakeTag("atch"), id);
    }
  }
  return records;
}

int CDefectTable::CompareItems(const RecordItem& a, const RecordItem& b,
                               const SortOrder& order) const {
  const auto& x = static_cast<const CDefect&>(a);
  const auto& y = static_cast<const CDefect&>(b);
  const auto primary = static_cast<std::uint16_t>(order.field);
  int c = CompareField(primary, x, y);
  if (c == 0 && secondary_ != kNoSortField) {
    c = CompareField(static_cast<std::uint16_t>(secondary_), x, y);
  }
  // Equal defects stand in the order of their records, except that two of one number
  // (none at all, say) stay equal when the number alone decides.
  if (c == 0 && (secondary_ != kNoSortField || primary != 1)) c = Order(x.GetId(), y.GetId());
  return order.direction == 2 ? -c : c;
}

int CDefectTable::CompareField(std::uint16_t field, const CDefect& a, const CDefect& b) const {
  const DefectCopies& ca = a.copies();
  const DefectCopies& cb = b.copies();
  const auto user = [&](std::uint32_t id) {
    return lookups_ != nullptr ? lookups_->User(id) : nullptr;
  };
  const auto byUser = [&](std::uint32_t x, std::uint32_t y) {
    const CUser* ux = user(x);
    const CUser* uy = user(y);
    if (ux == nullptr || uy == nullptr) return Order(ux != nullptr, uy != nullptr);
    return CompareNoCase(ux->GetName(), uy->GetName());
  };
  const auto byList = [&](Tag list, std::uint32_t x, std::uint32_t y) {
    if (lookups_ == nullptr) return 0;
    return Order(lookups_->ValuePosition(list, x), lookups_->ValuePosition(list, y));
  };
  const auto company = [&](const CDefect& d) {
    const CUser* u = user(d.foundById);
    return u != nullptr ? u->GetCompany() : std::string();
  };
  const auto groupName = [&](const CDefect& d) {
    const CUser* u = user(d.foundById);
    const CUserGroup* g =
        u != nullptr && lookups_ != nullptr ? lookups_->Group(u->GetGroupId()) : nullptr;
    return g != nullptr ? g->GetName() : std::string();
  };
  switch (field) {
    case 1:
      return Order(a.number, b.number);
    case 2:
      return CompareNoCase(a.summary, b.summary);
    case 3:
      return byList(MakeTag("prod"), a.productId, b.productId);
    case 4:
      return byList(MakeTag("type"), a.typeId, b.typeId);
    case 5:
      return byList(MakeTag("prio"), a.priorityId, b.priorityId);
    case 6:
      return Order(ca.status, cb.status);
    case 7:
      return byList(MakeTag("reso"), ca.resolutionId, cb.resolutionId);
    case 8:
      return CompareDates(a.dateFound, b.dateFound);
    case 9:
      return byUser(a.foundById, b.foundById);
    case 10:
      return Order(a.isDuplicate, b.isDuplicate);
    case 11:
      return byList(MakeTag("rpro"), a.reproducedId, b.reproducedId);
    case 12:
      return CompareNoCase(a.versionFound, b.versionFound);
    case 13: {
      const CTestConfig* x = lookups_ != nullptr ? lookups_->TestConfig(a.testConfigId) : nullptr;
      const CTestConfig* y = lookups_ != nullptr ? lookups_->TestConfig(b.testConfigId) : nullptr;
      return CTestConfig::Compare(x, y);
    }
    case 14:
      return CompareDates(ca.dateAssigned, cb.dateAssigned);
    case 15:
      return byUser(ca.assignedToId, cb.assignedToId);
    case 16:
      return CompareDates(ca.dateFixed, cb.dateFixed);
    case 17:
      return byUser(ca.fixedById, cb.fixedById);
    case 18:
      return CompareNoCase(ca.fixVersion, cb.fixVersion);
    case 19:
      return Order(ca.hoursToFix, cb.hoursToFix);
    case 20:
      return Order(ca.affectsDocs, cb.affectsDocs);
    case 21:
      return Order(ca.affectsTestPlan, cb.affectsTestPlan);
    case 22:
      return CompareDates(ca.dateVerified, cb.dateVerified);
    case 23:
      return byUser(ca.verifiedById, cb.verifiedById);
    case 24:
      return byList(MakeTag("comp"), a.componentId, b.componentId);
    case 25:
      return CompareNoCase(a.reference, b.reference);
    case 26:
      return Order(a.ReportedByCount(), b.ReportedByCount());
    case 27:
      return CompareDates(a.dateEntered, b.dateEntered);
    case 28:
      return byUser(a.enteredById, b.enteredById);
    case 29:
      return CompareDates(ca.dateEstimated, cb.dateEstimated);
    case 30:
      return byUser(ca.estimatedById, cb.estimatedById);
    case 31:
      return Order(ca.estimatedHours, cb.estimatedHours);
    case 32:
      return CompareDates(ca.estimatedFixDate, cb.estimatedFixDate);
    case 33:
      return byList(MakeTag("sevr"), a.severityId, b.severityId);
    case 34:
      return Order(!a.workaround.empty(), !b.workaround.empty());
    case 35:
      return Order(ca.hasReleaseNotes, cb.hasReleaseNotes);
    case 36:
      return CompareNoCase(ca.releaseVersion, cb.releaseVersion);
    case 37:
      return CompareDates(a.dateModified, b.dateModified);
    case 38:
      return CompareNoCase(ca.estimatedVersion, cb.estimatedVersion);
    case 39:
      return CompareNoCase(company(a), company(b));
    case 43:
      return byList(MakeTag("usta"), a.dispositionId, b.dispositionId);
    case 44:
      return CompareNoCase(groupName(a), groupName(b));
    case 45:
      return Order(HasAttachments(a), HasAttachments(b));
    default:
      return 0;
  }
}

}  // namespace qm
