// The Options dialog's pages and the order in which OK writes them.
#include "shell/options_pages.h"

#include <algorithm>

#include "people/user.h"
#include "session/db_doc.h"
#include "session/login.h"

namespace qm {
namespace {

CUser* LoggedInUser(CDBDoc* doc) {
  return doc != nullptr && doc->multiUser() ? dynamic_cast<CUser*>(doc->currentUser()) : nullptr;
}

}  // namespace

OptionsDialog::OptionsDialog(CAppPreferences& preferences, CDBDoc* doc)
    : openPreviousFile(preferences.openLastFile != 0),
      autoLogin(preferences.autoLogin != 0),
      grayClosed(preferences.strikeClosedDefects != 0),
      // Index 0 (no wait) is not offered; it shows as the first entry.
      checkInterval(std::clamp(static_cast<int>(preferences.dbCheckTime) - 1, 0,
                               static_cast<int>(kCheckIntervalTexts.size()) - 1)),
      fullPath(preferences.fullPathInTitleBar != 0),
      preferences_(preferences),
      doc_(doc) {
  pages_.push_back("General");
  if (const CUser* user = LoggedInUser(doc)) {
    pages_.push_back("User");
    notifyFlags = user->GetNotifyFlags();
  } else if (doc != nullptr && !doc->multiUser()) {
    pages_.push_back("Project");
  }
  if (doc != nullptr && (!doc->multiUser() || doc->HasRight(Right::kChangeProjectPrefs))) {
    pages_.push_back("Assign");
    assign = doc->assignRules();
  }
  if (HasPage("User") || HasPage("Project")) {
    const PersonalSettings settings = ReadPersonalSettings(doc->preferences());
    playSound = settings.playSound;
    showQuestion = settings.showQuestion;
    viewOnDoubleClick = settings.viewOnDoubleClick;
    firstNameFirst = settings.firstNameFirst;
  }
}

bool OptionsDialog::HasPage(std::string_view title) const {
  return std::find(pages_.begin(), pages_.end(), title) != pages_.end();
}

bool OptionsDialog::Apply() {
  const bool wasAutoLogin = preferences_.autoLogin != 0;
  const bool grayChanged = (preferences_.strikeClosedDefects != 0) != grayClosed;
  preferences_.openLastFile = openPreviousFile ? 1 : 0;
  preferences_.autoLogin = autoLogin ? 1 : 0;
  preferences_.strikeClosedDefects = grayClosed ? 1 : 0;
  preferences_.dbCheckTime = static_cast<std::uint16_t>(checkInterval + 1);
  preferences_.fullPathInTitleBar = fullPath ? 1 : 0;
  CUser* user = LoggedInUser(doc_);
  if (user != nullptr && autoLogin && !wasAutoLogin) {
    preferences_.SetLastUser(user->LoginName(), user->LoginPassword());
  }
  if (HasPage("User") || HasPage("Project")) {
    // The user's record, or the single-user project's settings; one that cannot be
    // written keeps the choices in memory for this session, and the store has told why.
    if (user != nullptr) user->SetNotifyFlags(notifyFlags);
    PreferenceBlock block = doc_->preferences();
    WritePersonalSettings(block,
                          {viewOnDoubleClick, firstNameFirst, HasPage("User") ? playSound : true,
                           HasPage("User") ? showQuestion : true});
    (void)doc_->SetPreferences(block);
  }
  if (HasPage("Assign") && assign != doc_->assignRules()) (void)doc_->SetAssignRules(assign);
  preferences_.Save();
  if (doc_ != nullptr) doc_->ApplySchedule();
  return grayChanged;
}

}  // namespace qm
