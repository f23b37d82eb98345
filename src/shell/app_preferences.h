// The preferences of this machine: which project opens at start, the last user, how often
// to look for changes and for Wisp Note files, how mail leaves, and the open windows.
//
// The values are kept in the preference file (platform/preference_file.h), read and written
// in this order. Binary values are in the machine's byte order; a string value holds at
// most its width less one byte.
//
//   name                        stored as  width  default
//   OpenLastFile                binary     4      1      1 open the previous project, 0 ask
//   StrikeClosedDefects         binary     4      1
//   DBCheckTime                 binary     2      2      index into kCheckIntervalSeconds
//   LastOpenFile                string     256    ""
//   AutoLogin                   binary     4      0
//   LastUserName                string     64     ""
//   LastPassword                string     64     ""     in the form of the user record
//   FullPathInTitleBar          binary     4      0
//   WispNoteCheckTime           binary     2      9      index into kCheckIntervalSeconds
//   WispNoteAfterImport         binary     2      1      1 leave, 2 move, 3 delete
//   WispNoteSrcPath             string     256    ""
//   WispNoteDstPath             string     256    ""
//   AckWispNoteSubmitter        binary     4      0
//   AssignWispNoteImportSeqNum  binary     4      1
//   SMTPHost                    string     64     ""
//   EMailReturnAddress          string     64     ""
//   MAPIPassword                string     64     ""     as typed
//   MAPIProfile                 string     64     ""
//   EnableMAPI                  binary     4      0
//   EnableSMTP                  binary     4      0
//   BackgroundMail              binary     4      1
//   PromptToBackupQueues        binary     4      1
//   WindowPos                   binary     any    absent written only when a block exists
//
// The WindowPos block, little-endian: a 2-byte count of entries, then each entry's 4-byte
// window kind, each followed by what that window keeps of its own state. Windows also keep
// their placements here as strings (MainWindowPos, DefectListPos, ...).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/preference_file.h"
#include "session/rights.h"

namespace qm {

// Seconds between two looks for changes, by the index stored in DBCheckTime and
// WispNoteCheckTime; -1 is never.
inline constexpr std::array<int, 10> kCheckIntervalSeconds = {0,   10,  30,   60,   120,
                                                              300, 600, 1800, 3600, -1};

// The stored values, each initialised to its default.
struct AppPreferenceValues {
  std::uint32_t openLastFile = 1;
  std::uint32_t strikeClosedDefects = 1;
  std::uint16_t dbCheckTime = 2;
  std::string lastOpenFile;
  std::uint32_t autoLogin = 0;
  std::string lastUserName;
  std::string lastPassword;
  std::uint32_t fullPathInTitleBar = 0;
  std::uint16_t wispNoteCheckTime = 9;
  std::uint16_t wispNoteAfterImport = 1;
  std::string wispNoteSrcPath;
  std::string wispNoteDstPath;
  std::uint32_t ackWispNoteSubmitter = 0;
  std::uint32_t assignWispNoteImportSeqNum = 1;
  std::string smtpHost;
  std::string emailReturnAddress;
  std::string mapiPassword;
  std::string mapiProfile;
  std::uint32_t enableMapi = 0;
  std::uint32_t enableSmtp = 0;
  std::uint32_t backgroundMail = 1;
  std::uint32_t promptToBackupQueues = 1;
};

// The list windows that the open windows block names, with their value names, what the
// status line says while each opens, and the rights of the commands on its items.
struct ListWindowKind {
  std::uint32_t kind;
  std::string_view valueName;
  std::string_view openingText;
  ItemRights rights;
};
inline constexpr ListWindowKind kDefectListWindow{
    141,
    "DefectListPos",
    "Opening defect list window...",
    {Right::kAddDefects, Right::kViewDefects, Right::kEditDefects, Right::kDeleteDefects,
     Right::kDuplicateDefects}};
inline constexpr ListWindowKind kListWindowKinds[] = {
    kDefectListWindow,
    {142,
     "UserListPos",
     "Opening user list window...",
     {Right::kAddUsers, Right::kViewUsers, Right::kEditUsers, Right::kDeleteUsers,
      Right::kDuplicateUsers}},
    {143,
     "UserGroupListPos",
     "Opening group list window...",
     {Right::kAddUserGroups, Right::kViewUserGroups, Right::kEditUserGroups,
      Right::kDeleteUserGroups, Right::kDuplicateUserGroups}},
    {144,
     "ConfigListPos",
     "Opening test config list window...",
     {Right::kAddTestConfigs, Right::kViewTestConfigs, Right::kEditTestConfigs,
      Right::kDeleteTestConfigs, Right::kDuplicateTestConfigs}},
    {145,
     "ReportListPos",
     "Opening report list window...",
     {Right::kAddReports, Right::kViewReports, Right::kEditReports, Right::kDeleteReports,
      Right::kDuplicateReports}},
    {146,
     "TaskListPos",
     "Opening workbook window...",
     {Right::kAddTasks, Right::kViewTasks, Right::kEditTasks, Right::kDeleteTasks, Right::kNone}},
    {147,
     "FilterListPos",
     "Opening filter list window...",
     {Right::kAddFilters, Right::kViewFilters, Right::kEditFilters, Right::kDeleteFilters,
      Right::kDuplicateFilters}},
    {261,
     "CustomerListPos",
     "Opening customer window...",
     {Right::kAddCustomers, Right::kViewCustomers, Right::kEditCustomers, Right::kDeleteCustomers,
      Right::kDuplicateCustomers}}};

// The open windows block, little-endian: u16 count, then a u32 kind per window.
std::vector<std::uint8_t> EncodeWindowBlock(std::span<const std::uint32_t> kinds);
// The kinds of a block, as far as its bytes reach; the ones this program knows, in order.
std::vector<const ListWindowKind*> DecodeWindowBlock(std::span<const std::uint8_t> block);

// The one set of preferences of the running program. The Options dialog changes the values
// directly and then calls Save; the sender thread reads them without a lock, so they change
// only while no mail is being sent.
class CAppPreferences : public AppPreferenceValues {
 public:
  // `path` is the preference file, platform::PreferenceFile::DefaultPath() in the program.
  explicit CAppPreferences(std::string path) : file_(std::move(path)) {}

  // Reads the values; one that is absent, of the other kind or too wide keeps its default.
  // When the file cannot be read or OpenLastFile cannot be read from it, every value is
  // set to its default and the defaults are written. Answers 1.
  int Load();
  // Writes every value in the order of the table, strings cut to their width less one
  // byte between UTF-8 characters (the values here are cut too), and the window block when
  // there is one. A failure costs only the settings: it stops nothing, and the answer
  // tells the callers who care.
  bool Save();

  void SetLastOpenFile(std::string_view path);
  // 0 the file of `path` exists, 1 no path is set, 2 the path is set but the file is gone.
  int GetLastOpenFile(std::string& path) const;

  void SetLastUser(std::string_view name, std::string_view password);
  void GetLastUser(std::string& name, std::string& password) const;

  // The intervals of DBCheckTime and WispNoteCheckTime in seconds; an index outside the
  // table gives the interval of the value's default.
  int GetDBCheckSeconds() const;
  int GetWispNoteCheckSeconds() const;

  // The open windows block, kept until the next Save.
  void SetWindowBlock(std::span<const std::uint8_t> bytes);
  const std::optional<std::vector<std::uint8_t>>& GetWindowBlock() const { return windowBlock_; }

  // A window's placement string under its own name, not one of the table's; none when the
  // window has not stored one yet. SetPlacement writes the file at once, as a window stores
  // its placement when it closes, after the last Save; it answers whether that worked.
  std::optional<std::string> GetPlacement(std::string_view name) const;
  bool SetPlacement(std::string_view name, std::string_view text);
  // The same for the windows that store their placement as bytes: the list and record
  // windows.
  std::optional<std::vector<std::uint8_t>> GetWindowValue(std::string_view name) const;
  bool SetWindowValue(std::string_view name, std::span<const std::uint8_t> bytes);

 private:
  platform::PreferenceFile file_;
  std::optional<std::vector<std::uint8_t>> windowBlock_;
};

}  // namespace qm
