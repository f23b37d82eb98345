// The open project: opening, making, closing and copying a project file.
#include "session/db_doc.h"

#include <array>
#include <new>

#include "session/counters.h"
#include "session/item_error.h"
#include "session/record_notice.h"
#include "session/value_item.h"
#include "session/value_lists.h"
#include "store/store_error.h"

namespace qm {

namespace {

constexpr Tag kAttachmentsTag = MakeTag("atch");
constexpr Tag kMailTemplatesTag = MakeTag("etmp");
constexpr Tag kComponentTag = MakeTag("comp");
constexpr Tag kReproducibleTag = MakeTag("rpro");
constexpr Tag kProductTag = MakeTag("prod");
constexpr Tag kSeverityTag = MakeTag("sevr");
constexpr Tag kDispositionTag = MakeTag("usta");

// The item kinds a project loads, besides its value lists.
constexpr std::array<Tag, 7> kItemTables{
    kDefectTag, kUserTag, kGroupTag, MakeTag("scfg"), MakeTag("dflt"), MakeTag("rprt"), kTasksTag};
constexpr std::array<Tag, 9> kValueTables{MakeTag("type"),  MakeTag("reso"), MakeTag("prio"),
                                          kProductTag,      MakeTag("stat"), kComponentTag,
                                          kReproducibleTag, kSeverityTag,    kDispositionTag};

// The data version from which a project has its workbook, components, reproducibles and
// attachments.
constexpr std::uint16_t kWorkbookDataVersion = 258;

constexpr const char* kCorruptQuestion =
    "Cannot open the project file. Some key data structures are corrupt.\nDo you want to "
    "recover the records to a new file?";
constexpr const char* kNoRecovery =
    "This version of Quillmark cannot recover damaged project files yet. The project file "
    "has not been changed.";
constexpr const char* kModeMismatch =
    "Warning: Security settings and database access type mismatch. Database could become "
    "corrupt if accessed by more than one user!";
constexpr const char* kUpgradeQuestion =
    "Quillmark needs to update the database with new information. You will not be able to "
    "open this database with older versions of Quillmark. Make sure you have created a "
    "backup of the file.";
constexpr const char* kUpgradeWhileLoggedIn =
    "Cannot update database while other users are logged in. Please ask all users to log "
    "out, then re-open this database.";
constexpr const char* kRewriteFinished =
    "Update is finished. Now...\n1. Close the file.\n2. Make a copy of the file.\n3. Open the "
    "file and compact it.\n4. Enjoy improved performance!";

std::array<std::uint8_t, 4> CounterBytes(std::uint32_t value) {
  std::array<std::uint8_t, 4> bytes{};
  BeWriter(bytes.data()).U32(value);
  return bytes;
}

// The file's name without its folder and its extension.
std::string FileTitle(const std::string& path) {
  std::string name = path.substr(path.find_last_of('/') + 1);
  if (const auto dot = name.find_last_of('.'); dot != std::string::npos && dot > 0) {
    name.erase(dot);
  }
  return name;
}

// A status thrown out of an opening or a command: a store status as it is, an item
// factory's code as the status of the same number.
template <class Work>
DBStatus Guarded(Work&& work) {
  try {
    return RunGuarded(work);
  } catch (const ItemError& e) {
    return static_cast<DBStatus>(e.code());
  }
}

}  // namespace

std::string ExistingFileText(const std::string& path) {
  return "The file " + path +
         " already exists. You must delete it from the operating system before creating it "
         "within Quillmark. This feature prevents users from accidently deleting existing "
         "databases.";
}

std::string OpenElsewhereText(const std::string& path, const std::vector<std::string>& users) {
  std::string who;
  for (const std::string& name : users) {
    if (name.empty()) continue;
    who += (who.empty() ? " by " : ", ") + name;
  }
  return "The project file " + path + " is open in another copy of Quillmark" + who +
         ". A project file cannot be replaced while anyone has it open. Choose another name, "
         "or ask everyone to close the project first.";
}

CDBDoc::CDBDoc(ui::Ui& ui, const ProjectKinds& kinds, ProjectHost& host,
               platform::FileSystem& files, platform::Clock& clock)
    : ui_(ui), kinds_(kinds), host_(host), files_(files), clock_(clock) {}

CDBDoc::~CDBDoc() {
  // A project that was never closed in order (a failed making) still gives up its slot.
  if (store_ && currentUser() != nullptr) (void)store_->LogoutUser(currentUserId());
  login_.reset();
  tables_.clear();
  if (store_) (void)store_->Close();
}

std::uint32_t CDBDoc::currentUserId() const {
  const RecordItem* user = currentUser();
  return user != nullptr ? user->GetId() : 0;
}

const CAccess& CDBDoc::access() const {
  // A project without logins allows every command.
  static const CAccess everyone(false);
  return login_ ? login_->access() : everyone;
}

ItemTable* CDBDoc::GetTable(Tag tag) const {
  const auto it = tables_.find(tag);
  return it != tables_.end() ? it->second.get() : nullptr;
}

// ---- opening -----------------------------------------------------------------------------

int CDBDoc::OpenProject(const std::string& path, const std::optional<ui::LoginEntry>& login) {
  const ui::Modifiers keys = ui_.HeldModifiers();
  if (keys.ctrl) {
    OfferNoRecovery();
    return 0;
  }
  bool corrupt = false;
  const DBStatus failure = Guarded([&] {
    ui_.SetStatusText("Opening the project file...");
    store_ = std::make_unique<CProjectStore>(ui_, files_, clock_);
    const DBStatus opened = store_->Open(path);
    switch (opened) {
      case DBStatus::kNotProjectFile:
      case DBStatus::kIoError:
      case DBStatus::kCannotUpdate:
      case DBStatus::kTableExists:
        corrupt = true;
        return;
      default:
        Check(opened);
    }
    path_ = path;
    LoadProject(login, keys.alt);
  });
  if (failure == DBStatus::kOk && !corrupt) return 1;

  if (currentUser() != nullptr) (void)store_->LogoutUser(currentUserId());
  login_.reset();
  tables_.clear();
  if (store_) (void)store_->Close();
  store_.reset();
  ui_.SetStatusText("");
  if (corrupt) {
    if (ui_.Ask({kCorruptQuestion, {}, ui::Icon::kError, ui::Buttons::kYesNo}) ==
        ui::Answer::kYes) {
      OfferNoRecovery();
    }
    return 0;
  }
  if (const std::string text = OpeningText(failure, path); !text.empty()) {
    ui_.Tell(text, ui::Icon::kError);
  }
  return 0;
}

void CDBDoc::OfferNoRecovery() {
  ui_.SetStatusText("Recovering the project file...");
  ui_.Tell(kNoRecovery, ui::Icon::kInformation);
  ui_.SetStatusText("");
}

void CDBDoc::LoadProject(const std::optional<ui::LoginEntry>& login, bool altHeld) {
  std::vector<std::uint8_t> record;
  ui_.SetStatusText("Loading project info...");
  Check(store_->ReadRecord(kMiscTag, kSecurityRecord, record));
  security_ = ProjectSecurity::Decode(record);
  if (security_.securityMode != 0 && !store_->multiUser()) {
    ui_.Tell(kModeMismatch, ui::Icon::kWarning);
  }
  Check(store_->ReadRecord(kMiscTag, kInfoRecord, record));
  info_ = ProjectInfo::Decode(record, Now());
  if (info_.dataVersion > kDataVersion) Fail(DBStatus::kDataTooNew);
  const std::uint16_t dataVersion = info_.dataVersion;
  if (dataVersion < kDataVersion) {
    if (ui_.Ask({kUpgradeQuestion, {}, ui::Icon::kWarning, ui::Buttons::kOkCancel}) !=
        ui::Answer::kOk) {
      Fail(DBStatus::kCancelled);
    }
    std::vector<std::uint32_t> loggedIn;
    if (store_->GetLoggedInUsers(loggedIn) == DBStatus::kOk && !loggedIn.empty()) {
      ui_.Tell(kUpgradeWhileLoggedIn, ui::Icon::kWarning);
      Fail(DBStatus::kCancelled);
    }
    Check(store_->UpgradeUserBlock());
  }

  MakeTables();
  if (store_->multiUser()) TakeSnapshot();
  ui_.SetStatusText("Loading users...");
  GetTable(kUserTag)->LoadTable(true);
  ui_.SetStatusText("Loading user groups...");
  GetTable(kGroupTag)->LoadTable(true);

  if (multiUser()) {
    LogInAtOpening(login);
  } else {
    if (CheckProjectPassword(ui_, path_, security_.projectPassword) != 0) {
      Fail(DBStatus::kCancelled);
    }
    if (store_->ReadRecord(kMiscTag, kPreferencesRecord, record) == DBStatus::kOk) {
      if (const auto block = DecodePreferences(record)) preferences_ = *block;
    }
    ui_.SetStatusText("");
  }

  ui_.SetStatusText("Loading defects...");
  LoadIfKnown(kDefectTag, false);
  ui_.SetStatusText("Loading test configs...");
  LoadIfKnown(MakeTag("scfg"), true);
  ui_.SetStatusText("Loading filters...");
  LoadIfKnown(MakeTag("dflt"), true);
  ui_.SetStatusText("Loading reports...");
  LoadIfKnown(MakeTag("rprt"), false);
  if (dataVersion < kWorkbookDataVersion) {
    AddTableNow(kTasksTag);
  } else {
    ui_.SetStatusText("Loading workbook...");
    LoadIfKnown(kTasksTag, false);
  }

  ui_.SetStatusText("Loading field names...");
  for (const Tag tag :
       {MakeTag("type"), MakeTag("reso"), MakeTag("prio"), kProductTag, MakeTag("stat")}) {
    GetTable(tag)->LoadTable(true);
  }
  LoadOrAddValueList(kSeverityTag);
  LoadOrAddValueList(kDispositionTag);
  if (store_->FindTable(kMailTemplatesTag) == nullptr) AddTableNow(kMailTemplatesTag);
  if (dataVersion < kWorkbookDataVersion) {
    AddTableNow(kComponentTag);
    AddValueList(kReproducibleTag);
    AddTableNow(kAttachmentsTag);
  } else {
    GetTable(kComponentTag)->LoadTable(true);
    GetTable(kReproducibleTag)->LoadTable(true);
  }
  // misc record 4, the mail intake settings, is read by the mail intake itself.

  if (dataVersion < kDataVersion) {
    info_.dataVersion = kDataVersion;
    Check(WriteProjectInfo());
  }
  SettleCounters();
  kinds_.AfterLogin(*this);

  host_.ProjectLoaded(*this);
  if (multiUser()) {
    ScheduleCheck();
  } else {
    ui_.SetStatusText("Ready");
  }
  if (altHeld) RewriteDefects();
  idleEnabled_ = true;
  host_.StartBackgroundWork(*this);
  if (const auto* account = dynamic_cast<const LoginAccount*>(currentUser())) {
    host_.RememberLogin({std::string(account->LoginName()), std::string(account->LoginPassword())});
  }
}

void CDBDoc::MakeTables() {
  tables_.clear();
  for (const Tag tag : kItemTables) {
    if (auto table = kinds_.MakeTable(tag, *this, ui_)) tables_[tag] = std::move(table);
  }
  // The people of a project cannot be missing: without them nobody could log in.
  if (!GetTable(kUserTag) || !GetTable(kGroupTag)) throw ItemError(kNoItem);
  for (const Tag tag : kValueTables) {
    tables_[tag] = std::make_unique<CValueTable>(store_.get(), tag, ui_);
  }
}

void CDBDoc::LoadIfKnown(Tag tag, bool sort) {
  if (ItemTable* table = GetTable(tag)) table->LoadTable(sort);
}

void CDBDoc::LoadOrAddValueList(Tag tag) {
  if (store_->FindTable(tag) != nullptr) {
    GetTable(tag)->LoadTable(true);
  } else {
    AddValueList(tag);
  }
}

void CDBDoc::AddTableNow(Tag tag) {
  Check(store_->BeginAccess(true));
  const DBStatus added = store_->AddTable(tag, {});
  const DBStatus ended = store_->EndAccess(added == DBStatus::kOk);
  Check(added);
  Check(ended);
}

void CDBDoc::AddValueList(Tag tag) {
  AddTableNow(tag);
  FillValueList(tag);
}

void CDBDoc::FillValueList(Tag tag) {
  ItemTable& table = *GetTable(tag);
  std::uint32_t order = 0;
  for (const std::string_view name : DefaultValueNames(tag)) {
    std::unique_ptr<RecordItem> item = std::make_unique<ValueItem>(std::string(name), ++order);
    Check(table.AddItem(item));
  }
}

void CDBDoc::LogInAtOpening(const std::optional<ui::LoginEntry>& login) {
  login_ = std::make_unique<LoginSession>(ui_, *store_, *GetTable(kUserTag), *GetTable(kGroupTag),
                                          path_);
  if (login_->LogIn(login) < 0) {
    ui_.SetStatusText("");
    Fail(DBStatus::kCancelled);
  }
  // What an earlier session of this user left locked is free again.
  (void)store_->UnlockUserRecords(currentUserId());
  if (const auto* account = dynamic_cast<const LoginAccount*>(currentUser())) {
    preferences_ = account->Preferences();
  }
  kinds_.AfterLogin(*this);
}

void CDBDoc::PutMisc(std::uint32_t id, std::span<const std::uint8_t> bytes) {
  Check(store_->PutRecord(kMiscTag, bytes, id, PutMode::kReplace));
}

void CDBDoc::SettleCounters() {
  std::uint32_t size = 0;
  for (const std::uint32_t id : {kAttachmentCounterRecord, kReferenceCounterRecord}) {
    const DBStatus s = store_->GetRecordSize(kMiscTag, id, size);
    if (s == DBStatus::kNoSuchRecord) {
      PutMisc(id, CounterBytes(0));
    } else {
      Check(s);
    }
  }
  DBStatus s = store_->GetRecordSize(kMiscTag, kDefectCounterRecord, size);
  if (s == DBStatus::kNoSuchRecord || (s == DBStatus::kOk && size != 4)) {
    TableEntry defects;
    Check(store_->GetTableEntry(kDefectTag, defects));
    PutMisc(kDefectCounterRecord, CounterBytes(defects.nextId - 1));
  } else {
    Check(s);
  }
  std::vector<std::uint8_t> record;
  s = store_->ReadRecord(kMiscTag, kOptionsRecord, record);
  if (s != DBStatus::kNoSuchRecord) Check(s);
  if (const auto stored = s == DBStatus::kOk ? DecodeOptions(record) : std::nullopt) {
    options_ = *stored;
  } else {
    PutMisc(kOptionsRecord, EncodeOptions(options_));
  }
  // The rules are written only once someone sets them; an unreadable record means none.
  assignRules_ = {};
  if (store_->ReadRecord(kMiscTag, kAssignRulesRecord, record) == DBStatus::kOk) {
    assignRules_ = AssignRules::Decode(record).value_or(AssignRules{});
  }
}

void CDBDoc::RewriteDefects() {
  ItemTable* defects = GetTable(kDefectTag);
  if (defects == nullptr) return;
  ui_.BeginProgress("Updating defects");
  const std::uint32_t count = defects->count();
  for (std::uint32_t p = 1; p <= count; ++p) {
    ui_.ProgressStep("Updating defect " + std::to_string(p) + " of " + std::to_string(count) +
                     "...");
    Check(defects->SaveItem(*defects->ItemAt(p)));
  }
  ui_.EndProgress();
  ui_.Tell(kRewriteFinished, ui::Icon::kInformation);
  ui_.SetStatusText("Ready.");
}

void CDBDoc::TakeSnapshot() { snapshot_ = store_->directory(); }

void CDBDoc::ScheduleCheck() {
  const std::int32_t seconds = host_.DatabaseCheckSeconds();
  nextDatabaseCheck_ =
      seconds < 0 ? platform::kNoStamp : Now() + static_cast<std::uint32_t>(seconds);
}

// ---- making --------------------------------------------------------------------------

std::optional<std::vector<std::string>> CDBDoc::UsersOfOpenFile(const std::string& path) {
  bool multi = false;
  if (!IsFileOpenElsewhere(files_, path, &multi)) return std::nullopt;
  std::vector<std::string> names;
  if (!multi || store_) return names;
  // The names come from the file's user slots and its users, through a store of our own;
  // a file that cannot be read that far is open by people unknown.
  store_ = std::make_unique<CProjectStore>(ui_, files_, clock_);
  (void)Guarded([&] {
    Check(store_->Open(path));
    if (auto users = kinds_.MakeTable(kUserTag, *this, ui_)) {
      users->LoadTable(false);
      tables_[kUserTag] = std::move(users);
      names = ActiveUserNames();
    }
  });
  tables_.clear();
  (void)store_->Close();
  store_.reset();
  return names;
}

bool CDBDoc::MayMakeProjectAt(const std::string& path) {
  if (!Exists(path)) return true;
  if (const auto users = UsersOfOpenFile(path)) {
    ui_.Tell(OpenElsewhereText(path, *users), ui::Icon::kError);
    return false;
  }
  const std::string warning =
      "The project file " + path +
      " already exists. Replacing it deletes that project for good, with all its defects, "
      "users and settings.\nDo you want to replace it with a new, empty project?";
  return ui_.Ask({warning, {}, ui::Icon::kWarning, ui::Buttons::kYesNo, true}) == ui::Answer::kYes;
}

int CDBDoc::NewProject(const std::string& path, bool multiUser) {
  // Asked again at the last moment: someone may have opened it while the person thought.
  if (IsFileOpenElsewhere(files_, path)) Fail(DBStatus::kInUse);
  login_.reset();
  tables_.clear();
  if (store_) (void)store_->Close();
  security_ = {};
  security_.securityMode = multiUser ? 1 : 0;
  store_ = std::make_unique<CProjectStore>(ui_, files_, clock_);
  Check(store_->Create(path, security_.securityMode));
  path_ = path;
  // Another copy may open the file as soon as it exists: it finds all the tables or none.
  Check(store_->BeginAccess(true));
  DBStatus added = DBStatus::kOk;
  for (const Tag tag : kProjectTables) {
    added = store_->AddTable(tag, {});
    if (added != DBStatus::kOk) break;
  }
  const DBStatus ended = store_->EndAccess(added == DBStatus::kOk);
  Check(added);
  Check(ended);
  MakeTables();

  std::uint32_t id = 0;
  Check(store_->AddRecord(kMiscTag, security_.Encode(), &id));
  info_ = {};
  assignRules_ = {};
  info_.projectName = FileTitle(path);
  Check(store_->AddRecord(kMiscTag, info_.Encode(Now()), &id));
  if (multiUser) {
    RecordItem& admin = kinds_.MakeAdministrator(*GetTable(kUserTag), *GetTable(kGroupTag));
    login_ = std::make_unique<LoginSession>(ui_, *store_, *GetTable(kUserTag), *GetTable(kGroupTag),
                                            path_);
    login_->LogInAs(admin);
  } else {
    preferences_ = {};
    Check(store_->AddRecord(kMiscTag, EncodePreferences(preferences_), &id));
  }

  for (const Tag tag : kValueTables) FillValueList(tag);
  std::unique_ptr<RecordItem> product = std::make_unique<ValueItem>(FileTitle(path), 1);
  Check(GetTable(kProductTag)->AddItem(product));
  for (const std::uint32_t counter :
       {kAttachmentCounterRecord, kReferenceCounterRecord, kDefectCounterRecord}) {
    PutMisc(counter, CounterBytes(0));
  }
  options_ = {};
  PutMisc(kOptionsRecord, EncodeOptions(options_));

  host_.ProjectLoaded(*this);
  if (multiUser) {
    TakeSnapshot();
    ScheduleCheck();
  }
  ui_.SetStatusText("Ready");
  idleEnabled_ = true;
  host_.StartBackgroundWork(*this);
  Check(store_->UpdateRecord(kMiscTag, kSecurityRecord, security_.Encode()));
  return 1;
}

// ---- closing -------------------------------------------------------------------------

void CDBDoc::CloseProject() {
  if (!store_) return;
  idleEnabled_ = false;
  host_.BeforeClose(*this);
  if (RecordItem* user = currentUser(); user != nullptr && multiUser()) {
    if (auto* account = dynamic_cast<LoginAccount*>(user)) account->SetLastLogin(Now());
    // The time of leaving is a courtesy to the next session; the logout matters more.
    (void)GetTable(kUserTag)->SaveItem(*user);
    (void)store_->LogoutUser(user->GetId());
  }
  login_.reset();
  security_ = {};
  info_ = {};
  assignRules_ = {};
  host_.CloseListWindows(*this);
  tables_.clear();
  (void)store_->Close();
  store_.reset();
}

// ---- logins and settings --------------------------------------------------------------

bool CDBDoc::SetAssignRules(const AssignRules& rules) {
  if (!store_) return false;
  assignRules_ = rules;
  return store_->PutRecord(kMiscTag, rules.Encode(), kAssignRulesRecord, PutMode::kReplace) ==
         DBStatus::kOk;
}

bool CDBDoc::SetPreferences(const PreferenceBlock& block) {
  if (!store_) return false;
  preferences_ = block;
  if (!multiUser()) {
    return store_->PutRecord(kMiscTag, EncodePreferences(block), kPreferencesRecord,
                             PutMode::kReplace) == DBStatus::kOk;
  }
  auto* account = dynamic_cast<LoginAccount*>(currentUser());
  if (account == nullptr) return false;
  account->SetPreferences(block);
  return GetTable(kUserTag)->SaveItem(*currentUser()) == DBStatus::kOk;
}

void CDBDoc::PostChangeNotice(std::uint32_t kind, Tag table, std::uint32_t id) {
  if (!store_ || !multiUser() || currentUserId() == 0) return;
  (void)PostRecordNotice(*store_, currentUserId(), kind, table, id);
}

int CDBDoc::LogInUser(const std::optional<ui::LoginEntry>& login) {
  if (!login_) return -1;
  RecordItem* former = currentUser();
  const int result = login_->LogIn(login);
  if (result != 0) return result;
  if (former != nullptr && former != currentUser()) {
    if (auto* account = dynamic_cast<LoginAccount*>(former)) account->SetLastLogin(Now());
    (void)GetTable(kUserTag)->SaveItem(*former);
  }
  (void)store_->UnlockUserRecords(currentUserId());
  if (const auto* account = dynamic_cast<const LoginAccount*>(currentUser())) {
    preferences_ = account->Preferences();
  }
  // What arrived since the former user last looked was marked for that user, not this one.
  if (former != currentUser()) {
    for (const auto& [tag, table] : tables_) {
      for (std::uint32_t p = 1; p <= table->count(); ++p) {
        RecordItem& item = *table->ItemAt(p);
        item.isNew = item.isChanged = item.isAssigned = false;
      }
    }
  }
  // The workbook is the new user's: the tasks of the defects assigned to that user.
  kinds_.AfterLogin(*this);
  return 0;
}

std::vector<std::string> CDBDoc::ActiveUserNames() {
  std::vector<std::uint32_t> ids;
  std::vector<std::string> names;
  if (!store_ || store_->GetLoggedInUsers(ids) != DBStatus::kOk) return names;
  const ItemTable* users = GetTable(kUserTag);
  for (const std::uint32_t id : ids) {
    const RecordItem* user = users != nullptr ? users->ItemById(id) : nullptr;
    names.push_back(user != nullptr ? user->GetName() : std::string());
  }
  return names;
}

DBStatus CDBDoc::SetProjectPassword(const std::string& password) {
  if (!store_) return DBStatus::kNotOpen;
  security_.projectPassword = password;
  return store_->UpdateRecord(kMiscTag, kSecurityRecord, security_.Encode());
}

DBStatus CDBDoc::WriteProjectInfo() {
  if (!store_) return DBStatus::kNotOpen;
  return store_->UpdateRecord(kMiscTag, kInfoRecord, info_.Encode(Now()));
}

DBStatus CDBDoc::NextCounter(Tag tag, std::uint32_t id, std::uint32_t& value) {
  if (!store_) return DBStatus::kNotOpen;
  return StoreCounters(*store_, currentUserId()).NextCounter(tag, id, value);
}

DBStatus CDBDoc::SetCounter(Tag tag, std::uint32_t id, std::uint32_t value) {
  if (!store_) return DBStatus::kNotOpen;
  return StoreCounters(*store_, currentUserId()).SetCounter(tag, id, value);
}

// ---- the template ------------------------------------------------------------------------

bool CDBDoc::Exists(const std::string& path) const {
  try {
    return files_.Open(path, platform::OpenMode::kRead) != nullptr;
  } catch (const platform::FileError&) {
    return false;
  }
}

DBStatus CDBDoc::SaveProjectTemplate(const std::string& path) {
  if (!store_) return DBStatus::kNotOpen;
  if (Exists(path)) {
    ui_.Tell(ExistingFileText(path), ui::Icon::kWarning);
    return DBStatus::kCancelled;
  }
  if (DBStatus s = store_->BeginAccess(true); s != DBStatus::kOk) return s;
  ui_.BeginProgress("Creating project file...");
  const DBStatus status = Guarded([&] {
    CProjectStore copy(ui_, files_, clock_);
    Check(copy.Create(path, security_.securityMode));
    const std::vector<Tag> tags = store_->TableTags();
    for (const Tag tag : tags) {
      if (tag != kMessagesTag) Check(copy.AddTable(tag, {}));
    }
    std::vector<std::uint8_t> record;
    for (const Tag tag : tags) {
      if (tag == kMessagesTag || tag == kDefectTag || tag == kAttachmentsTag) continue;
      ui_.ProgressStep("Saving " + TableDisplayWord(tag) + " records...");
      std::uint32_t count = 0;
      Check(store_->CountRecords(tag, count));
      for (std::uint32_t p = 1; p <= count; ++p) {
        std::uint32_t id = 0;
        Check(store_->ReadRecordByIndex(tag, p, record, &id));
        const DBStatus put = copy.PutRecord(tag, record, id, PutMode::kKeepIfShorter);
        if (put != DBStatus::kRecordKept) Check(put);
      }
    }
    // The counters start again from 0 in the copy where it lacks them; where the copy
    // took them over, it is the open project's counter that is reset.
    std::uint32_t size = 0;
    for (const std::uint32_t id :
         {kAttachmentCounterRecord, kReferenceCounterRecord, kDefectCounterRecord}) {
      const DBStatus s = copy.GetRecordSize(kMiscTag, id, size);
      if (s == DBStatus::kNoSuchRecord || (id == kDefectCounterRecord && size != 4)) {
        Check(copy.PutRecord(kMiscTag, CounterBytes(0), id, PutMode::kReplace));
      } else {
        Check(s);
        Check(SetCounter(kMiscTag, id, 0));
      }
    }
    Check(copy.Close());
  });
  ui_.EndProgress();
  (void)store_->EndAccess(false);
  return status;
}

}  // namespace qm
