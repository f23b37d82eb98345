// Reading and writing the machine's preferences through the preference file.
#include "shell/app_preferences.h"

#include <concepts>
#include <cstring>

#include "platform/file.h"
#include "session/payload.h"

namespace qm {
namespace {

// Widths of the string values, in bytes with room for a terminator.
constexpr std::size_t kPathWidth = 256;
constexpr std::size_t kNameWidth = 64;

constexpr std::string_view kWindowPos = "WindowPos";

template <typename... Visitors>
struct Overloaded : Visitors... {
  using Visitors::operator()...;
};
template <typename... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

// Calls visit(name, number) for each binary value, whose width is that of its type, and
// visit(name, text, width) for each string value, in the order of the table.
template <typename Visit>
void ForEachValue(AppPreferenceValues& v, Visit&& visit) {
  visit("OpenLastFile", v.openLastFile);
  visit("StrikeClosedDefects", v.strikeClosedDefects);
  visit("DBCheckTime", v.dbCheckTime);
  visit("LastOpenFile", v.lastOpenFile, kPathWidth);
  visit("AutoLogin", v.autoLogin);
  visit("LastUserName", v.lastUserName, kNameWidth);
  visit("LastPassword", v.lastPassword, kNameWidth);
  visit("FullPathInTitleBar", v.fullPathInTitleBar);
  visit("WispNoteCheckTime", v.wispNoteCheckTime);
  visit("WispNoteAfterImport", v.wispNoteAfterImport);
  visit("WispNoteSrcPath", v.wispNoteSrcPath, kPathWidth);
  visit("WispNoteDstPath", v.wispNoteDstPath, kPathWidth);
  visit("AckWispNoteSubmitter", v.ackWispNoteSubmitter);
  visit("AssignWispNoteImportSeqNum", v.assignWispNoteImportSeqNum);
  visit("SMTPHost", v.smtpHost, kNameWidth);
  visit("EMailReturnAddress", v.emailReturnAddress, kNameWidth);
  visit("MAPIPassword", v.mapiPassword, kNameWidth);
  visit("MAPIProfile", v.mapiProfile, kNameWidth);
  visit("EnableMAPI", v.enableMapi);
  visit("EnableSMTP", v.enableSmtp);
  visit("BackgroundMail", v.backgroundMail);
  visit("PromptToBackupQueues", v.promptToBackupQueues);
}

// A binary value of exactly the number's width, in the machine's byte order.
template <std::unsigned_integral T>
bool ReadNumber(const platform::PreferenceFile& file, std::string_view name, T& number) {
  const auto bytes = file.GetBinary(name);
  if (!bytes || bytes->size() != sizeof(T)) return false;
  std::memcpy(&number, bytes->data(), sizeof(T));
  return true;
}

std::string Cut(std::string_view text, std::size_t width) {
  return std::string(CutToCapacity(text, width - 1));
}

int CheckSeconds(std::uint16_t index, std::uint16_t fallback) {
  return kCheckIntervalSeconds[index < kCheckIntervalSeconds.size() ? index : fallback];
}

}  // namespace

int CAppPreferences::Load() {
  static_cast<AppPreferenceValues&>(*this) = AppPreferenceValues();
  windowBlock_.reset();
  if (file_.Load() != platform::PreferenceFile::LoadResult::kRead ||
      !ReadNumber(file_, "OpenLastFile", openLastFile)) {
    (void)Save();
    return 1;
  }
  const Overloaded read{
      [this](std::string_view name, std::unsigned_integral auto& number) {
        (void)ReadNumber(file_, name, number);
      },
      [this](std::string_view name, std::string& text, std::size_t width) {
        auto stored = file_.GetString(name);
        if (stored && stored->size() < width) text = std::move(*stored);
      },
  };
  ForEachValue(*this, read);
  windowBlock_ = file_.GetBinary(kWindowPos);
  return 1;
}

bool CAppPreferences::Save() {
  const Overloaded write{
      [this](std::string_view name, std::unsigned_integral auto& number) {
        std::uint8_t bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        file_.SetBinary(name, bytes);
      },
      [this](std::string_view name, std::string& text, std::size_t width) {
        text = Cut(text, width);
        file_.SetString(name, text);
      },
  };
  ForEachValue(*this, write);
  if (windowBlock_) file_.SetBinary(kWindowPos, *windowBlock_);
  return file_.Save();
}

void CAppPreferences::SetLastOpenFile(std::string_view path) {
  lastOpenFile = Cut(path, kPathWidth);
}

int CAppPreferences::GetLastOpenFile(std::string& path) const {
  path = lastOpenFile;
  if (path.empty()) return 1;
  return platform::FileExists(path) ? 0 : 2;
}

void CAppPreferences::SetLastUser(std::string_view name, std::string_view password) {
  lastUserName = Cut(name, kNameWidth);
  lastPassword = Cut(password, kNameWidth);
}

void CAppPreferences::GetLastUser(std::string& name, std::string& password) const {
  name = lastUserName;
  password = lastPassword;
}

int CAppPreferences::GetDBCheckSeconds() const {
  return CheckSeconds(dbCheckTime, AppPreferenceValues().dbCheckTime);
}

int CAppPreferences::GetWispNoteCheckSeconds() const {
  return CheckSeconds(wispNoteCheckTime, AppPreferenceValues().wispNoteCheckTime);
}

void CAppPreferences::SetWindowBlock(std::span<const std::uint8_t> bytes) {
  windowBlock_.emplace(bytes.begin(), bytes.end());
}

std::optional<std::string> CAppPreferences::GetPlacement(std::string_view name) const {
  return file_.GetString(name);
}

bool CAppPreferences::SetPlacement(std::string_view name, std::string_view text) {
  file_.SetString(name, text);
  return file_.Save();
}

std::optional<std::vector<std::uint8_t>> CAppPreferences::GetWindowValue(
    std::string_view name) const {
  return file_.GetBinary(name);
}

bool CAppPreferences::SetWindowValue(std::string_view name, std::span<const std::uint8_t> bytes) {
  file_.SetBinary(name, bytes);
  return file_.Save();
}

std::vector<std::uint8_t> EncodeWindowBlock(std::span<const std::uint32_t> kinds) {
  std::vector<std::uint8_t> block;
  const auto count = static_cast<std::uint16_t>(kinds.size());
  block.push_back(static_cast<std::uint8_t>(count));
  block.push_back(static_cast<std::uint8_t>(count >> 8));
  for (const std::uint32_t kind : kinds) {
    for (int b = 0; b < 4; ++b) block.push_back(static_cast<std::uint8_t>(kind >> (8 * b)));
  }
  return block;
}

std::vector<const ListWindowKind*> DecodeWindowBlock(std::span<const std::uint8_t> block) {
  std::vector<const ListWindowKind*> windows;
  if (block.size() < 2) return windows;
  const std::size_t count = block[0] | (block[1] << 8);
  for (std::size_t n = 0; n < count && 2 + 4 * n + 4 <= block.size(); ++n) {
    const std::uint8_t* at = block.data() + 2 + 4 * n;
    const std::uint32_t kind =
        at[0] | (at[1] << 8) | (at[2] << 16) | (static_cast<std::uint32_t>(at[3]) << 24);
    for (const ListWindowKind& known : kListWindowKinds) {
      if (known.kind == kind) windows.push_back(&known);
    }
  }
  return windows;
}

}  // namespace qm
