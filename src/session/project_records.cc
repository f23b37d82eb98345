// Reading and writing the project's security and information records.
#include "session/project_records.h"

#include <algorithm>

#include "session/item_error.h"
#include "session/payload.h"

namespace qm {

namespace {
constexpr std::uint16_t kSecurityVersion = 256;
constexpr std::uint16_t kOldestDataVersion = 256;
constexpr std::uint16_t kPreferencesVersion = 258;
// The older preference record: the block's first 76 bytes, nothing else.
constexpr std::size_t kOldPreferencesRun = 76;
constexpr std::size_t kNewPreferencesSize = 89;
}  // namespace

std::vector<std::uint8_t> ProjectSecurity::Encode() const {
  CHandleFile file;
  PayloadWriter out(file);
  out.U16(kSecurityVersion);
  out.U16(securityMode);
  out.String(projectPassword);
  return file.Detach();
}

ProjectSecurity ProjectSecurity::Decode(std::span<const std::uint8_t> record) {
  PayloadReader in(record);
  (void)ReadVersion(in, kSecurityVersion, kSecurityVersion);
  ProjectSecurity s;
  in.U16(s.securityMode);
  in.String(s.projectPassword, kStringCapacity);
  return s;
}

std::vector<std::uint8_t> ProjectInfo::Encode(std::uint32_t now) const {
  CHandleFile file;
  PayloadWriter out(file);
  out.U16(kDataVersion);
  out.String(projectName);
  out.String(description);
  out.Stamp(createdAt == 0 ? now : createdAt);
  out.U32(0);
  out.U8(attachmentsInProject ? 1 : 0);
  out.String(attachmentFolder);
  out.U16(0);
  out.U16(0);
  out.U32(0);
  out.U32(0);
  out.U8(0);
  return file.Detach();
}

ProjectInfo ProjectInfo::Decode(std::span<const std::uint8_t> record, std::uint32_t now) {
  PayloadReader in(record);
  ProjectInfo info;
  if (!in.U16(info.dataVersion) || info.dataVersion < kOldestDataVersion) {
    throw ItemError(kItemFailed);
  }
  if (info.dataVersion > kDataVersion) return info;
  in.String(info.projectName, kStringCapacity);
  in.String(info.description, kStringCapacity);
  info.createdAt = now;
  if (info.dataVersion >= 257) {
    std::uint32_t reserved = 0;
    in.Stamp(info.createdAt);
    in.U32(reserved);
  }
  if (info.dataVersion >= 341) {
    in.U8(info.attachmentsInProject);
    in.String(info.attachmentFolder, kStringCapacity);
  }
  return info;
}

std::vector<std::uint8_t> AssignRules::Encode() const {
  std::vector<std::uint8_t> out(14);
  BeWriter w(out.data());
  w.U16(1);
  w.U16(onAdd);
  w.U32(onAddUser);
  w.U16(afterWork);
  w.U32(afterWorkUser);
  return out;
}

std::optional<AssignRules> AssignRules::Decode(std::span<const std::uint8_t> record) {
  if (record.size() != 14) return std::nullopt;
  BeReader r(record.data());
  if (r.U16() != 1) return std::nullopt;
  AssignRules rules;
  rules.onAdd = r.U16();
  rules.onAddUser = r.U32();
  rules.afterWork = r.U16();
  rules.afterWorkUser = r.U32();
  return rules;
}

namespace {

std::uint16_t BlockWord(const PreferenceBlock& block, std::size_t at) {
  return static_cast<std::uint16_t>((block[at] << 8) | block[at + 1]);
}

void PutBlockWord(PreferenceBlock& block, std::size_t at, std::uint16_t value) {
  block[at] = static_cast<std::uint8_t>(value >> 8);
  block[at + 1] = static_cast<std::uint8_t>(value);
}

}  // namespace

PersonalSettings ReadPersonalSettings(const PreferenceBlock& block) {
  const std::uint16_t alert = BlockWord(block, 72);
  return {BlockWord(block, 68) == 1, BlockWord(block, 70) == 1, (alert & 1) == 0, (alert & 2) == 0};
}

void WritePersonalSettings(PreferenceBlock& block, const PersonalSettings& settings) {
  PutBlockWord(block, 68, settings.viewOnDoubleClick ? 1 : 0);
  PutBlockWord(block, 70, settings.firstNameFirst ? 1 : 0);
  PutBlockWord(
      block, 72,
      static_cast<std::uint16_t>((settings.playSound ? 0 : 1) | (settings.showQuestion ? 0 : 2)));
}

std::vector<std::uint8_t> EncodePreferences(const PreferenceBlock& block) {
  CHandleFile file;
  PayloadWriter out(file);
  out.U16(kPreferencesVersion);
  out.Raw(block);
  return file.Detach();
}

std::optional<PreferenceBlock> DecodePreferences(std::span<const std::uint8_t> record) {
  PreferenceBlock block{};
  if (record.size() < kNewPreferencesSize) {
    const std::size_t n = std::min(record.size(), kOldPreferencesRun);
    std::copy_n(record.begin(), n, block.begin());
    return block;
  }
  const std::uint16_t version = static_cast<std::uint16_t>(record[0] << 8 | record[1]);
  if (version != kPreferencesVersion) return std::nullopt;
  const std::size_t n = std::min(record.size() - 2, block.size());
  std::copy_n(record.begin() + 2, n, block.begin());
  return block;
}

}  // namespace qm
