// Who is working with the project: the login of a multi-user project against its users,
// the password of a single-user project, the rights a session gets from the user's group,
// and the dialog that sets a password in three stages.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "session/item_table.h"
#include "session/project_records.h"
#include "session/rights.h"
#include "ui/ui.h"

namespace qm {

// A user as the login sees one; the users' item class provides it.
class LoginAccount {
 public:
  virtual ~LoginAccount() = default;
  virtual std::string_view LoginName() const = 0;
  virtual std::string_view LoginPassword() const = 0;
  virtual std::uint32_t LoginGroupId() const = 0;
  // The person's window places and states, which the session takes over at login.
  virtual const PreferenceBlock& Preferences() const = 0;
  virtual void SetPreferences(const PreferenceBlock& block) = 0;
  // The time the person last left the project (or came to it).
  virtual void SetLastLogin(std::uint32_t stamp) = 0;
};

// A user group as the rights of its members see it.
class RightsGroup {
 public:
  virtual ~RightsGroup() = default;
  // Whether the group denies right n, from 1 to kRightCount.
  virtual bool DeniesRight(std::uint32_t right) const = 0;
};

// The answers of CheckLogin.
enum class LoginCheck {
  kFound = 0,
  kNoOut = 1,       // no place to put the user
  kNoSuchUser = 2,  // or an empty name
  kWrongPassword = 3,
  kLoggedInElsewhere = 4,
};

// Names and passwords compare without regard to case.
bool SameLoginText(std::string_view a, std::string_view b);

// Finds the user of a login: deleted users are skipped, the first matching name is the
// only candidate. With a store, a user who holds a slot is refused, unless it is `self`,
// the user of this very session.
LoginCheck CheckLogin(const ItemTable& users, CProjectStore* store, std::string_view name,
                      std::string_view password, RecordItem** user,
                      const RecordItem* self = nullptr);

// The rights of a session: whether the project asks for logins, who is logged in, and
// what that user's group allows. Every command asks it by the number of its right.
class CAccess {
 public:
  explicit CAccess(bool asksForLogins) : loginState_(asksForLogins ? 1 : 0) { rights_.fill(true); }

  // Right n, 1 to kRightCount; 0 stands for a command that needs no right and is always
  // allowed. With a user logged in, what the group allows; before anyone is, everything in
  // a project without logins and nothing in one that asks for them.
  bool IsAllowed(std::uint32_t right) const;
  // Every right, less those the group denies; a user without a group keeps them all.
  void LogIn(const RecordItem& user, const RightsGroup* group);

  const RecordItem* user() const { return user_; }
  std::uint16_t loginState() const { return loginState_; }

 private:
  std::uint16_t loginState_;
  const RecordItem* user_ = nullptr;
  std::array<bool, kRightCount> rights_{};
};

// The login state of an open multi-user project: the current user and the rights.
class LoginSession {
 public:
  LoginSession(ui::Ui& ui, CProjectStore& store, const ItemTable& users, const ItemTable& groups,
               std::string path);

  // Logs a user in, with the name and password given or else through the login dialog.
  // 0 logged in; 1 the user who was already logged in; -1 cancelled or refused.
  int LogIn(const std::optional<ui::LoginEntry>& given);
  // Logs in a user the program has chosen, as the administrator of a new project.
  void LogInAs(RecordItem& user);

  RecordItem* currentUser() const { return current_; }
  const CAccess& access() const { return access_; }
  // Right n, from 1 to kRightCount.
  bool HasRight(std::uint32_t right) const { return access_.IsAllowed(right); }

 private:
  // The login dialog until a user is found or the person cancels.
  RecordItem* AskUntilFound();
  // Makes `user` the current user, in a slot of the file, with the rights of the group.
  void Become(RecordItem& user);

  ui::Ui& ui_;
  CProjectStore& store_;
  const ItemTable& users_;
  const ItemTable& groups_;
  std::string path_;
  RecordItem* current_ = nullptr;
  CAccess access_{true};
};

// The password of a single-user project: 0 when there is none or it was typed right, -1
// when the person cancelled.
int CheckProjectPassword(ui::Ui& ui, const std::string& path, std::string_view password);

// The dialog that sets a password: the old one first if there is one, then the new one
// twice. An empty new password removes the password.
class PasswordChange {
 public:
  static constexpr std::string_view kOldPrompt = "Please type the old password.";
  static constexpr std::string_view kNewPrompt = "Please type the new password.";
  static constexpr std::string_view kRetypePrompt = "Retype the new password to verify.";
  static constexpr std::size_t kMaxLength = 32;

  explicit PasswordChange(std::string oldPassword);

  std::string_view prompt() const;
  int stage() const { return stage_; }
  // OK with the field's text. The message to show, or nothing; once done() the new
  // password is in result().
  std::optional<std::string> Submit(std::string_view typed);
  bool done() const { return done_; }
  const std::string& result() const { return result_; }

 private:
  std::string old_;
  std::string first_;
  std::string result_;
  int stage_;
  bool done_ = false;
};

}  // namespace qm
