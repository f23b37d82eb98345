// The project's own settings records in the misc table: ProjectSecurity (record 1) and
// ProjectInfo (record 2), read and written in their stored layouts.
//
// misc record 1, ProjectSecurity:
//   u16     256; any other value and the record cannot be read
//   u16     securityMode      0 single-user project, 1 multi-user project
//   string  projectPassword   empty for none, stored as typed
//
// misc record 2, ProjectInfo (the data version, not the file's format version):
//   u16     dataVersion       256 to 355 read; 355 written
//   string  projectName
//   string  description
//   u32     createdAt         from 257; older records: the time of reading
//   u32     reserved          from 257
//   u8      attachmentsInProject   from 341
//   string  attachmentFolder       from 341
//   u16, u16, u32, u32, u8    reserved, from 355
//
// misc record 3, the preferences of a single-user project (a multi-user project keeps
// the same block in each user's record):
//   u16       258
//   88 bytes  the preference block, raw
// A record shorter than 89 bytes is the older form: the first 76 bytes of the block, raw,
// without a version.
#pragma once

#include <array>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "store/bytes.h"

namespace qm {

inline constexpr std::uint32_t kSecurityRecord = 1;
inline constexpr std::uint32_t kInfoRecord = 2;
inline constexpr std::uint32_t kPreferencesRecord = 3;
inline constexpr std::uint32_t kAssignRulesRecord = 9;
// The version of a project's content that this program writes.
inline constexpr std::uint16_t kDataVersion = 355;

struct ProjectSecurity {
  std::uint16_t securityMode = 0;
  std::string projectPassword;

  std::vector<std::uint8_t> Encode() const;
  // Throws ItemError(kItemFailed) for a record whose version is not 256.
  static ProjectSecurity Decode(std::span<const std::uint8_t> record);
};

struct ProjectInfo {
  std::uint16_t dataVersion = kDataVersion;
  std::string projectName;
  std::string description;
  std::uint32_t createdAt = 0;
  bool attachmentsInProject = true;
  std::string attachmentFolder;

  // Written in the newest layout; a createdAt of 0 takes `now`.
  std::vector<std::uint8_t> Encode(std::uint32_t now) const;
  // Reads any layout from 256 up; a record older than 257 takes `now` as its creation.
  // A data version above kDataVersion is read as far as the version, so the opening can
  // refuse it as newer than this program; below 256 throws ItemError(kItemFailed).
  static ProjectInfo Decode(std::span<const std::uint8_t> record, std::uint32_t now);
};

// The saved places and states of a person's windows, kept as stored (values big-endian),
// which the windows read and set as a whole.
using PreferenceBlock = std::array<std::uint8_t, 88>;

// Who a defect goes to by itself, misc record 9, 14 bytes big-endian:
//   u16 1   u16 onAdd   u32 onAddUser   u16 afterWork   u32 afterWorkUser
// When a defect is added: 0 it stays unassigned, 1 it goes to the user who entered it,
// 2 to onAddUser. After a fix, an estimate, a verification or a re-opening: 0 it stays as
// the event leaves it (unassigned), 1 it keeps the assignment it had, 2 it goes to the
// user who entered the defect, 3 to afterWorkUser. A project without the record has 0 and 0.
struct AssignRules {
  std::uint16_t onAdd = 0;
  std::uint32_t onAddUser = 0;
  std::uint16_t afterWork = 0;
  std::uint32_t afterWorkUser = 0;

  std::vector<std::uint8_t> Encode() const;
  // Nothing for a record of another version or size.
  static std::optional<AssignRules> Decode(std::span<const std::uint8_t> record);
  bool operator==(const AssignRules&) const = default;
};

// What this program keeps of a person's (or a single-user project's) own choices in the
// block, in the row at offset 64, which its list windows leave alone and a user's record
// keeps (big-endian u16s):
//   68  double-click opens: 0 the edit window, 1 the view window
//   70  names are shown: 0 "Last, First", 1 "First Last"
//   72  alert: bit 1 plays no sound, bit 2 shows no question
// A block of an older program holds zeros there: edit, "Last, First", sound and question.
struct PersonalSettings {
  bool viewOnDoubleClick = false;
  bool firstNameFirst = false;
  bool playSound = true;
  bool showQuestion = true;

  bool operator==(const PersonalSettings&) const = default;
};
PersonalSettings ReadPersonalSettings(const PreferenceBlock& block);
void WritePersonalSettings(PreferenceBlock& block, const PersonalSettings& settings);

std::vector<std::uint8_t> EncodePreferences(const PreferenceBlock& block);
// Either form; what the record does not hold reads as 0. A record of a version this
// program does not know gives nothing, and the project keeps the defaults.
std::optional<PreferenceBlock> DecodePreferences(std::span<const std::uint8_t> record);

}  // namespace qm
