// Logins against the users of a project file: the dialog asked until a user is found, the
// rights of the group, and the change of a password. The checks of a name and password
// through the opening of a project are in the project's tests.
#include "session/login.h"

#include <gtest/gtest.h>

#include "people/user.h"
#include "people/user_group.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

class Login : public ::testing::Test {
 protected:
  void SetUp() override {
    path = dir.File("p.qmk");
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(MakeTag("user"), ""), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(MakeTag("ugrp"), ""), DBStatus::kOk);
    auto group = std::make_unique<CUserGroup>();
    group->name = "Testers";
    group->SetCommandDisabled(4, true);
    std::unique_ptr<RecordItem> g = std::move(group);
    ASSERT_EQ(groups.AddItem(g), DBStatus::kOk);
    tess = AddUser("tess", "Secret", 1);
  }
  CUser* AddUser(const char* login, const char* password, std::uint32_t group) {
    auto user = std::make_unique<CUser>();
    user->SetLastName(login);
    user->SetLogin(login);
    user->SetPassword(password);
    user->SetGroupId(group);
    CUser* raw = user.get();
    std::unique_ptr<RecordItem> item = std::move(user);
    EXPECT_EQ(users.AddItem(item), DBStatus::kOk);
    return raw;
  }

  TempDir dir;
  ScriptedUi ui;
  CProjectStore store{ui};
  CUserTable users{&store, ui};
  CUserGroupTable groups{&store, ui};
  std::string path;
  CUser* tess = nullptr;
};

using Strings = std::vector<std::string>;
const std::string kLastNotValid =
    "The user name or password you last used for this project file is not valid.";
const std::string kNotValid =
    "Either the user name or password you entered is not valid. Please try again.";
const std::string kElsewhere =
    "That user is already logged in somewhere, please login under a different user name.";

// A given login that names nobody is told of and the dialog asked, until a user is found: a
// deleted user is none, names and passwords compare without regard to case. The rights are
// nothing before a login, then what the group allows; 0 always.
TEST_F(Login, TheDialogAsksUntilAUserIsFoundWhoGetsTheRightsOfTheGroup) {
  AddUser("gone", "x", 1)->deleted = true;
  LoginSession session(ui, store, users, groups, path);
  EXPECT_FALSE(session.HasRight(3)) << "nobody logged in yet";
  EXPECT_TRUE(session.HasRight(0));
  ui.ScriptLogin(ui::LoginEntry{"gone", "x"});
  ui.ScriptLogin(ui::LoginEntry{"tess", "nope"});
  ui.ScriptLogin(ui::LoginEntry{"TESS", "secret"});
  EXPECT_EQ(session.LogIn(ui::LoginEntry{"nobody", "pw"}), 0);
  EXPECT_EQ(ui.Texts(), (Strings{kLastNotValid, kNotValid, kNotValid}));
  EXPECT_EQ(ui.loginTexts.front(),
            "Please enter your user name and password for the file: " + path);
  EXPECT_EQ(session.currentUser(), tess);
  EXPECT_EQ(session.access().user(), tess);
  EXPECT_FALSE(session.HasRight(4)) << "the group denies it";
  EXPECT_TRUE(session.HasRight(67));
  EXPECT_FALSE(session.HasRight(68));
  EXPECT_EQ(session.LogIn(ui::LoginEntry{"tess", "Secret"}), 1) << "the same user again";

  // A given login with a wrong password ends without the dialog, as does a cancel.
  ui.shown.clear();
  LoginSession second(ui, store, users, groups, path);
  EXPECT_EQ(second.LogIn(ui::LoginEntry{"tess", "wrong"}), -1);
  EXPECT_EQ(ui.Texts(), Strings{kLastNotValid});
  EXPECT_EQ(ui.loginTexts.size(), 3u) << "no dialog";
  ui.ScriptLogin(std::nullopt);
  EXPECT_EQ(second.LogIn(std::nullopt), -1);

  // Where logins are not asked for, every right is there; a user without a group keeps all.
  EXPECT_TRUE(CAccess(false).IsAllowed(4));
  CAccess alone(true);
  alone.LogIn(*AddUser("loner", "", 99), nullptr);
  EXPECT_TRUE(alone.IsAllowed(4));
}

// A user that another process has logged in is refused for that reason, given or typed,
// and the dialog offers another name. A crashed client's slot is cleared by the refresh.
TEST_F(Login, AUserLoggedInElsewhereIsRefusedForWhatItIs) {
  CUser* admin = AddUser("admin", "", 1);
  RecordItem* found = nullptr;
  const std::string file = path;
  const std::uint32_t tessId = tess->GetId();
  Child other([file, tessId](Child::Channel& c) {
    ScriptedUi childUi;
    CProjectStore s(childUi);
    if (s.Open(file) != DBStatus::kOk || s.LoginUser(tessId) != DBStatus::kOk) return 1;
    c.Send("in");
    c.Receive();
    return 0;
  });
  ASSERT_EQ(other.Receive(), "in");
  LoginSession session(ui, store, users, groups, path);
  ui.ScriptLogin(ui::LoginEntry{"tess", "Secret"});
  ui.ScriptLogin(ui::LoginEntry{"admin", ""});
  EXPECT_EQ(session.LogIn(ui::LoginEntry{"tess", "Secret"}), 0);
  EXPECT_EQ(ui.Texts(), (Strings{kElsewhere, kElsewhere}));
  EXPECT_EQ(session.currentUser(), admin);
  other.Kill();
  EXPECT_EQ(CheckLogin(users, &store, "tess", "Secret", &found), LoginCheck::kFound);
}

TEST(PasswordChange, OldThenNewTwice) {
  PasswordChange change("old");
  EXPECT_EQ(change.prompt(), "Please type the old password.");
  EXPECT_EQ(change.Submit("wrong"), "Password incorrect -- please try again.");
  EXPECT_EQ(change.Submit("OLD"), std::nullopt);
  EXPECT_EQ(change.prompt(), "Please type the new password.");
  EXPECT_EQ(change.Submit("first"), std::nullopt);
  EXPECT_EQ(change.prompt(), "Retype the new password to verify.");
  EXPECT_EQ(change.Submit("other"),
            "The two passwords you have entered do not match -- please try again.");
  EXPECT_EQ(change.Submit(std::string(40, 'p')), std::nullopt);
  EXPECT_EQ(change.Submit(std::string(32, 'p')), std::nullopt);
  EXPECT_TRUE(change.done());
  EXPECT_EQ(change.result(), std::string(32, 'p')) << "at most 32 characters";

  PasswordChange none("");
  EXPECT_EQ(none.stage(), 2);
  EXPECT_EQ(none.Submit(""), std::nullopt);
  EXPECT_TRUE(none.done()) << "an empty new password ends at once, removing it";
  EXPECT_EQ(none.result(), "");
}

}  // namespace
}  // namespace qm::test
