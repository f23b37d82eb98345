// The record form of user groups, their members and denied rights, and their table.
#include "people/user_group.h"

#include <algorithm>

#include "session/form_text.h"
#include "session/rights.h"

namespace qm {

namespace {

void WriteIds(PayloadWriter& out, const std::vector<std::uint32_t>& ids) {
  IdList list(4);
  for (std::uint32_t id : ids) list.Append(id);
  list.Write(out);
}

void ReadIds(PayloadReader& in, std::vector<std::uint32_t>& ids) {
  IdList list(4);
  if (!list.Read(in)) return;
  ids.clear();
  for (std::uint32_t i = 0; i < list.count(); ++i) ids.push_back(list.At(i));
}

void Remove(std::vector<std::uint32_t>& ids, std::uint32_t id) {
  ids.erase(std::remove(ids.begin(), ids.end(), id), ids.end());
}

bool Contains(const std::vector<std::uint32_t>& ids, std::uint32_t id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

// The lists of the forms, each a heading and its names: the members, the rights kept and
// the rights denied.
std::vector<std::pair<std::string_view, std::vector<std::string>>> NameLists(
    const CUserGroup& group, const ItemTable& users) {
  std::vector<std::string> members;
  for (const std::uint32_t id : group.userIds()) {
    if (const RecordItem* user = users.ItemById(id)) members.push_back(user->GetName());
  }
  std::vector<std::string> enabled;
  std::vector<std::string> disabled;
  for (std::uint32_t n = 1; n <= kRightCount; ++n) {
    (group.IsCommandDisabled(n) ? disabled : enabled)
        .emplace_back(RightName(static_cast<Right>(n)));
  }
  return {{"Users in Group:", members},
          {"Enabled Commands:", enabled},
          {"Disabled Commands:", disabled}};
}

}  // namespace

void WriteGroupText(const CUserGroup& group, const ItemTable& users, std::string& out) {
  TextLine(out, "Name: ", group.name.str());
  TextLine(out, "Description: ", group.description.str());
  TextLine(out, "Notes: ", group.notes.str());
  for (const auto& [heading, names] : NameLists(group, users)) {
    TextLine(out, std::string(heading) + " ", "");
    for (const std::string& name : names) TextLine(out, "", name);
  }
}

void WriteGroupHtml(const CUserGroup& group, const ItemTable& users, std::string& out) {
  constexpr std::string_view kNextRow = "</TR>\n<TR BGCOLOR=#FFFFFF>";
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 4, "Name:", group.name.str());
  out += kNextRow;
  HtmlCell(out, 4, "Description:", group.description.str());
  out += kNextRow;
  HtmlCell(out, 4, "Notes:", group.notes.str());
  for (const auto& [heading, names] : NameLists(group, users)) {
    out += kNextRow;
    out += "<TD COLSPAN=4><B>" + std::string(heading) + "</B></TD>";
    for (const std::string& name : names) {
      out += kNextRow;
      out += "<TD COLSPAN=4>" + EscapeHtml(name) + "</TD>";
    }
  }
  out += kHtmlRowClose;
  out += kHtmlTableClose;
}

void CUserGroup::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U8(deleted ? 1 : 0);
  WriteString(out, name);
  WriteString(out, description);
  WriteString(out, notes);
  WriteIds(out, userIds_);
  WriteIds(out, disabledCommands_);
  out.U16(customFlags);
  out.U32(defectFilterId);
  out.U16(onlyAssigned);
}

void CUserGroup::ReadFrom(PayloadReader& in) {
  const std::uint16_t version = ReadVersion(in, kOldestVersion, kVersion);
  if (version >= 0x101) in.U8(deleted);
  ReadString(in, name);
  ReadString(in, description);
  ReadString(in, notes);
  ReadIds(in, userIds_);
  ReadIds(in, disabledCommands_);
  if (version >= 0x102) in.U16(customFlags);
  if (version >= 0x103) {
    in.U32(defectFilterId);
    in.U16(onlyAssigned);
  }
}

bool CUserGroup::HasUser(std::uint32_t userId) const { return Contains(userIds_, userId); }

void CUserGroup::AddUser(std::uint32_t userId) {
  if (!HasUser(userId)) userIds_.push_back(userId);
}

void CUserGroup::RemoveUser(std::uint32_t userId) { Remove(userIds_, userId); }

bool CUserGroup::IsCommandDisabled(std::uint32_t right) const {
  return Contains(disabledCommands_, right);
}

void CUserGroup::SetCommandDisabled(std::uint32_t right, bool disabled) {
  if (!disabled) {
    Remove(disabledCommands_, right);
  } else if (!IsCommandDisabled(right)) {
    disabledCommands_.push_back(right);
  }
}

int CUserGroupTable::CompareItems(const RecordItem& a, const RecordItem& b,
                                  const SortOrder& /*order*/) const {
  return CompareNoCase(static_cast<const CUserGroup&>(a).name.str(),
                       static_cast<const CUserGroup&>(b).name.str());
}

}  // namespace qm
