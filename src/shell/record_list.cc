// The list window logic: columns, the header's popup, the title and the saved state.
#include "shell/record_list.h"

#include <algorithm>
#include <utility>

#include "defects/defect.h"
#include "defects/defect_fields.h"
#include "defects/defect_table.h"
#include "defects/task.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/payload.h"
#include "store/bytes.h"

namespace qm {
namespace {

constexpr std::size_t kTitleCapacity = 255;  // one length byte in the saved state

void Need(bool ok) {
  if (!ok) throw ListStateError("The saved list state is cut short.");
}

void PutLe(std::vector<std::uint8_t>& out, std::uint32_t value, int bytes) {
  for (int b = 0; b < bytes; ++b) out.push_back(static_cast<std::uint8_t>(value >> (8 * b)));
}

std::uint32_t GetLe(std::span<const std::uint8_t> in, std::size_t at, int bytes) {
  std::uint32_t value = 0;
  for (int b = bytes - 1; b >= 0; --b) value = (value << 8) | in[at + static_cast<std::size_t>(b)];
  return value;
}

}  // namespace

CRecordListView::CRecordListView(ItemTable& table, ui::Ui& ui, std::string name)
    : table_(table), ui_(ui), name_(std::move(name)) {}

void CRecordListView::AddColumn(std::string_view title, std::uint16_t fieldId, std::uint16_t width,
                                std::uint16_t minWidth, std::uint16_t maxWidth,
                                std::uint16_t format, std::uint16_t flags) {
  columns_.push_back({fieldId, width, minWidth, maxWidth, format, std::string(title), flags, 0});
  Reposition();
}

void CRecordListView::SetSortColumns(std::uint16_t primary, std::uint16_t secondary) {
  primary_ = primary;
  secondary_ = secondary;
}

void CRecordListView::Reposition() {
  std::uint16_t x = 0;
  for (ListColumn& c : columns_) {
    c.x = x;
    x = static_cast<std::uint16_t>(x + c.width);
  }
}

void CRecordListView::ColumnCommand(std::uint16_t column, std::uint16_t code) {
  if (column < 1 || column > columns_.size()) return;
  if (code == kInsertColumn) {
    InsertColumn(column);
  } else if (code == kRemoveColumn) {
    RemoveColumn(column);
  } else {
    const std::vector<ColumnChoice> menu = GetColumnMenu();
    if (code < 1 || code > menu.size()) return;
    ListColumn& c = columns_[column - 1];
    c.fieldId = menu[code - 1].fieldId;
    c.title = menu[code - 1].title.substr(0, kTitleCapacity);
  }
}

void CRecordListView::InsertColumn(std::uint16_t before) {
  columns_.insert(columns_.begin() + (before - 1), ListColumn{});
  // The sort marks stay on their fields.
  for (std::uint16_t* sort : {&primary_, &secondary_}) {
    if (*sort != kNoSortColumn && *sort >= before) ++*sort;
  }
  Reposition();
}

void CRecordListView::RemoveColumn(std::uint16_t column) {
  if (columns_.size() < 3) {
    ui_.Tell("Sorry, you cannot remove the last column in the list.", ui::Icon::kInformation);
    return;
  }
  columns_.erase(columns_.begin() + (column - 1));
  for (std::uint16_t* sort : {&primary_, &secondary_}) {
    if (*sort == column) {
      *sort = kNoSortColumn;
    } else if (*sort > column) {
      --*sort;
    }
  }
  Reposition();
}

std::uint16_t CRecordListView::HeaderHit(std::int32_t x) const {
  for (std::size_t n = 0; n < columns_.size(); ++n) {
    const ListColumn& c = columns_[n];
    if (c.x + 3 < x && c.x + c.width - 3 > x) {
      return (c.flags & ListColumn::kNoMenu) != 0 ? 0 : static_cast<std::uint16_t>(n + 1);
    }
  }
  return 0;
}

void CRecordListView::OnHeaderClick(std::uint16_t column, bool shift) {
  if (column < 1 || column > columns_.size()) return;
  const auto field = static_cast<std::int16_t>(columns_[column - 1].fieldId);
  if (shift) {
    secondary_ = column;
    ApplySecondarySort(field);
  } else {
    SortOrder order = table_.sortOrder();
    if (order.field == field) {
      order.direction = order.direction == 2 ? 1 : 2;
    } else {
      order.field = field;
      if (order.direction != 2) order.direction = 1;
    }
    primary_ = column;
    table_.SetSortOrder(order);
  }
  table_.Sort();
}

void CRecordListView::SortByColumns() {
  const auto fieldOf = [this](std::uint16_t column) {
    return static_cast<std::int16_t>(columns_[column - 1].fieldId);
  };
  if (secondary_ >= 1 && secondary_ <= columns_.size()) ApplySecondarySort(fieldOf(secondary_));
  if (primary_ >= 1 && primary_ <= columns_.size()) {
    SortOrder order = table_.sortOrder();
    order.field = fieldOf(primary_);
    if (order.direction != 2) order.direction = 1;
    table_.SetSortOrder(order);
  }
  table_.Sort();
}

void CRecordListView::SetWidths(std::span<const std::uint16_t> widths) {
  for (std::size_t n = 0; n < widths.size() && n < columns_.size(); ++n) {
    columns_[n].width = widths[n];
  }
  Reposition();
}

std::string CRecordListView::Title(std::uint32_t selected) const {
  std::uint32_t count = 0;
  for (std::uint32_t p = 1; p <= table_.count(); ++p) {
    if (Shows(*table_.ItemAt(p))) ++count;
  }
  return name_ + " - (" + std::to_string(count) + (count == 1 ? " item, " : " items, ") +
         std::to_string(selected) + " selected)";
}

std::vector<std::uint8_t> CRecordListView::WriteState() const {
  std::vector<std::uint8_t> out;
  const auto u16 = [&out](std::uint16_t v) {
    out.push_back(static_cast<std::uint8_t>(v >> 8));
    out.push_back(static_cast<std::uint8_t>(v));
  };
  u16(kStateVersion);
  u16(static_cast<std::uint16_t>(columns_.size()));
  for (const ListColumn& c : columns_) {
    for (const std::uint16_t v : {c.fieldId, c.width, c.minWidth, c.maxWidth, c.format}) u16(v);
    const std::size_t length = std::min(c.title.size(), kTitleCapacity);
    out.push_back(static_cast<std::uint8_t>(length));
    out.insert(out.end(), c.title.begin(), c.title.begin() + static_cast<std::ptrdiff_t>(length));
    u16(c.flags);
  }
  for (const std::uint16_t v : {primary_, secondary_, keptWords_[0], keptWords_[1]}) u16(v);
  return out;
}

std::size_t CRecordListView::ReadState(std::span<const std::uint8_t> bytes) {
  PayloadReader in(bytes);
  std::uint16_t version = 0;
  std::uint16_t count = 0;
  Need(in.U16(version));
  if (version < 256 || version > kStateVersion) {
    throw ListStateError("The saved list state has an unknown version.");
  }
  Need(in.U16(count));
  std::vector<ListColumn> read;
  for (std::uint16_t n = 0; n < count; ++n) {
    ListColumn c;
    for (std::uint16_t* v : {&c.fieldId, &c.width, &c.minWidth, &c.maxWidth, &c.format}) {
      Need(in.U16(*v));
    }
    std::uint8_t length = 0;
    Need(in.U8(length));
    std::vector<std::uint8_t> title(length);
    Need(in.Raw(title));
    c.title.assign(title.begin(), title.end());
    if (version >= 257) {
      Need(in.U16(c.flags));
    } else {
      c.flags = c.fieldId != 0 && static_cast<std::int16_t>(c.fieldId) < 0 ? 1 : 0;
    }
    read.push_back(std::move(c));
  }
  std::array<std::uint16_t, 4> sort{primary_, secondary_, keptWords_[0], keptWords_[1]};
  if (version >= 258) {
    for (std::uint16_t& v : sort) Need(in.U16(v));
  }
  columns_ = std::move(read);
  primary_ = sort[0];
  secondary_ = sort[1];
  keptWords_ = {sort[2], sort[3]};
  Reposition();
  return bytes.size() - in.remaining();
}

std::vector<std::uint8_t> EncodePlacement(const WindowPlacement& placement) {
  std::vector<std::uint8_t> out;
  PutLe(out, placement.visible ? 1 : 0, 4);
  PutLe(out, placement.state, 2);
  for (const std::int32_t edge : placement.rect) PutLe(out, static_cast<std::uint32_t>(edge), 4);
  return out;
}

std::optional<WindowPlacement> DecodePlacement(std::span<const std::uint8_t> value) {
  if (value.size() < WindowPlacement::kSize) return std::nullopt;
  WindowPlacement placement;
  placement.visible = GetLe(value, 0, 4) != 0;
  placement.state = static_cast<std::uint16_t>(GetLe(value, 4, 2));
  for (std::size_t e = 0; e < 4; ++e) {
    placement.rect[e] = static_cast<std::int32_t>(GetLe(value, 6 + 4 * e, 4));
  }
  return placement;
}

std::vector<std::uint8_t> CRecordListView::SavePlacement(const WindowPlacement& placement) const {
  std::vector<std::uint8_t> out = EncodePlacement(placement);
  const std::vector<std::uint8_t> state = WriteState();
  out.insert(out.end(), state.begin(), state.end());
  return out;
}

std::optional<WindowPlacement> CRecordListView::RestorePlacement(
    std::span<const std::uint8_t> value) {
  const std::optional<WindowPlacement> placement = DecodePlacement(value);
  if (!placement) return std::nullopt;
  try {
    ReadState(value.subspan(WindowPlacement::kSize));
  } catch (const ListStateError&) {
    return std::nullopt;
  }
  return placement;
}

CDefectListView::CDefectListView(ItemTable& table, ui::Ui& ui)
    : CRecordListView(table, ui, "Defects") {
  SetDefaultColumns();
}

void CDefectListView::SetDefaultColumns() {
  ClearColumns();
  AddColumn("", ListColumn::kMarkerField, 28, 0, 0, 0, ListColumn::kNoMenu);
  AddColumn("No.", 1, 32, 20, 100, ListColumn::kRight);
  AddColumn("Summary", 2, 234, 50, 400, ListColumn::kLeft);
  AddColumn("Type", 4, 112, 50, 200, ListColumn::kLeft);
  AddColumn("Priority", 5, 78, 50, 200, ListColumn::kLeft);
  AddColumn("Status", 6, 102, 50, 200, ListColumn::kLeft);
  SetSortColumns(2, kNoSortColumn);
}

bool CDefectListView::GetCellText(const RecordItem& item, std::uint16_t fieldId,
                                  std::string& text) const {
  if (fieldId != ListColumn::kMarkerField) {
    return static_cast<const CDefect&>(item).GetFieldText(fieldId, text);
  }
  char mark = 0;
  if (item.isAssigned) {
    mark = '*';
  } else if (item.isNew) {
    mark = '+';
  } else if (item.isChanged) {
    mark = '~';
  }
  text.assign(mark != 0 ? 1 : 0, mark);
  return true;
}

bool CDefectListView::Shows(const RecordItem& item) const {
  return !item.deleted &&
         (onlyAssignedTo_ == 0 ||
          static_cast<const CDefect&>(item).copies().assignedToId == onlyAssignedTo_);
}

bool CDefectListView::Grayed(const RecordItem& item) const {
  return static_cast<const CDefect&>(item).IsClosed();
}

void CDefectListView::ApplySecondarySort(std::int16_t field) {
  static_cast<CDefectTable&>(table()).SetSecondaryField(field);
}

std::vector<ColumnChoice> CDefectListView::GetColumnMenu() const {
  std::vector<ColumnChoice> menu;
  for (const DefectField& f : DefectFields()) menu.push_back({f.number, std::string(f.label)});
  return menu;
}

}  // namespace qm

namespace qm {
namespace {

// The people lists' fields: label, key and alignment, in menu order.
struct PersonField {
  std::uint16_t key;
  const char* label;
  std::uint16_t format;
};
constexpr PersonField kUserFields[] = {
    {1, "Name", ListColumn::kRight},       {2, "Group", ListColumn::kLeft},
    {3, "Phone 1", ListColumn::kLeft},     {4, "Phone 2", ListColumn::kLeft},
    {8, "e-mail Type", ListColumn::kLeft}, {9, "e-mail Address", ListColumn::kLeft},
    {10, "Found", ListColumn::kRight},     {11, "Assigned", ListColumn::kRight}};
constexpr PersonField kCustomerFields[] = {
    {1, "Name", ListColumn::kRight},       {3, "Phone 1", ListColumn::kLeft},
    {4, "Phone 2", ListColumn::kLeft},     {5, "Company", ListColumn::kLeft},
    {6, "Address", ListColumn::kLeft},     {7, "Beta Site", ListColumn::kLeft},
    {8, "e-mail Type", ListColumn::kLeft}, {9, "e-mail Address", ListColumn::kLeft},
    {10, "Reported", ListColumn::kRight}};

// A person of the table, not deleted, of the customer list or of the user list.
bool IsPersonOf(const RecordItem& item, bool customers) {
  const auto* person = dynamic_cast<const CUser*>(&item);
  return person != nullptr && !person->deleted && person->IsCustomer() == customers;
}

template <std::size_t N>
std::vector<ColumnChoice> Menu(const PersonField (&fields)[N]) {
  std::vector<ColumnChoice> menu;
  for (const PersonField& f : fields) menu.push_back({f.key, f.label});
  return menu;
}

}  // namespace

CUserListView::CUserListView(ItemTable& people, ui::Ui& ui, const ItemTable* groups,
                             const ItemTable* defects)
    : CUserListView(people, ui, groups, defects, "Users") {
  SetDefaultColumns();
}

CUserListView::CUserListView(ItemTable& people, ui::Ui& ui, const ItemTable* groups,
                             const ItemTable* defects, std::string name)
    : CRecordListView(people, ui, std::move(name)), groups_(groups), defects_(defects) {}

void CUserListView::SetDefaultColumns() {
  ClearColumns();
  AddColumn("Name", 1, 276, 50, 400, ListColumn::kRight);
  AddColumn("Group", 2, 138, 50, 400, ListColumn::kLeft);
  AddColumn("Assigned", 11, 40, 50, 400, ListColumn::kRight);
  SetSortColumns(1, 2);
}

std::vector<ColumnChoice> CUserListView::GetColumnMenu() const { return Menu(kUserFields); }

bool CUserListView::Shows(const RecordItem& item) const { return IsPersonOf(item, false); }

void CUserListView::Recount(const ItemTable& defects) {
  counts_.clear();
  for (std::uint32_t p = 1; p <= defects.count(); ++p) {
    const auto* defect = dynamic_cast<const CDefect*>(defects.ItemAt(p));
    if (defect == nullptr) continue;
    std::vector<std::uint32_t> finders;
    for (std::uint32_t r = 1; r <= defect->ReportedByCount(); ++r) {
      const std::uint32_t id = defect->ReportedByAt(r)->foundById;
      if (std::find(finders.begin(), finders.end(), id) == finders.end()) finders.push_back(id);
    }
    for (const std::uint32_t id : finders) ++counts_[id].first;
    if (defect->copies().assignedToId != 0) ++counts_[defect->copies().assignedToId].second;
  }
}

bool CUserListView::GetCellText(const RecordItem& item, std::uint16_t fieldId,
                                std::string& text) const {
  const auto& person = static_cast<const CUser&>(item);
  const auto counted = [this, &person](bool assigned) {
    const auto found = counts_.find(person.GetId());
    if (found == counts_.end()) return std::string("0");
    return std::to_string(assigned ? found->second.second : found->second.first);
  };
  switch (fieldId) {
    case 1:
      text = firstNameFirst_ ? person.GetFullName() : person.GetName();
      return true;
    case 2:
      text = groups_ != nullptr ? person.GetGroupName(static_cast<const CUserGroupTable&>(*groups_))
                                : std::string("None");
      return true;
    case 3:
    case 4:
      text = person.GetContactText(fieldId - 3u);
      return true;
    case 5:
      text = person.GetCompany();
      return true;
    case 6:
      text = person.GetAddress().substr(0, person.GetAddress().find_first_of("\r\n"));
      return true;
    case 7:
      text = person.GetBetaSite() != 0 ? "Yes" : "No";
      return true;
    case 8:
      text = std::to_string(person.GetMailMethod());
      return true;
    case 9:
      text = person.GetEmail();
      return true;
    case 10:
    case 11:
      text = counted(fieldId == 11);
      return true;
    default:
      return false;
  }
}

CCustomerListView::CCustomerListView(ItemTable& people, ui::Ui& ui, const ItemTable* defects)
    : CUserListView(people, ui, nullptr, defects, "Customers") {
  SetDefaultColumns();
}

void CCustomerListView::SetDefaultColumns() {
  ClearColumns();
  AddColumn("Name", 1, 276, 50, 400, ListColumn::kRight);
  AddColumn("Company", 5, 138, 50, 400, ListColumn::kLeft);
  AddColumn("e-mail Address", 9, 138, 50, 400, ListColumn::kLeft);
  AddColumn("Reported", 10, 40, 50, 400, ListColumn::kRight);
  SetSortColumns(1, 2);
}

std::vector<ColumnChoice> CCustomerListView::GetColumnMenu() const { return Menu(kCustomerFields); }

bool CCustomerListView::Shows(const RecordItem& item) const { return IsPersonOf(item, true); }

CTaskListView::CTaskListView(ItemTable& tasks, ui::Ui& ui, const CDBDoc& doc)
    : CRecordListView(tasks, ui, "Workbook"), doc_(doc) {
  SetDefaultColumns();
}

void CTaskListView::SetDefaultColumns() {
  ClearColumns();
  AddColumn("Done", 1, 32, 0, 0, ListColumn::kLeft);
  AddColumn("Type", 2, 32, 0, 0, ListColumn::kLeft);
  AddColumn("Summary", 4, 234, 50, 400, ListColumn::kLeft);
  AddColumn("Due By", 5, 112, 50, 200, ListColumn::kLeft);
  AddColumn("Priority", 3, 78, 50, 200, ListColumn::kLeft);
  SetSortColumns(2, 1);
}

std::vector<ColumnChoice> CTaskListView::GetColumnMenu() const {
  return {{1, "Done"},   {2, "Type"},         {3, "Priority"},   {4, "Summary"},
          {5, "Due By"}, {6, "Date Entered"}, {7, "Assigned to"}};
}

bool CTaskListView::Shows(const RecordItem& item) const {
  return ShownInWorkbook(static_cast<const CTask&>(item), doc_.currentUserId());
}

CUserGroupListView::CUserGroupListView(ItemTable& groups, ui::Ui& ui, const ItemTable& people)
    : CRecordListView(groups, ui, "User Groups"), people_(people) {
  SetDefaultColumns();
}

void CUserGroupListView::SetDefaultColumns() {
  ClearColumns();
  AddColumn("Name", 1, 80, 50, 120, ListColumn::kLeft);
  AddColumn("Description", 2, 372, 50, 400, ListColumn::kLeft);
  AddColumn("Users in Popups?", 3, 372, 50, 400, ListColumn::kLeft);
  SetSortColumns(1, 2);
}

std::vector<ColumnChoice> CUserGroupListView::GetColumnMenu() const {
  return {{1, "Name"}, {2, "Description"}, {3, "Users in Popups?"}};
}

bool CUserGroupListView::GetCellText(const RecordItem& item, std::uint16_t fieldId,
                                     std::string& text) const {
  const auto& group = static_cast<const CUserGroup&>(item);
  switch (fieldId) {
    case 1:
      text = group.name.str();
      return true;
    case 2:
      text = group.description.str();
      return true;
    case 3:
      text.clear();
      for (const std::uint32_t id : group.userIds()) {
        if (const RecordItem* user = people_.ItemById(id)) {
          text += (text.empty() ? "" : ", ") + user->GetName();
        }
      }
      return true;
    default:
      return false;
  }
}

CSystemListView::CSystemListView(ItemTable& configs, ui::Ui& ui)
    : CRecordListView(configs, ui, "Test Configurations") {
  SetDefaultColumns();
}

void CSystemListView::SetDefaultColumns() {
  ClearColumns();
  AddColumn("Name", 1, 292, 20, 800, ListColumn::kLeft);
  AddColumn("Brand", 2, 80, 20, 200, ListColumn::kLeft);
  AddColumn("Model", 3, 80, 20, 200, ListColumn::kRight);
}

std::vector<ColumnChoice> CSystemListView::GetColumnMenu() const {
  return {{1, "Name"}, {2, "Brand"}, {3, "Model"}};
}

bool CSystemListView::GetCellText(const RecordItem& item, std::uint16_t fieldId,
                                  std::string& text) const {
  const auto& config = static_cast<const CTestConfig&>(item);
  const std::string* fields[] = {&config.name.str(), &config.brand.str(), &config.model.str()};
  if (fieldId < 1 || fieldId > std::size(fields)) return false;
  text = *fields[fieldId - 1];
  return true;
}

}  // namespace qm
