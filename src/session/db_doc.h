// CDBDoc, the open project: its store, one loaded table per kind of item, the settings
// records and the login. It is made empty, opened or created once, and closed; another
// file means another CDBDoc.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"
#include "session/login.h"
#include "session/numbering.h"
#include "session/project_host.h"
#include "session/project_kinds.h"
#include "session/project_records.h"
#include "session/table_tags.h"
#include "store/blocks.h"
#include "store/project_store.h"
#include "ui/ui.h"

namespace qm {

// The tables a new project is made with, in the order of their making.
inline constexpr std::array<Tag, 19> kProjectTables{
    MakeTag("misc"), MakeTag("dfct"), MakeTag("scfg"), MakeTag("user"), MakeTag("ugrp"),
    MakeTag("dflt"), MakeTag("rprt"), MakeTag("type"), MakeTag("reso"), MakeTag("prio"),
    MakeTag("prod"), MakeTag("stat"), MakeTag("comp"), MakeTag("rpro"), MakeTag("atch"),
    MakeTag("task"), MakeTag("sevr"), MakeTag("usta"), MakeTag("etmp")};

// The two further counters of misc: attachment files and references.
inline constexpr std::uint32_t kAttachmentCounterRecord = 5;
inline constexpr std::uint32_t kReferenceCounterRecord = 6;

// Why a new project file is not made over a file that exists.
std::string ExistingFileText(const std::string& path);
// Why a project file is not made anew: other copies of the program have it open, by the
// users named when they are known.
std::string OpenElsewhereText(const std::string& path, const std::vector<std::string>& users);

class CDBDoc : public ProjectCounters {
 public:
  CDBDoc(ui::Ui& ui, const ProjectKinds& kinds, ProjectHost& host,
         platform::FileSystem& files = platform::FileSystem::Real(),
         platform::Clock& clock = platform::Clock::System());
  ~CDBDoc() override;
  CDBDoc(const CDBDoc&) = delete;
  CDBDoc& operator=(const CDBDoc&) = delete;

  // Opens the project at `path`, loads every table and logs in, with `login` when given
  // (quillmark-cli's options, the remembered login) and otherwise through the dialog.
  // 1 on success; 0 otherwise, after the person has been told why.
  int OpenProject(const std::string& path, const std::optional<ui::LoginEntry>& login = {});
  // Whether a new project may be made at `path`: yes where no file is; where one is,
  // never while another copy of the program has it open (the person is told who has),
  // and otherwise only when the person agrees that the project there is lost with all its
  // defects. For a CDBDoc with no project open.
  bool MayMakeProjectAt(const std::string& path);
  // Makes a project at `path`, with its tables, value lists, counters and options; a
  // multi-user project gets its administrator, logged in. A file there is replaced,
  // unless another copy has it open (1016). Answers 1; a failure of the store is thrown
  // as StoreError.
  int NewProject(const std::string& path, bool multiUser);
  // Logs the user out and puts the project away. Safe to call when nothing is open.
  void CloseProject();
  // Copies everything but defects and attachments to a new project at `path`, which must
  // not exist (the person is told so, and the answer is 2), and resets the counters of
  // misc 5, 6 and 7.
  [[nodiscard]] DBStatus SaveProjectTemplate(const std::string& path);

  // The loaded table of `tag`, or null.
  ItemTable* GetTable(Tag tag) const;
  // The stored value of a counter record plus 1, which becomes the stored value.
  [[nodiscard]] DBStatus NextCounter(Tag tag, std::uint32_t id, std::uint32_t& value);
  [[nodiscard]] DBStatus SetCounter(Tag tag, std::uint32_t id, std::uint32_t value) override;

  // "&Log In User...": another user takes over the open project. 0 logged in; 1 the same
  // user; -1 cancelled, and the former user stays.
  int LogInUser(const std::optional<ui::LoginEntry>& login = {});
  // The display names of the users logged in to the file, one row per slot; an id that
  // no user has gives an empty row. Empty when the store cannot say.
  std::vector<std::string> ActiveUserNames();
  // Sets the project password (empty: none) and writes misc record 1.
  [[nodiscard]] DBStatus SetProjectPassword(const std::string& password);
  // Writes misc record 2 from info().
  [[nodiscard]] DBStatus WriteProjectInfo();

  CProjectStore* store() const { return store_.get(); }
  // Tells the other clients of a multi-user file that a record changed (kind 1002), went
  // (1003) or came (1004). Nothing goes out unless a user is logged in, who is the sender.
  // A notice that does not go out costs the others a refresh, not the change itself.
  void PostChangeNotice(std::uint32_t kind, Tag table, std::uint32_t id);
  // Where the project speaks to the person.
  ui::Ui& userInterface() const { return ui_; }
  const std::string& path() const { return path_; }
  bool multiUser() const { return security_.securityMode != 0; }
  const ProjectSecurity& security() const { return security_; }
  ProjectInfo& info() { return info_; }
  ProjectOptions& options() { return options_; }
  // The user of this session; null in a single-user project.
  RecordItem* currentUser() const { return login_ ? login_->currentUser() : nullptr; }
  std::uint32_t currentUserId() const;
  // The rights of this session; every right in a single-user project.
  const CAccess& access() const;
  // Whether the user's group allows the command of `right`; kNone is always allowed.
  bool HasRight(Right right) const { return access().IsAllowed(RightNumber(right)); }
  // The current user's window places and states, or the project's when single-user.
  const PreferenceBlock& preferences() const { return preferences_; }
  // Who defects go to by themselves; SetAssignRules stores them in misc record 9.
  const AssignRules& assignRules() const { return assignRules_; }
  bool SetAssignRules(const AssignRules& rules);
  // Stores a new block where it belongs: in the user's record, or in the project's misc
  // record 3 when it is single-user. False after a failure of the store.
  bool SetPreferences(const PreferenceBlock& block);
  // The table directory as of the last look, to see which tables grew.
  const TableDirectory& directorySnapshot() const { return snapshot_; }
  // When the file is next checked for other users' changes; kNoStamp for never.
  std::uint32_t nextDatabaseCheck() const { return nextDatabaseCheck_; }

  // The work of the program's one-second tick: the check for other users' changes once
  // its time has passed. Does nothing while it already runs, as when a dialog it opened
  // lets the tick through, and before the opening is done.
  void IdleWork();
  // Looks at a multi-user file for other users' changes: the notices they posted, the
  // records they added to the tables whose list windows are open, and the options; then
  // sets the next check. Answers whether the user logged in was alerted.
  bool CheckDatabase();
  // Takes the check interval again, as after the Options dialog; the next tick checks.
  void ApplySchedule();

 private:
  // The steps of an opening after the store is open; failures are thrown.
  void LoadProject(const std::optional<ui::LoginEntry>& login, bool altHeld);
  // What a recovery of the file answers while this program has none.
  void OfferNoRecovery();
  void MakeTables();
  // Loads the table of `tag` when this program knows its items.
  void LoadIfKnown(Tag tag, bool sort);
  // Loads a value list, or adds it with its default names when the file lacks it.
  void LoadOrAddValueList(Tag tag);
  void AddValueList(Tag tag);
  // Adds an empty table under a write access of its own.
  void AddTableNow(Tag tag);
  void FillValueList(Tag tag);
  void LogInAtOpening(const std::optional<ui::LoginEntry>& login);
  // The misc counters and options as a current project has them.
  void SettleCounters();
  void RewriteDefects();
  void TakeSnapshot();
  void ScheduleCheck();
  // The parts of CheckDatabase; each answers whether the user is to be alerted.
  bool ReadNotices();
  bool ActOnNotice(const Notice& notice);
  bool LoadNewRecords(Tag tag, std::uint32_t from, std::uint32_t to);
  // Marks an item of another user's and answers whether it is assigned to this one.
  bool MarkForUser(RecordItem& item);
  // Writes a misc record that may not exist yet, replacing what is there.
  void PutMisc(std::uint32_t id, std::span<const std::uint8_t> bytes);
  std::uint32_t Now() { return clock_.Now(); }
  // Nothing when no other copy has the file at `path` open; else the names of the users
  // logged in to it, as far as they can be read.
  std::optional<std::vector<std::string>> UsersOfOpenFile(const std::string& path);
  bool Exists(const std::string& path) const;

  ui::Ui& ui_;
  const ProjectKinds& kinds_;
  ProjectHost& host_;
  platform::FileSystem& files_;
  platform::Clock& clock_;
  std::unique_ptr<CProjectStore> store_;
  std::map<Tag, std::unique_ptr<ItemTable>> tables_;
  std::unique_ptr<LoginSession> login_;
  std::string path_;
  ProjectSecurity security_;
  ProjectInfo info_;
  ProjectOptions options_;
  PreferenceBlock preferences_{};
  AssignRules assignRules_;
  TableDirectory snapshot_;
  std::uint32_t nextDatabaseCheck_ = platform::kNoStamp;
  bool idleEnabled_ = false;  // set once the opening is done; clear while idle work runs
};

}  // namespace qm
