// The session commands: passwords.
#include "shell/session_commands.h"

#include "people/user.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "shell/app_preferences.h"
#include "shell/record_window.h"

namespace qm {
namespace {

void TellFailure(ui::Ui& ui, DBStatus status) {
  ui.Tell("Cannot complete command. Database error " + std::to_string(static_cast<int>(status)),
          ui::Icon::kError);
}

}  // namespace

std::optional<std::string> CurrentPassword(const CDBDoc& doc) {
  if (doc.store() == nullptr) return std::nullopt;
  if (!doc.multiUser()) return doc.security().projectPassword;
  const auto* user = dynamic_cast<const CUser*>(doc.currentUser());
  if (user == nullptr || !doc.HasRight(Right::kSetOwnPassword)) return std::nullopt;
  return user->GetPassword();
}

bool StorePassword(CDBDoc& doc, const EditMarks* marks, CAppPreferences* preferences,
                   const std::string& password, ui::Ui& ui) {
  if (!CurrentPassword(doc)) return false;
  if (!doc.multiUser()) {
    const DBStatus status = doc.SetProjectPassword(password);
    if (status != DBStatus::kOk) TellFailure(ui, status);
    return status == DBStatus::kOk;
  }
  auto& user = static_cast<CUser&>(*doc.currentUser());
  // A window that edits the record would write the old password back on saving.
  if (marks != nullptr && marks->HolderOf(&user) != nullptr) {
    ui.Tell("Your user record is open in a window. Close it and try again.", ui::Icon::kWarning);
    return false;
  }
  CProjectStore& store = *doc.store();
  DBStatus status = store.LockRecord(kUserTag, user.GetId(), user.GetId());
  if (status == DBStatus::kRecordLocked) {
    ui.Tell("Your user record is in use by another user. Try again later.", ui::Icon::kWarning);
    return false;
  }
  if (status != DBStatus::kOk) {
    TellFailure(ui, status);
    return false;
  }
  const std::string old = user.GetPassword();
  user.SetPassword(password);
  status = doc.GetTable(kUserTag)->SaveItem(user);
  // A lock that cannot be released dies with this client's slot.
  (void)store.UnlockRecord(kUserTag, user.GetId());
  if (status != DBStatus::kOk) {
    user.SetPassword(old);
    TellFailure(ui, status);
    return false;
  }
  if (preferences != nullptr && !preferences->lastUserName.empty() &&
      SameLoginText(preferences->lastUserName, user.GetLogin())) {
    preferences->SetLastUser(user.GetLogin(), password);
    preferences->Save();
  }
  return true;
}

}  // namespace qm
