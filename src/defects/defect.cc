// The defect record: its byte form in every version, the order of its events and the
// copies worked out by replaying them.
#include "defects/defect.h"

#include <algorithm>

#include "people/record_fields.h"
#include "people/user.h"
#include "session/item_error.h"

namespace qm {

namespace {

constexpr std::size_t kShortText = 32;  // versions, references and the reserved text

// A record older than reported-by rows: its found-by block and description.
struct OldReport {
  std::string description;
  std::uint32_t configId = 0;
  std::string configText;
};

std::string ReadOldText(PayloadReader& in, bool text8) {
  std::string text;
  if (text8) {
    ReadText8(in, text);
  } else {
    in.Text(text, kTextCapacity);
  }
  return text;
}

}  // namespace

CDefect::CDefect(const DefectLookups* lookups) : lookups_(lookups) {}

CDefect::~CDefect() = default;

void CDefect::SetId(std::uint32_t id) {
  RecordItem::SetId(id);
  if (number == kNumberFromId) number = id;
}

// ---- the byte form -----------------------------------------------------------------------

void CDefect::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U8(deleted ? 1 : 0);
  out.Stamp(dateCreated);
  out.U32(typeId);
  out.U32(copies_.resolutionId);
  out.U32(priorityId);
  out.String(summary);
  out.U8(isDuplicate ? 1 : 0);
  out.U8(reservedFlag);
  out.U32(productId);
  out.U32(enteredById);
  out.Stamp(dateEntered);
  out.U32(copies_.assignedToId);
  out.Stamp(copies_.dateAssigned);
  out.U32(copies_.fixedById);
  out.Stamp(copies_.dateFixed);
  out.Float64(copies_.hoursToFix);
  out.String(copies_.fixVersion, kShortText);
  out.U8(copies_.affectsDocs ? 1 : 0);
  out.U8(copies_.affectsTestPlan ? 1 : 0);
  out.U32(copies_.verifiedById);
  out.Stamp(copies_.dateVerified);
  out.String(reservedText, kShortText);
  out.U32(reservedValue);
  out.U16(static_cast<std::uint16_t>(events_.size()));
  for (const auto& event : events_) {
    out.U16(static_cast<std::uint16_t>(event->kind()));
    event->WriteTo(out);
  }
  out.U16(copies_.status);
  out.U32(componentId);
  // A reference is kept to 32 bytes: a longer one would stop the reading of the record.
  out.String(reference, kShortText);
  out.U16(static_cast<std::uint16_t>(reportedBy_.size()));
  for (const auto& row : reportedBy_) row->WriteTo(out);
  out.U32(severityId);
  out.Text(workaround);
  out.Stamp(dateModified);
  out.U32(number);
  IdList notify(4);
  for (const std::uint32_t id : notifyList_) notify.Append(id);
  notify.Write(out);
  out.U32(dispositionId);
  // The list once more behind the disposition, which no reader takes: records stay the
  // bytes that every version of the program writes.
  notify.Write(out);
}

void CDefect::ReadFrom(PayloadReader& in) {
  notifyList_.clear();
  events_.clear();
  reportedBy_.clear();
  OldReport old;
  std::uint16_t version = 0;
  try {
    version = ReadVersion(in, kOldestVersion, kVersion);
    deleted = false;
    if (version >= 0x103) in.U8(deleted);
    in.Stamp(dateCreated);
    in.U32(typeId);
    std::uint32_t storedResolution = 0;
    in.U32(storedResolution);
    in.U32(priorityId);
    in.String(summary, kStringCapacity);
    in.U8(isDuplicate);
    in.U8(reservedFlag);
    in.U32(productId);
    if (version < 0x105) {
      in.U32(foundById);
      in.Stamp(dateFound);
      in.U8(legacyReproducible);
    } else {
      in.U32(enteredById);
      in.Stamp(dateEntered);
    }
    if (version <= 0x105) old.description = ReadOldText(in, version == 0x100);
    if (version < 0x105) {
      in.String(versionFound, kShortText);
      in.U32(old.configId);
      old.configText = ReadOldText(in, version <= 0x101);
    }
    // The copies that follow are read only to be passed over: the events say what they are.
    DefectCopies stored;
    in.U32(stored.assignedToId);
    in.Stamp(stored.dateAssigned);
    in.U32(stored.fixedById);
    in.Stamp(stored.dateFixed);
    (void)ReadHours(in, version, 4);
    in.String(stored.fixVersion, kShortText);
    in.U8(stored.affectsDocs);
    in.U8(stored.affectsTestPlan);
    in.U32(stored.verifiedById);
    in.Stamp(stored.dateVerified);
    in.String(reservedText, kShortText);
    in.U32(reservedValue);
    ClearDerived();

    std::uint16_t eventCount = 0;
    in.U16(eventCount);
    for (std::uint16_t i = 0; i < eventCount; ++i) {
      std::uint16_t kind = 0;
      in.U16(kind);
      std::unique_ptr<CDefectEvent> event = CDefectEvent::Make(static_cast<std::int16_t>(kind));
      if (event == nullptr) throw ItemError(kNoItem);
      event->ReadFrom(in, version);
      InsertEvent(std::move(event));
    }
    // One replay over all the events leaves what a replay after each insertion would: every
    // copy is set by the last event in order that sets it.
    Replay();
    if (copies_.fixedById == 0) copies_.hoursToFix = -1.0;
    std::uint16_t storedStatus = 0;
    in.U16(storedStatus);

    if (version >= 0x105) {
      in.U32(componentId);
      in.String(reference, kShortText);
      std::uint16_t rows = 0;
      in.U16(rows);
      if (rows > kMaxReportedBy) throw ItemError(0);
      for (std::uint16_t i = 0; i < rows; ++i) {
        auto row = std::make_unique<CReportedBy>();
        row->ReadFrom(in);
        AddReportedBy(std::move(row));
      }
    } else {
      ConvertOldReport(old.configId, std::move(old.configText));
    }
    if (version <= 0x105 && !reportedBy_.empty()) {
      CReportedBy& first = *reportedBy_.front();
      first.description = std::string(
          CutToCapacity(old.description + first.description, CDefectEvent::kNotesCapacity));
    }
    if (version >= 0x107) in.U32(severityId);
    if (version >= 0x108) in.Text(workaround, kTextCapacity);
    if (version >= 0x109) {
      in.Stamp(dateModified);
    } else {
      dateModified = dateCreated;
    }
    if (version >= 0x10A) {
      in.U32(number);
      IdList notify(4);
      notify.Read(in);
      for (std::uint32_t i = 0; i < notify.count(); ++i) notifyList_.push_back(notify.At(i));
    } else {
      number = kNumberFromId;
    }
    dispositionId = 0;
    if (version >= 0x10B && in.remaining() > 0) in.U32(dispositionId);
    RefreshFromFirstReport();
  } catch (const ItemError&) {
    // What was read stays; the copies still follow the events that were read.
    Replay();
    RefreshFromFirstReport();
    throw;
  }
}

void CDefect::ConvertOldReport(std::uint32_t oldConfigId, std::string oldConfigText) {
  reproducedId = legacyReproducible ? 1 : 4;
  auto row = std::make_unique<CReportedBy>();
  row->foundById = foundById;
  row->dateFound = dateFound;
  row->versionFound = versionFound;
  if (const CUser* user = lookups_ != nullptr ? lookups_->User(foundById) : nullptr) {
    row->contact = user->GetCompany().empty() ? user->GetName() : user->GetCompany();
  }
  row->description = std::move(oldConfigText);
  if (oldConfigId != 0) {
    row->SetConfigKind(CReportedBy::kStoredConfig);
    row->SetTestConfigId(oldConfigId);
  } else {
    row->SetConfigKind(CReportedBy::kNoConfig);
  }
  row->reproducedId = reproducedId;
  AddReportedBy(std::move(row));
}

std::unique_ptr<CDefect> CDefect::Clone() const {
  auto copy = std::make_unique<CDefect>(lookups_);
  copy->CopyFrom(*this);
  return copy;
}

void CDefect::CopyFrom(const CDefect& other) {
  CopyPayloadFrom(other);
  // The rows pair up by place: the byte form keeps the order of both tables.
  for (std::uint32_t n = 1; n <= EventCount(); ++n) {
    EventAt(n)->sessionId = other.EventAt(n)->sessionId;
  }
  for (std::uint32_t n = 1; n <= ReportedByCount(); ++n) {
    ReportedByAt(n)->sessionId = other.ReportedByAt(n)->sessionId;
  }
}

// ---- events ------------------------------------------------------------------------------

CDefectEvent* CDefect::EventAt(std::uint32_t n) const {
  return n >= 1 && n <= events_.size() ? events_[n - 1].get() : nullptr;
}

void CDefect::AddEvent(std::unique_ptr<CDefectEvent> event) {
  InsertEvent(std::move(event));
  Replay();
}

void CDefect::InsertEvent(std::unique_ptr<CDefectEvent> event) {
  // Events of one date keep the order they came in; where either date is not set, the
  // weight of the kind decides.
  auto at = std::find_if(events_.begin(), events_.end(), [&](const auto& row) {
    if (event->date == platform::kNoStamp || row->date == platform::kNoStamp) {
      return row->Weight() > event->Weight();
    }
    return row->date > event->date;
  });
  events_.insert(at, std::move(event));
}

std::unique_ptr<CDefectEvent> CDefect::RemoveEvent(const CDefectEvent* event) {
  const auto it = std::find_if(events_.begin(), events_.end(),
                               [&](const auto& row) { return row.get() == event; });
  if (it == events_.end()) return nullptr;
  std::unique_ptr<CDefectEvent> removed = std::move(*it);
  events_.erase(it);
  ClearDerived();
  Replay();
  return removed;
}

void CDefect::Replay() {
  copies_.hoursToFix = -1.0;
  copies_.releaseVersion.clear();
  copies_.hasReleaseNotes = false;
  copies_.releaseNotes = nullptr;
  const std::uint32_t currentUser = lookups_ != nullptr ? lookups_->CurrentUserId() : 0;
  std::uint16_t status = 1;
  for (const auto& event : events_) {
    event->Apply(copies_, currentUser);
    status = event->StatusAfter(status);
  }
  copies_.status = status;
}

void CDefect::ClearDerived() { copies_ = DefectCopies{}; }

// ---- reported-by rows --------------------------------------------------------------------

CReportedBy* CDefect::ReportedByAt(std::uint32_t n) const {
  return n >= 1 && n <= reportedBy_.size() ? reportedBy_[n - 1].get() : nullptr;
}

void CDefect::AddReportedBy(std::unique_ptr<CReportedBy> row) {
  reportedBy_.push_back(std::move(row));
}

std::unique_ptr<CReportedBy> CDefect::RemoveReportedBy(const CReportedBy* row) {
  const auto it = std::find_if(reportedBy_.begin(), reportedBy_.end(),
                               [&](const auto& r) { return r.get() == row; });
  if (it == reportedBy_.end()) return nullptr;
  std::unique_ptr<CReportedBy> removed = std::move(*it);
  reportedBy_.erase(it);
  return removed;
}

void CDefect::RefreshFromFirstReport() {
  const CReportedBy* first = ReportedByAt(1);
  foundById = first != nullptr ? first->foundById : 0;
  dateFound = first != nullptr ? first->dateFound : platform::kNoStamp;
  versionFound = first != nullptr ? first->versionFound : std::string();
  reproducedId = first != nullptr ? first->reproducedId : 0;
  testConfigId = first != nullptr && first->configKind() == CReportedBy::kStoredConfig
                     ? first->testConfigId()
                     : 0;
}

bool CDefect::DescriptionContains(std::string_view text) const {
  return std::any_of(reportedBy_.begin(), reportedBy_.end(), [&](const auto& row) {
    return row->description.find(text) != std::string::npos;
  });
}

// ---- id fields ---------------------------------------------------------------------------

void CDefect::SetIdField(std::uint16_t field, std::uint32_t value) {
  switch (field) {
    case 3:
      productId = value;
      break;
    case 4:
      typeId = value;
      break;
    case 5:
      priorityId = value;
      break;
    case 7:
      copies_.resolutionId = value;
      break;
    case 9:
      foundById = value;
      break;
    case 11:
      reproducedId = value;
      break;
    case 15:
      copies_.assignedToId = value;
      break;
    case 17:
      copies_.fixedById = value;
      break;
    case 23:
      copies_.verifiedById = value;
      break;
    case 24:
      componentId = value;
      break;
    case 28:
      enteredById = value;
      break;
    case 30:
      copies_.estimatedById = value;
      break;
    case 33:
      severityId = value;
      break;
    case 43:
      dispositionId = value;
      break;
    default:
      break;
  }
}

std::uint32_t CDefect::GetIdField(std::uint16_t field) const {
  switch (field) {
    case 3:
      return productId;
    case 4:
      return typeId;
    case 5:
      return priorityId;
    case 7:
      return copies_.resolutionId;
    case 9:
      return foundById;
    case 11:
      return reproducedId;
    case 15:
      return copies_.assignedToId;
    case 17:
      return copies_.fixedById;
    case 23:
      return copies_.verifiedById;
    case 24:
      return componentId;
    case 28:
      return enteredById;
    case 30:
      return copies_.estimatedById;
    case 33:
      return severityId;
    case 43:
      return dispositionId;
    default:
      return 0;
  }
}

}  // namespace qm
