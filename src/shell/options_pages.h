// The Options dialog's logic: which pages it shows, the fields of each page as the person
// edits them, and what OK writes, in its order. The window program binds widgets to it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "session/project_records.h"
#include "shell/app_preferences.h"

namespace qm {

class CDBDoc;

// "Check multi-user project file every" offers the intervals from index 1 on; the combo's
// position plus 1 is the stored index.
inline constexpr std::array<std::string_view, 8> kCheckIntervalTexts = {
    "10 seconds", "30 seconds", "1 minute",   "2 minutes",
    "5 minutes",  "10 minutes", "30 minutes", "1 hour"};

// The "Send me mail when..." choices of the User page, with the bit each sets in the user's
// notification flags.
struct NotifyChoice {
  std::uint32_t bit;
  std::string_view label;
};
inline constexpr std::array<NotifyChoice, 5> kNotifyChoices = {{
    {1, "Defects are assigned to me"},
    {2, "Any defect changes"},
    {4, "New defects are added"},
    {8, "Don't send me mail if I change or add a defect"},
    {16, "Only tell me about new or changed defects that are assigned to me"},
}};

class OptionsDialog {
 public:
  // The pages this program has, in the dialog's order: "General" always, "User" in a
  // multi-user project with someone logged in, "Project" in a single-user project, "Assign"
  // in a project whose user may change its settings (right 28), or a single-user one.
  // `doc` may be null, with no project open.
  OptionsDialog(CAppPreferences& preferences, CDBDoc* doc);

  const std::vector<std::string_view>& pages() const { return pages_; }
  bool HasPage(std::string_view title) const;

  // General: "Open previous file at startup" (else "Show "File Open" dialog at startup"),
  // "Automatically log in last user", "Gray out closed defects", "Check multi-user project
  // file every" (a position in kCheckIntervalTexts), "Show full path to project file in
  // title bar".
  bool openPreviousFile;
  bool autoLogin;
  bool grayClosed;
  int checkInterval;
  bool fullPath;
  // User: "Notification Options:" ("Play a sound", "Display a dialog box") and the bits of
  // kNotifyChoices.
  bool playSound = true;
  bool showQuestion = true;
  std::uint32_t notifyFlags = 0;
  // User and Project: "Double-clicking on items..." opens the view window rather than the
  // edit window; "Display names as..." "First Last" rather than "Last, First".
  bool viewOnDoubleClick = false;
  bool firstNameFirst = false;
  // Assign: "When adding a defect..." and "After fixing, estimating, verifying, or
  // re-opening a defect...", each a choice and the user of its last choice.
  AssignRules assign;

  // OK: the General values; the user logged in as the last user when AutoLogin was just
  // turned on; the user's values, saved at once; the preferences written; then, with a
  // project open, its schedule taken again. Answers whether "Gray out closed defects"
  // changed, so that the lists are drawn again.
  bool Apply();

 private:
  CAppPreferences& preferences_;
  CDBDoc* doc_;
  std::vector<std::string_view> pages_;
};

}  // namespace qm
