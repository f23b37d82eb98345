// The field catalogue of defects, and the text of each field of a defect.
#include "defects/defect_fields.h"

#include <algorithm>
#include <cstdio>

#include "defects/defect.h"
#include "defects/text_forms.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/value_item.h"

namespace qm {

namespace {

constexpr std::array<DefectField, 55> kFields{{
    {1, "DNUM", "No."},
    {2, "SUMM", "Summary"},
    {3, "PROD", "Product"},
    {4, "TYPE", "Type"},
    {5, "PRIO", "Priority"},
    {6, "STAT", "Status"},
    {7, "RESO", "Resolution"},
    {8, "FNDD", "Date Found"},
    {9, "FNDB", "Found by"},
    {10, "DUPL", "Duplicate"},
    {11, "REPR", "Reproduced"},
    {12, "FNDV", "Version Found"},
    {13, "TCFG", "Test Config"},
    {14, "ASSD", "Date Assigned"},
    {15, "ASST", "Assigned To"},
    {16, "FIXD", "Date Fixed"},
    {17, "FIXB", "Fixed By"},
    {18, "FIXV", "Version Fixed"},
    {19, "FIXT", "Time to Fix"},
    {20, "DOCA", "Documentation"},
    {21, "TPLA", "Test Plan"},
    {22, "VERD", "Date Verified"},
    {23, "VERB", "Verified By"},
    {24, "COMP", "Component"},
    {25, "REFR", "Reference"},
    {26, "NUMR", "How Many"},
    {27, "ENTD", "Date Entered"},
    {28, "ENTB", "Entered By"},
    {29, "ESTD", "Date Estimated"},
    {30, "ESTB", "Estimated By"},
    {31, "ESTE", "Est. Effort"},
    {32, "ESTW", "Est. Date"},
    {33, "SEVR", "Severity"},
    {34, "WRKH", "Work Around?"},
    {35, "RELH", "Release Notes?"},
    {36, "RELV", "Release Version"},
    {37, "MODD", "Last Modified"},
    {38, "ESTV", "Estimated Version"},
    {39, "", "Company"},
    {40, "CLSD", "Date Closed"},
    {41, "CLSB", "Closed By"},
    {42, "CLSR", "Close Resolution"},
    {43, "DISP", "Disposition"},
    {44, "", "Found By Group"},
    {45, "", "Attachments?"},
    {200, "DESC", "Description"},
    {201, "WORK", "Work Around"},
    {202, "RELN", "Release Notes"},
    {203, "FIXN", "Fix Notes"},
    {204, "STEP", "Steps to Reproduce"},
    {205, "CMTA", "Comments"},
    {206, "", "Date Commented"},
    {207, "", "Comment By"},
    {208, "CLSN", "Close Notes"},
    {209, "CMTL", "Last Comments"},
}};

constexpr const char* kStatusTexts[] = {
    "Open", "Fixed", "Failed verification", "Passed verification, closed", "Closed", "Re-opened"};

}  // namespace

const std::array<DefectField, 55>& DefectFields() { return kFields; }

std::string_view DefectFieldLabel(std::uint16_t number) {
  if ((number < 1 || number > 45) && (number < 200 || number > 207)) return {};
  const auto it = std::find_if(kFields.begin(), kFields.end(),
                               [&](const DefectField& f) { return f.number == number; });
  return it != kFields.end() ? it->label : std::string_view();
}

std::optional<std::uint16_t> DefectFieldByTag(Tag tag) {
  const std::string text = TagText(tag);
  for (const DefectField& f : kFields) {
    if (!f.tag.empty() && f.tag == text) return f.number;
  }
  return std::nullopt;
}

// ---- the text of a field -------------------------------------------------------------

std::string CDefect::GetStatusText() const {
  const std::uint16_t status = copies_.status >= 1 && copies_.status <= 6 ? copies_.status : 1;
  std::string text = kStatusTexts[status - 1];
  if (copies_.assignedToId != 0) {
    const std::string name = NameOf(copies_.assignedToId);
    text += ", assigned to " + (name.empty() ? std::string("Unknown") : name);
  } else if (status != 4 && status != 5) {
    text += ", not assigned";
  }
  return text;
}

std::string CDefect::NameOf(std::uint32_t userId) const {
  return lookups_ != nullptr ? UserName(*lookups_, userId) : std::string();
}

bool CDefect::GetFieldText(std::uint16_t field, std::string& text, std::string* block) const {
  text.clear();
  const auto user = [&](std::uint32_t id) {
    const std::string name = NameOf(id);
    return name.empty() ? std::string("Unknown") : name;
  };
  const auto value = [&](Tag list, std::uint32_t id) {
    if (id == 0) return std::string();
    return lookups_ != nullptr ? ValueName(*lookups_, list, id) : std::string("<not set>");
  };
  const CUser* finder = lookups_ != nullptr ? lookups_->User(foundById) : nullptr;
  const CReportedBy* first = ReportedByAt(1);
  // The newest and the oldest event of a kind.
  const auto newest = [&](EventKind kind) -> const CDefectEvent* {
    for (std::uint32_t n = EventCount(); n >= 1; --n) {
      if (EventAt(n)->kind() == kind) return EventAt(n);
    }
    return nullptr;
  };
  const auto oldest = [&](EventKind kind) -> const CDefectEvent* {
    for (std::uint32_t n = 1; n <= EventCount(); ++n) {
      if (EventAt(n)->kind() == kind) return EventAt(n);
    }
    return nullptr;
  };
  const auto notesOf = [](const CDefectEvent* e) {
    return e != nullptr ? e->notes : std::string();
  };
  std::string longText;
  switch (field) {
    case 1:
      text = number == 0 ? "-" : std::to_string(number);
      return true;
    case 2:
      text = summary;
      return true;
    case 3:
      text = value(MakeTag("prod"), productId);
      return true;
    case 4:
      text = value(MakeTag("type"), typeId);
      return true;
    case 5:
      text = value(MakeTag("prio"), priorityId);
      return true;
    case 6:
      text = GetStatusText();
      return true;
    case 7:
      text = value(MakeTag("reso"), copies_.resolutionId);
      return true;
    case 8:
      text = FormatDate(dateFound);
      return true;
    case 9:
      text = user(foundById);
      return true;
    case 10:
      text = YesNo(isDuplicate);
      return true;
    case 11:
      text = first != nullptr && lookups_ != nullptr
                 ? ValueName(*lookups_, MakeTag("rpro"), first->reproducedId)
                 : std::string("<not set>");
      return true;
    case 12:
      text = versionFound;
      return true;
    case 13: {
      const CTestConfig* config =
          lookups_ != nullptr ? lookups_->TestConfig(testConfigId) : nullptr;
      text = config != nullptr ? config->GetName() : "Unknown";
      return true;
    }
    case 14:
      text = FormatDate(copies_.dateAssigned);
      return true;
    case 15:
      text = user(copies_.assignedToId);
      return true;
    case 16:
      text = FormatDate(copies_.dateFixed);
      return true;
    case 17:
      text = user(copies_.fixedById);
      return true;
    case 18:
      text = copies_.fixVersion;
      return true;
    case 19:
      text = GivenHours(copies_.hoursToFix);
      return true;
    case 20:
      text = YesNo(copies_.affectsDocs);
      return true;
    case 21:
      text = YesNo(copies_.affectsTestPlan);
      return true;
    case 22:
      text = FormatDate(copies_.dateVerified);
      return true;
    case 23:
      text = user(copies_.verifiedById);
      return true;
    case 24:
      text = value(MakeTag("comp"), componentId);
      return true;
    case 25:
      text = reference;
      return true;
    case 26:
      text = std::to_string(ReportedByCount());
      return true;
    case 27:
      text = FormatDate(dateEntered);
      return true;
    case 28:
      text = user(enteredById);
      return true;
    case 29:
      text = FormatDate(copies_.dateEstimated);
      return true;
    case 30:
      text = user(copies_.estimatedById);
      return true;
    case 31:
      text = GivenHours(copies_.estimatedHours);
      return true;
    case 32:
      text = FormatDate(copies_.estimatedFixDate);
      return true;
    case 33:
      text = value(MakeTag("sevr"), severityId);
      return true;
    case 34:
      text = YesNo(!workaround.empty());
      return true;
    case 35:
      text = YesNo(copies_.hasReleaseNotes);
      return true;
    case 36:
      text = copies_.releaseVersion;
      return true;
    case 37:
      text = FormatDate(dateModified);
      return true;
    case 38:
      text = copies_.estimatedVersion;
      return true;
    case 39:
      text = finder != nullptr ? finder->GetCompany() : std::string();
      return true;
    case 40:
      text = FormatDate(copies_.dateClosed);
      return true;
    case 41:
      text = user(copies_.closedById);
      return true;
    case 42:
      text = value(MakeTag("reso"), copies_.closeResolutionId);
      return true;
    case 43:
      text = value(MakeTag("usta"), dispositionId);
      return true;
    case 44: {
      const CUserGroup* group = finder != nullptr && lookups_ != nullptr
                                    ? lookups_->Group(finder->GetGroupId())
                                    : nullptr;
      text = group != nullptr ? group->GetName() : std::string();
      return true;
    }
    case 45: {
      bool any = false;
      for (std::uint32_t n = 1; n <= ReportedByCount(); ++n) {
        any = any || ReportedByAt(n)->AttachmentCount() > 0;
      }
      text = YesNo(any);
      return true;
    }
    case 206:
      text = FormatDate(oldest(EventKind::kComment) != nullptr ? oldest(EventKind::kComment)->date
                                                               : platform::kNoStamp);
      return true;
    case 207: {
      const CDefectEvent* comment = oldest(EventKind::kComment);
      text = comment != nullptr ? user(comment->userId) : "Unknown";
      return true;
    }
    case 200:
      longText = first != nullptr ? first->description : std::string();
      break;
    case 201:
      longText = workaround;
      break;
    case 202:
      longText = copies_.releaseNotes != nullptr ? *copies_.releaseNotes : std::string();
      break;
    case 203:
      longText = notesOf(newest(EventKind::kFix));
      break;
    case 204:
      longText = first != nullptr ? first->steps : std::string();
      break;
    case 205:
      for (std::uint32_t n = 1; n <= EventCount(); ++n) {
        if (EventAt(n)->kind() != EventKind::kComment) continue;
        if (longText.size() > 1) longText += "\r\r";
        longText += EventAt(n)->notes;
      }
      break;
    case 208:
      longText = notesOf(newest(EventKind::kClose));
      break;
    case 209:
      longText = notesOf(newest(EventKind::kComment));
      break;
    default:
      return false;
  }
  if (block != nullptr) {
    *block = std::move(longText);
  } else {
    text = std::move(longText);
  }
  return true;
}

bool CDefect::GetFieldByTag(Tag tag, std::string& text, std::string* block) const {
  if (const auto field = DefectFieldByTag(tag)) {
    const bool known = GetFieldText(*field, text, block);
    if (block != nullptr && *field < kFieldDescription) *block = text;
    return known;
  }
  if (tag == MakeTag("ASSN")) {
    text.clear();
    for (std::uint32_t n = EventCount(); n >= 1; --n) {
      if (EventAt(n)->kind() != EventKind::kAssign) continue;
      if (block != nullptr) {
        *block = EventAt(n)->notes;
      } else {
        text = EventAt(n)->notes;
      }
      break;
    }
    return true;
  }
  return false;
}

}  // namespace qm
