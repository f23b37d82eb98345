// Logins, the project password and the setting of passwords.
#include "session/login.h"

#include <algorithm>
#include <cctype>

#include "store/project_store.h"

namespace qm {

namespace {
constexpr const char* kLastNotValid =
    "The user name or password you last used for this project file is not valid.";
constexpr const char* kNotValid =
    "Either the user name or password you entered is not valid. Please try again.";
constexpr const char* kElsewhere =
    "That user is already logged in somewhere, please login under a different user name.";
constexpr const char* kPasswordIncorrect = "Password incorrect -- please try again.";
}  // namespace

bool SameLoginText(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

LoginCheck CheckLogin(const ItemTable& users, CProjectStore* store, std::string_view name,
                      std::string_view password, RecordItem** user, const RecordItem* self) {
  if (user == nullptr) return LoginCheck::kNoOut;
  if (name.empty()) return LoginCheck::kNoSuchUser;
  for (std::uint32_t p = 1; p <= users.count(); ++p) {
    RecordItem* item = users.ItemAt(p);
    const auto* account = dynamic_cast<const LoginAccount*>(item);
    if (account == nullptr || item->deleted || !SameLoginText(account->LoginName(), name)) {
      continue;
    }
    if (!SameLoginText(account->LoginPassword(), password)) return LoginCheck::kWrongPassword;
    bool loggedIn = false;
    if (store != nullptr && item != self &&
        store->IsUserLoggedIn(item->GetId(), loggedIn) == DBStatus::kOk && loggedIn) {
      return LoginCheck::kLoggedInElsewhere;
    }
    *user = item;
    return LoginCheck::kFound;
  }
  return LoginCheck::kNoSuchUser;
}

LoginSession::LoginSession(ui::Ui& ui, CProjectStore& store, const ItemTable& users,
                           const ItemTable& groups, std::string path)
    : ui_(ui), store_(store), users_(users), groups_(groups), path_(std::move(path)) {}

RecordItem* LoginSession::AskUntilFound() {
  const std::string text = "Please enter your user name and password for the file: " + path_;
  for (;;) {
    // Each try starts with both fields empty.
    const std::optional<ui::LoginEntry> entry = ui_.AskLogin(text, {});
    if (!entry) return nullptr;
    RecordItem* user = nullptr;
    switch (CheckLogin(users_, &store_, entry->name, entry->password, &user, current_)) {
      case LoginCheck::kFound:
        return user;
      case LoginCheck::kLoggedInElsewhere:
        ui_.Tell(kElsewhere, ui::Icon::kWarning);
        break;
      default:
        ui_.Tell(kNotValid, ui::Icon::kWarning);
    }
  }
}

int LoginSession::LogIn(const std::optional<ui::LoginEntry>& given) {
  RecordItem* user = nullptr;
  if (given && !given->name.empty()) {
    const LoginCheck check =
        CheckLogin(users_, &store_, given->name, given->password, &user, current_);
    if (check == LoginCheck::kLoggedInElsewhere) {
      // The name and password are right: the person is told the true reason, and may come
      // in under another name.
      ui_.Tell(kElsewhere, ui::Icon::kWarning);
      user = nullptr;
    } else if (check != LoginCheck::kFound) {
      ui_.Tell(kLastNotValid, ui::Icon::kWarning);
      if (check != LoginCheck::kNoSuchUser) return -1;
      user = nullptr;
    }
  }
  if (user == nullptr) user = AskUntilFound();
  if (user == nullptr) return -1;
  if (user == current_) return 1;
  Become(*user);
  return 0;
}

void LoginSession::LogInAs(RecordItem& user) { Become(user); }

void LoginSession::Become(RecordItem& user) {
  if (current_ != nullptr) (void)store_.LogoutUser(current_->GetId());
  current_ = &user;
  // A full user block (1029) or a slot taken in the same moment (1020) leaves the user
  // without a slot; the check before has tested what matters.
  (void)store_.LoginUser(user.GetId());
  const auto* account = dynamic_cast<const LoginAccount*>(&user);
  access_.LogIn(user,
                dynamic_cast<const RightsGroup*>(
                    account != nullptr ? groups_.ItemById(account->LoginGroupId()) : nullptr));
}

bool CAccess::IsAllowed(std::uint32_t right) const {
  if (right == 0) return true;
  if (user_ == nullptr) return loginState_ == 0;
  return right <= kRightCount && rights_[right - 1];
}

void CAccess::LogIn(const RecordItem& user, const RightsGroup* group) {
  user_ = &user;
  rights_.fill(true);
  if (group == nullptr) return;
  for (std::uint32_t right = 1; right <= kRightCount; ++right) {
    if (group->DeniesRight(right)) rights_[right - 1] = false;
  }
}

int CheckProjectPassword(ui::Ui& ui, const std::string& path, std::string_view password) {
  if (password.empty()) return 0;
  const std::string text =
      "The file " + path + " is password protected. Please enter the password below.";
  for (;;) {
    const std::optional<std::string> typed = ui.AskPassword(text);
    if (!typed) return -1;
    if (SameLoginText(*typed, password)) return 0;
    ui.Tell(kPasswordIncorrect, ui::Icon::kWarning);
  }
}

PasswordChange::PasswordChange(std::string oldPassword)
    : old_(std::move(oldPassword)), stage_(old_.empty() ? 2 : 1) {}

std::string_view PasswordChange::prompt() const {
  return stage_ == 1 ? kOldPrompt : (stage_ == 2 ? kNewPrompt : kRetypePrompt);
}

std::optional<std::string> PasswordChange::Submit(std::string_view typed) {
  typed = typed.substr(0, kMaxLength);
  switch (stage_) {
    case 1:
      if (!SameLoginText(typed, old_)) return std::string(kPasswordIncorrect);
      stage_ = 2;
      return std::nullopt;
    case 2:
      if (typed.empty()) {
        result_.clear();
        done_ = true;
        return std::nullopt;
      }
      first_ = typed;
      stage_ = 3;
      return std::nullopt;
    default:
      if (typed == first_) {
        result_ = first_;
        done_ = true;
        return std::nullopt;
      }
      stage_ = 2;
      return std::string("The two passwords you have entered do not match -- please try again.");
  }
}

}  // namespace qm
