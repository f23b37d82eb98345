// The record form of people, their names, and their table.
#include "people/user.h"

#include "people/user_group.h"

namespace qm {

namespace {

// Where the parts of the placement block stand; see the header.
constexpr std::size_t kPlacementRunLength = 76;
constexpr std::size_t kPlacementTail = 84;
constexpr std::size_t kPlacementRow2 = 14;

std::span<std::uint8_t> Bytes(CUser::PlacementBlock& block, std::size_t at, std::size_t n) {
  return std::span<std::uint8_t>(block).subspan(at, n);
}

std::span<const std::uint8_t> Bytes(const CUser::PlacementBlock& block, std::size_t at,
                                    std::size_t n) {
  return std::span<const std::uint8_t>(block).subspan(at, n);
}

}  // namespace

CUser::CUser() { columns_.fill(IdList(kColumnElementSize)); }

void CUser::SetSavedText(std::size_t i, std::string_view text, std::uint16_t value) {
  savedTexts_.at(i) = text;
  savedValues_.at(i) = value;
}

void CUser::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U8(deleted ? 1 : 0);
  WriteString(out, firstName_);
  WriteString(out, lastName_);
  WriteString(out, login_);
  WriteString(out, password_);
  out.Text(notes_.str());
  for (const Contact& contact : contacts_) {
    out.U8(static_cast<std::uint8_t>(contact.kind));
    WriteString(out, contact.text);
  }
  out.U32(groupId_);
  out.Raw(Bytes(placementBlock_, 0, kPlacementRunLength));
  out.Raw(Bytes(placementBlock_, kPlacementTail, 4));
  out.Stamp(dateLastLogin_);
  for (const auto& text : savedTexts_) WriteString(out, text);
  for (std::uint16_t value : savedValues_) out.U16(value);
  WriteString(out, company_);
  WriteString(out, address_);
  out.U16(betaSite_);
  WriteString(out, email_);
  computerConfig_.WriteTo(out);
  out.U16(mailMethod_);
  out.U32(notifyFlags_);
  out.U16(isCustomer_);
  // Row 2 once more: a u32 and three u16, as they stand in the block.
  out.Raw(Bytes(placementBlock_, kPlacementRow2, 10));
  out.U16(reservedValue_);
  out.U32(listValue_);
  for (const IdList& columns : columns_) columns.Write(out);
}

void CUser::ReadFrom(PayloadReader& in) {
  const std::uint16_t version = ReadVersion(in, kOldestVersion, kVersion);
  if (version >= 0x102) in.U8(deleted);
  ReadString(in, firstName_);
  ReadString(in, lastName_);
  ReadString(in, login_);
  ReadString(in, password_);
  std::string notes;
  if (version < 0x108 ? ReadText8(in, notes) : in.Text(notes, kTextCapacity)) notes_ = notes;
  for (Contact& contact : contacts_) {
    std::uint8_t kind = 0;
    if (in.U8(kind)) contact.kind = kind;
    ReadString(in, contact.text);
  }
  in.U32(groupId_);
  in.Raw(Bytes(placementBlock_, 0, kPlacementRunLength));
  if (version > 0x100) in.Raw(Bytes(placementBlock_, kPlacementTail, 4));
  in.Stamp(dateLastLogin_);
  if (version > 0x102) {
    for (auto& text : savedTexts_) ReadString(in, text);
    for (std::uint16_t& value : savedValues_) in.U16(value);
  }
  if (version > 0x103) {
    ReadString(in, company_);
    ReadString(in, address_);
    in.U16(betaSite_);
    ReadString(in, email_);
  }
  // A record cut short before its configuration keeps the empty one.
  if (version > 0x104 && in.remaining() > 0) computerConfig_.ReadFrom(in);
  if (version > 0x105) in.U16(mailMethod_);
  if (version > 0x106) {
    in.U32(notifyFlags_);
    in.U16(isCustomer_);
    // Each value of the row on its own, so that a short record keeps the rest.
    in.Raw(Bytes(placementBlock_, kPlacementRow2, 4));
    for (std::size_t at = kPlacementRow2 + 4; at < kPlacementRow2 + 10; at += 2) {
      in.Raw(Bytes(placementBlock_, at, 2));
    }
  }
  if (version >= 0x109) {
    in.U16(reservedValue_);
    in.U32(listValue_);
    for (IdList& columns : columns_) columns.Read(in);
  }
}

std::string CUser::GetName() const {
  std::string name = lastName_.str();
  if (!lastName_.empty() && !firstName_.empty()) name += ", ";
  return name + firstName_.str();
}

std::string CUser::GetFullName() const {
  std::string name = firstName_.str();
  if (!firstName_.empty() && !lastName_.empty()) name += " ";
  return name + lastName_.str();
}

int CUser::Compare(const CUser* a, const CUser* b) {
  if (a == nullptr || b == nullptr) return a == b ? 0 : (a == nullptr ? -1 : 1);
  // GetName's parts, unjoined: a table of people sorts without making a string per look.
  const auto parts = [](const CUser& user) {
    const bool both = !user.lastName_.empty() && !user.firstName_.empty();
    return std::array<std::string_view, 3>{user.lastName_.str(), both ? ", " : "",
                                           user.firstName_.str()};
  };
  return CompareNoCase(parts(*a), parts(*b));
}

const CUserGroup* CUser::GetGroup(const CUserGroupTable& groups) const {
  if (groupId_ == 0) return nullptr;
  const auto* group = static_cast<const CUserGroup*>(groups.ItemById(groupId_));
  return group == nullptr || group->deleted ? nullptr : group;
}

std::string CUser::GetGroupName(const CUserGroupTable& groups) const {
  const CUserGroup* group = GetGroup(groups);
  return group == nullptr ? "None" : group->GetName();
}

int CUserTable::CompareItems(const RecordItem& a, const RecordItem& b,
                             const SortOrder& /*order*/) const {
  return CUser::Compare(static_cast<const CUser*>(&a), static_cast<const CUser*>(&b));
}

}  // namespace qm
