// The byte forms of reported-by rows and their attachments, the three ways a row names its
// test configuration, and the attachments a row owns.
#include "defects/reported_by.h"

#include <algorithm>

#include "defects/defect_event.h"
#include "session/item_error.h"

namespace qm {

void CFileAttachment::ReadFrom(PayloadReader& in) {
  const std::uint16_t version = ReadVersion(in, 1, kVersion);
  in.U16(reserved1);
  in.U16(reserved2);
  ReadString(in, fileName);
  in.Raw(fileType);
  in.Raw(fileCreator);
  in.Stamp(dateCreated);
  in.Stamp(dateModified);
  in.U32(size);
  // Once one element lies beyond the end every later one does, so the last element of
  // the version tells whether the attachment was whole.
  bool whole = in.U32(storeId);
  if (whole && version >= 2) whole = ReadString(in, storedName);
  if (!whole) throw ItemError(kItemFailed);
}

void CFileAttachment::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U16(reserved1);
  out.U16(reserved2);
  WriteString(out, fileName);
  out.Raw(fileType);
  out.Raw(fileCreator);
  out.Stamp(dateCreated);
  out.Stamp(dateModified);
  out.U32(size);
  out.U32(storeId);
  WriteString(out, storedName);
}

CReportedBy::CReportedBy() = default;
CReportedBy::~CReportedBy() = default;

std::unique_ptr<CReportedBy> CReportedBy::Clone() const {
  auto copy = std::make_unique<CReportedBy>();
  copy->foundById = foundById;
  copy->dateFound = dateFound;
  copy->contact = contact;
  copy->versionFound = versionFound;
  copy->description = description;
  copy->reproducedId = reproducedId;
  copy->steps = steps;
  copy->otherHardware = otherHardware;
  copy->sessionId = sessionId;
  copy->configKind_ = configKind_;
  copy->testConfigId_ = testConfigId_;
  if (customConfig_ != nullptr) {
    // A configuration is an item, copied through its record form.
    const std::vector<std::uint8_t> bytes = customConfig_->Pack();
    PayloadReader in(bytes);
    copy->customConfig_ = std::make_unique<CTestConfig>();
    copy->customConfig_->ReadFrom(in);
  }
  for (const auto& attachment : attachments_) {
    copy->attachments_.push_back(std::make_unique<CFileAttachment>(*attachment));
  }
  return copy;
}

void CReportedBy::ReadFrom(PayloadReader& in) {
  attachments_.clear();
  const std::uint16_t version = ReadVersion(in, 1, kVersion);
  in.U32(foundById);
  ReadString(in, contact);
  in.Stamp(dateFound);
  ReadFixedVersion(in, versionFound);
  in.Text(description, kTextCapacity);
  in.U32(reproducedId);
  in.Text(steps, kTextCapacity);
  std::uint16_t kind = 0;
  if (in.U16(kind)) {
    SetConfigKind(kind);
    if (kind == kStoredConfig) {
      in.U32(testConfigId_);
    } else if (kind == kCustomConfig) {
      customConfig_ = std::make_unique<CTestConfig>();
      customConfig_->ReadFrom(in);
    }
  }
  std::uint32_t count = 0;
  in.U32(count);
  // The count may be damaged: each attachment takes at least its version's two bytes or
  // throws, so the payload's end bounds the loop whatever the count says.
  for (std::uint32_t i = 0; i < count; ++i) {
    auto attachment = std::make_unique<CFileAttachment>();
    attachment->ReadFrom(in);
    attachments_.push_back(std::move(attachment));
  }
  if (version > 1) in.Text(otherHardware, kTextCapacity);
}

void CReportedBy::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U32(foundById);
  WriteString(out, contact);
  out.Stamp(dateFound);
  WriteFixedVersion(out, versionFound);
  out.Text(description);
  out.U32(reproducedId);
  out.Text(steps);
  out.U16(configKind_);
  if (configKind_ == kStoredConfig) {
    out.U32(testConfigId_);
  } else if (configKind_ == kCustomConfig) {
    // A reader expects a configuration behind kind 3; a row set to custom before one was
    // given still describes no machine, as an empty configuration does.
    if (customConfig_ != nullptr) {
      customConfig_->WriteTo(out);
    } else {
      CTestConfig().WriteTo(out);
    }
  }
  out.U32(AttachmentCount());
  for (const auto& attachment : attachments_) attachment->WriteTo(out);
  out.Text(otherHardware);
}

void CReportedBy::SetConfigKind(std::uint16_t kind) {
  configKind_ = kind;
  if (kind != kCustomConfig) customConfig_.reset();
  if (kind != kStoredConfig) testConfigId_ = 0;
}

void CReportedBy::SetTestConfigId(std::uint32_t id) {
  testConfigId_ = id;
  customConfig_.reset();
}

void CReportedBy::SetCustomConfig(std::unique_ptr<CTestConfig> config) {
  customConfig_ = std::move(config);
}

CFileAttachment* CReportedBy::AttachmentAt(std::uint32_t n) const {
  return n >= 1 && n <= attachments_.size() ? attachments_[n - 1].get() : nullptr;
}

void CReportedBy::AddAttachment(std::unique_ptr<CFileAttachment> attachment) {
  attachments_.push_back(std::move(attachment));
}

std::unique_ptr<CFileAttachment> CReportedBy::RemoveAttachment(const CFileAttachment* attachment) {
  const auto it = std::find_if(attachments_.begin(), attachments_.end(),
                               [attachment](const auto& a) { return a.get() == attachment; });
  if (it == attachments_.end()) return nullptr;
  std::unique_ptr<CFileAttachment> removed = std::move(*it);
  attachments_.erase(it);
  return removed;
}

}  // namespace qm
