// CReportedBy, one report of a defect: who found it, when, on what machine, with what
// description and steps, and the files attached to it. CFileAttachment describes one of
// those files. Both stand inside the defect record.
//
// A reported-by row (record version 2 written; 1 and 2 read):
//
//   order  field           form                                   present when
//   1      version         u16                                    always
//   2      foundById       u32                                    always
//   3      contact         string(255)                            always
//   4      dateFound       stamp                                  always
//   5      versionFound    33 bytes: length byte, text, padding   always
//   6      description     text                                   always
//   7      reproducedId    u32                                    always
//   8      steps           text                                   always
//   9      configKind      u16: 1 none, 2 stored, 3 custom         always
//   10     testConfigId    u32                                    kind 2
//   10     customConfig    a test configuration record, in line   kind 3
//   11     attachment count u32                                   always
//   12     attachments     below, count times                     always
//   13     otherHardware   text                                   version 2
//
// An attachment (record version 2 written; 1 and 2 read):
//
//   order  field                      form          present when
//   1      version                    u16           always
//   2      reserved1, reserved2       u16 each      always
//   3      fileName                   string(255)   always
//   4      fileType, fileCreator      4 bytes each  always
//   5      dateCreated, dateModified  stamp each    always
//   6      size                       u32           always
//   7      storeId                    u32           always: 0 not stored yet,
//                                                   0xFFFFFFFF in the folder, else
//                                                   the 'atch' record id
//   8      storedName                 string(255)   version 2
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "defects/session_id.h"
#include "people/record_fields.h"
#include "people/test_config.h"
#include "platform/clock.h"
#include "session/payload.h"

namespace qm {

class DefectLookups;
class PageForm;

class CFileAttachment {
 public:
  static constexpr std::uint16_t kVersion = 2;
  static constexpr std::uint32_t kInFolder = 0xFFFFFFFF;

  // Throws ItemError(kItemFailed) for a version other than 1 or 2, and for an attachment
  // that the payload does not hold whole.
  void ReadFrom(PayloadReader& in);
  void WriteTo(PayloadWriter& out) const;

  bool deleteSource = false;  // never stored
  std::uint16_t reserved1 = 1;
  std::uint16_t reserved2 = 0;
  BoundedText<63> fileName;
  std::array<std::uint8_t, 4> fileType{'?', '?', '?', '?'};
  std::array<std::uint8_t, 4> fileCreator{'?', '?', '?', '?'};
  std::uint32_t dateCreated = platform::kNoStamp;
  std::uint32_t dateModified = platform::kNoStamp;
  std::uint32_t size = 0;
  std::uint32_t storeId = 0;
  std::string sourcePath;  // never stored
  BoundedText<63> storedName;
};

class CReportedBy {
 public:
  static constexpr std::uint16_t kVersion = 2;
  enum ConfigKind : std::uint16_t { kNoConfig = 1, kStoredConfig = 2, kCustomConfig = 3 };

  CReportedBy();
  ~CReportedBy();
  // A copy with every text, the custom configuration and the attachments, and the same
  // session id.
  std::unique_ptr<CReportedBy> Clone() const;

  // Gives up the attachments, then reads; an attachment that cannot be read, or a custom
  // configuration of an unknown version, throws ItemError(kItemFailed). What was read
  // before stays. Elements beyond the payload's end leave their fields as they were.
  void ReadFrom(PayloadReader& in);
  // A custom kind without a configuration writes an empty one, so that the record can
  // still be read.
  void WriteTo(PayloadWriter& out) const;

  std::uint16_t configKind() const { return configKind_; }
  // A kind other than 3 gives up the custom configuration, one other than 2 the stored
  // configuration's id.
  void SetConfigKind(std::uint16_t kind);
  std::uint32_t testConfigId() const { return testConfigId_; }
  // Names a stored configuration; a custom one is given up.
  void SetTestConfigId(std::uint32_t id);
  const CTestConfig* customConfig() const { return customConfig_.get(); }
  // Takes a custom configuration in place of any earlier one.
  void SetCustomConfig(std::unique_ptr<CTestConfig> config);

  // 1-based; null out of range.
  std::uint32_t AttachmentCount() const { return static_cast<std::uint32_t>(attachments_.size()); }
  CFileAttachment* AttachmentAt(std::uint32_t n) const;
  void AddAttachment(std::unique_ptr<CFileAttachment> attachment);
  // Null when the attachment is not this row's.
  std::unique_ptr<CFileAttachment> RemoveAttachment(const CFileAttachment* attachment);

  // The found-by user's name; empty when the user is gone.
  std::string GetFoundByName(const DefectLookups& lookups) const;
  // The value of list 'rpro', or "<not set>".
  std::string GetReproducedName(const DefectLookups& lookups) const;

  // The row's part of its defect's text form (each line ended by CR LF), HTML form (one
  // table) and page form. Empty texts read "none"; a stored configuration that is gone
  // reads "<not set>".
  void WriteText(std::string& out, const DefectLookups& lookups) const;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const;
  void Print(PageForm& form, const DefectLookups& lookups) const;

  std::uint32_t foundById = 0;  // 0: unknown
  std::uint32_t dateFound = platform::kNoStamp;
  BoundedText<63> contact;
  std::string versionFound;  // at most 32 bytes
  std::string description;
  std::uint32_t reproducedId = 0;
  std::string steps;
  std::string otherHardware;
  std::uint32_t sessionId = NextSessionId();  // never stored; kept by Clone

 private:
  // The name of the stored configuration of kind 2, or "<not set>".
  std::string StoredConfigName(const DefectLookups& lookups) const;

  std::uint16_t configKind_ = kNoConfig;
  std::uint32_t testConfigId_ = 0;
  std::unique_ptr<CTestConfig> customConfig_;
  std::vector<std::unique_ptr<CFileAttachment>> attachments_;
};

}  // namespace qm
