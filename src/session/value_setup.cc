// The commands of the value list set-up dialog, in the order of their steps.
#include "session/value_setup.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "store/bytes.h"
#include "store/project_store.h"
#include "store/store_error.h"

namespace qm {

namespace {

constexpr char kOthersLoggedIn[] =
    "Cannot configure field value names while other users are logged in. Ask all other "
    "users to log out and try again.";
constexpr char kNotUnique[] = "An item with that name already exists, please enter a unique name.";
constexpr char kKeepOne[] =
    "Sorry, this field cannot be deleted. You must leave at least one field name in the list.";
constexpr char kAreYouSure[] =
    "Are you sure that you want to delete the selected name? There is no undo available.";
constexpr char kDefectsUseIt[] =
    "One or more defects use this field name. Quillmark will change these defects to use the "
    "field name you choose from the popup menu.";
constexpr char kNewNameLabel[] = "New name:";

std::string_view TrimBlanks(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// ASCII letters compare without regard to case; every other byte as it is.
bool EqualNoCase(std::string_view a, std::string_view b) {
  const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::ranges::equal(a, b, [&](char x, char y) { return fold(x) == fold(y); });
}

void Require(DBStatus status) {
  if (status != DBStatus::kOk) Fail(status);
}

// The progress window of a command, closed however the command ends.
class Progress {
 public:
  Progress(ui::Ui& ui, const std::string& title) : ui_(ui) { ui_.BeginProgress(title); }
  ~Progress() { ui_.EndProgress(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  ui::Ui& ui_;
};

}  // namespace

std::string TypedName(std::string_view typed) {
  return std::string(CutToCapacity(TrimBlanks(typed), ValueItem::kNameCapacity));
}

ValueItem* FindValueName(const CValueTable& table, std::string_view name) {
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    if (EqualNoCase(table.ValueAt(p)->name, name)) return table.ValueAt(p);
  }
  return nullptr;
}

ValueSetup::ValueSetup(CValueTable& table, const ValueListSettings& list,
                       DefectFieldAccess* defects, ui::Ui& ui, std::uint32_t currentUserId)
    : table_(table),
      store_(*table.store()),
      list_(list),
      defects_(defects),
      ui_(ui),
      currentUserId_(currentUserId) {}

bool ValueSetup::Open() {
  if (!store_.multiUser()) return true;
  std::vector<std::uint32_t> users;
  Require(store_.GetLoggedInUsers(users));
  if (users.size() <= 1) return true;
  Refuse(kOthersLoggedIn);
  return false;
}

std::string ValueSetup::Title() const { return "Set Up " + std::string(list_.titleWord); }

std::string ValueSetup::Text() const {
  return "Use this dialog to add, edit, delete or re-order the " + std::string(list_.sentenceWord) +
         " names.";
}

std::vector<std::string> ValueSetup::Names() const {
  std::vector<std::string> names;
  for (std::uint32_t p = 1; p <= table_.count(); ++p) names.push_back(table_.ValueAt(p)->name);
  return names;
}

void ValueSetup::Select(std::uint32_t row) { selection_ = row <= table_.count() ? row : 0; }

std::string ValueSetup::AddTitle() const { return "Add " + std::string(list_.titleWord); }

std::string ValueSetup::EditTitle() const { return "Edit " + std::string(list_.titleWord); }

std::string ValueSetup::EditInput() const {
  const ValueItem* item = table_.ValueAt(selection_);
  return item == nullptr ? std::string() : item->name;
}

void ValueSetup::Refuse(std::string text) { ui_.Tell(std::move(text), ui::Icon::kWarning); }

bool ValueSetup::IsNameTaken(std::string_view name, const ValueItem* except) const {
  const ValueItem* found = FindValueName(table_, name);
  return found != nullptr && found != except;
}

bool ValueSetup::Add(std::string_view typed) {
  const std::string name = TypedName(typed);
  if (name.empty()) return false;
  if (IsNameTaken(name, nullptr)) {
    Refuse(kNotUnique);
    return false;
  }
  std::unique_ptr<RecordItem> item = table_.NewItem();
  auto& value = static_cast<ValueItem&>(*item);
  value.name = name;
  value.order = table_.count() + 1;
  Require(table_.AddItem(item));
  return true;
}

bool ValueSetup::Edit(std::string_view typed) {
  ValueItem* item = table_.ValueAt(selection_);
  if (item == nullptr) return false;
  std::string name = TypedName(typed);
  if (name.empty() || name == item->name) return false;
  if (IsNameTaken(name, item)) {
    Refuse(kNotUnique);
    return false;
  }
  std::swap(item->name, name);
  if (const DBStatus s = table_.SaveItem(*item); s != DBStatus::kOk) {
    std::swap(item->name, name);
    Fail(s);
  }
  return true;
}

ValueSetup::DeleteStep ValueSetup::Delete() {
  pending_ = nullptr;
  ValueItem* item = table_.ValueAt(selection_);
  if (item == nullptr) return DeleteStep::kOver;
  if (list_.reassign && table_.count() == 1) {
    Refuse(kKeepOne);
    return DeleteStep::kOver;
  }
  if (ui_.Ask({kAreYouSure, "", ui::Icon::kQuestion, ui::Buttons::kOkCancel}) != ui::Answer::kOk) {
    return DeleteStep::kOver;
  }
  bool used = false;
  const std::uint32_t defectCount = defects_ != nullptr ? defects_->DefectCount() : 0;
  for (std::uint32_t p = 1; p <= defectCount && !used; ++p) {
    used = defects_->UsesValue(p, list_.fieldCode, item->GetId());
  }
  if (used && list_.reassign) {
    pending_ = item;
    choices_.clear();
    question_ = {kDefectsUseIt, kNewNameLabel, {}};
    for (std::uint32_t p = 1; p <= table_.count(); ++p) {
      ValueItem* other = table_.ValueAt(p);
      if (other == item) continue;
      choices_.push_back(other);
      question_.names.push_back(other->name);
    }
    return DeleteStep::kChooseReplacement;
  }
  FinishDelete(*item, used, 0);
  return DeleteStep::kOver;
}

void ValueSetup::ChooseReplacement(std::optional<std::uint32_t> row) {
  ValueItem* item = std::exchange(pending_, nullptr);
  if (item == nullptr || !row || *row == 0 || *row > choices_.size()) return;
  FinishDelete(*item, true, choices_[*row - 1]->GetId());
}

void ValueSetup::FinishDelete(ValueItem& item, bool used, std::uint32_t newId) {
  if (used) {
    const Progress progress(ui_, Title());
    const std::uint32_t total = defects_->DefectCount();
    for (std::uint32_t p = 1; p <= total; ++p) {
      ui_.ProgressStep("Updating defect " + std::to_string(p) + " of " + std::to_string(total) +
                       "...");
      if (!defects_->UsesValue(p, list_.fieldCode, item.GetId())) continue;
      defects_->ReplaceValue(p, list_.fieldCode, item.GetId(), newId);
      Require(defects_->SaveDefect(p));
      PostChanged(defects_->DefectId(p));
    }
  }
  Require(table_.DeleteItem(item, false));
  selection_ = 0;
}

void ValueSetup::PostChanged(std::uint32_t defectId) {
  if (!store_.multiUser()) return;
  Require(PostRecordNotice(store_, currentUserId_, kNoticeChanged, MakeTag("dfct"), defectId));
}

void ValueSetup::MoveUp() {
  if (table_.count() >= 2 && selection_ >= 2) Move(selection_ - 1);
}

void ValueSetup::MoveDown() {
  if (table_.count() >= 2 && selection_ != 0 && selection_ < table_.count()) Move(selection_ + 1);
}

void ValueSetup::Move(std::uint32_t to) {
  std::vector<ValueItem*> rows;
  for (std::uint32_t p = 1; p <= table_.count(); ++p) rows.push_back(table_.ValueAt(p));
  ValueItem* moved = rows[selection_ - 1];
  rows.erase(rows.begin() + (selection_ - 1));
  rows.insert(rows.begin() + (to - 1), moved);
  for (std::uint32_t i = 0; i < rows.size(); ++i) rows[i]->order = i + 1;
  // The table sorts by order, so sorting it again puts its items in the new order.
  table_.SetSortOrder(table_.sortOrder());
  table_.Sort();
  selection_ = to;
  // Every name is written, moved or not, so that the stored orders run from 1 without a
  // gap or a tie whatever they were before.
  for (ValueItem* item : rows) Require(table_.SaveItem(*item));
}

}  // namespace qm
