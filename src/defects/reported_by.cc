// The byte forms of reported-by rows and their attachments, the three ways a row names its
// test configuration, and the attachments a row owns.
#include "defects/reported_by.h"

#include <algorithm>

#include "defects/defect_event.h"
#include "defects/defect_lookups.h"
#include "defects/text_forms.h"
#include "session/item_error.h"
#include "session/page_form.h"

namespace qm {
namespace {

std::string OrNone(std::string_view text) { return text.empty() ? "none" : std::string(text); }

// A text cell of the HTML form: "&nbsp;" stands for an empty text, and passes the escape
// unchanged.
void HtmlTextRow(std::string& out, std::string_view label, std::string_view text) {
  out += kHtmlRowOpen;
  HtmlCell(out, 2, label, text.empty() ? "&nbsp;" : text);
  out += kHtmlRowClose;
}

}  // namespace

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

std::string CReportedBy::GetFoundByName(const DefectLookups& lookups) const {
  return UserName(lookups, foundById);
}

std::string CReportedBy::GetReproducedName(const DefectLookups& lookups) const {
  return ValueName(lookups, MakeTag("rpro"), reproducedId);
}

std::string CReportedBy::StoredConfigName(const DefectLookups& lookups) const {
  const CTestConfig* config = lookups.TestConfig(testConfigId_);
  return config != nullptr ? config->GetName() : std::string("<not set>");
}

void CReportedBy::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Reported by: ", GetFoundByName(lookups));
  TextLine(out, "Date Found: ", FormatDate(dateFound));
  TextLine(out, "Found in Version: ", versionFound);
  TextLine(out, "Comments: ", OrNone(CrToCrLf(description)));
  TextLine(out, "Reproduced: ", GetReproducedName(lookups));
  TextLine(out, "Steps to Reproduce: ", OrNone(CrToCrLf(steps)));
  if (configKind_ == kStoredConfig) {
    TextLine(out, "Standard Test Configuration: ", StoredConfigName(lookups));
  } else {
    TextLine(out, "Custom Computer Configuration", {});
  }
  TextLine(out, "Other Hardware and Software: ", OrNone(CrToCrLf(otherHardware)));
  // Each file name stands on a line of its own below the label.
  if (attachments_.empty()) {
    TextLine(out, "Attachments: ", "none");
  } else {
    TextLine(out, "Attachments: ", {});
    for (const auto& attachment : attachments_) TextLine(out, {}, attachment->fileName.str());
  }
}

// The HTML says "Date Reported" where the text and the page say "Date Found".
void CReportedBy::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Reported by:", GetFoundByName(lookups));
  HtmlCell(out, 1, "Date Reported:", FormatDate(dateFound));
  out += kHtmlRowClose;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Found in Version:", versionFound);
  out += kHtmlRowClose;
  HtmlTextRow(out, "Comments:", description);
  out += kHtmlRowOpen;
  HtmlCell(out, 2, "Reproduced:", GetReproducedName(lookups));
  out += kHtmlRowClose;
  HtmlTextRow(out, "Steps to Reproduce:", steps);
  out += kHtmlRowOpen;
  if (configKind_ == kStoredConfig) {
    HtmlCell(out, 2, "Standard Test Configuration:", StoredConfigName(lookups));
  } else {
    out += "<TD COLSPAN=2><B>Custom Computer Configuration</B></TD>";
  }
  out += kHtmlRowClose;
  HtmlTextRow(out, "Other Hardware and Software:", otherHardware);
  out += kHtmlRowOpen;
  out += "<TD COLSPAN=2><B>Attachments:</B> ";
  for (const auto& attachment : attachments_) {
    out += "<BR>&nbsp;&nbsp;" + EscapeHtml(attachment->fileName.str());
  }
  if (attachments_.empty()) out += "<BR>&nbsp;&nbsp;none";
  out += "</TD>";
  out += kHtmlRowClose;
  out += kHtmlTableClose;
}

// The page adds the contact behind the date, and names the configuration of a row
// without a stored one as the user's.
void CReportedBy::Print(PageForm& form, const DefectLookups& lookups) const {
  const auto line = [&form](std::string_view label, std::string_view value) {
    form.Field(PageForm::kColumns[0], label, value);
    form.NextLine();
  };
  line("Reported by: ", GetFoundByName(lookups));
  form.Field(PageForm::kColumns[0], "Date Found: ", FormatDate(dateFound));
  form.Field(PageForm::kColumns[1], "Contact at: ", contact.str());
  form.NextLine();
  line("Found in Version: ", versionFound);
  form.Block("Comments: ", OrNone(description));
  line("Reproduced: ", GetReproducedName(lookups));
  form.Block("Steps to Reproduce: ", OrNone(steps));
  if (configKind_ == kStoredConfig) {
    line("Standard Test Configuration: ", StoredConfigName(lookups));
  } else {
    form.Block("User's Computer Configuration: ", "");
  }
  form.Block("Other Hardware and Software: ", OrNone(otherHardware));
  // The file names as the lines of one text, each ended as stored texts end theirs.
  std::string names;
  for (const auto& attachment : attachments_) {
    if (!names.empty()) names += '\r';
    names += attachment->fileName.str();
  }
  form.Block("Attachments: ", OrNone(names));
}

}  // namespace qm
