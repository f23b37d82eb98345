// The change text of a saved defect: the defect's fields, its reported-by rows, its
// notification list and its events, each compared old against new in a fixed order.
#include "defects/change_history.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "defects/text_forms.h"
#include "people/record_fields.h"

namespace qm {

namespace {

bool SameNoCase(std::string_view a, std::string_view b) { return CompareNoCase(a, b) == 0; }

// Two stamps on the same calendar day; a stamp that is not set matches only another.
bool SameDay(std::uint32_t a, std::uint32_t b) {
  if (a == platform::kNoStamp || b == platform::kNoStamp) return a == b;
  const platform::CivilTime x = platform::CivilFromStamp(a);
  const platform::CivilTime y = platform::CivilFromStamp(b);
  return x.year == y.year && x.month == y.month && x.day == y.day;
}

// Hours as the history shows them; hours not given (below 0) read as 0.
std::string Hours(double hours) { return FormatHours(std::max(hours, 0.0)); }

std::string_view HistoryName(EventKind kind) {
  switch (kind) {
    case EventKind::kAssign:
      return "Assignment";
    case EventKind::kFix:
      return "Fix";
    case EventKind::kVerify:
      return "Verification";
    case EventKind::kClose:
      return "Closed";
    case EventKind::kReOpen:
      return "Re-open";
    case EventKind::kEstimate:
      return "Estimate";
    case EventKind::kComment:
      return "Comment";
    case EventKind::kReleaseNotes:
      return "Release Notes";
  }
  return {};
}

std::string_view PersonLabel(EventKind kind) {
  switch (kind) {
    case EventKind::kAssign:
      return "Assigned to";
    case EventKind::kFix:
      return "Fixed by";
    case EventKind::kVerify:
      return "Verified by";
    case EventKind::kClose:
      return "Closed by";
    case EventKind::kReOpen:
      return "Re-opened by";
    case EventKind::kEstimate:
      return "Estimated by";
    case EventKind::kComment:
      return "Comment by";
    case EventKind::kReleaseNotes:
      return "Release Notes by";
  }
  return {};
}

std::string Header(std::string_view what, std::string_view name, std::string_view date) {
  std::string line = "**** ";
  line += what;
  line += ' ';
  line += name;
  line += " dated ";
  line += date;
  line += " ****\r";
  return line;
}

// "<label> changed from [old] to [new]"
std::string Changed(std::string_view label, std::string_view from, std::string_view to) {
  std::string detail(label);
  detail += " changed from [";
  detail += from;
  detail += "] to [";
  detail += to;
  detail += ']';
  return detail;
}

// The form of the long texts, each on lines of its own.
std::string ChangedBlock(std::string_view label, std::string_view from, std::string_view to) {
  std::string detail(label);
  detail += " changed from...\r[";
  detail += from;
  detail += "]\r to...\r[";
  detail += to;
  detail += ']';
  return detail;
}

// The details of one changed row under their header. A CR goes between two details; a
// row without details writes nothing, not even its header.
class RowChanges {
 public:
  explicit RowChanges(std::string header) : text_(std::move(header)) {}

  void Add(const std::string& detail) {
    if (any_) text_ += '\r';
    text_ += detail;
    any_ = true;
  }
  void AppendTo(std::string& out) const {
    if (!any_) return;
    out += text_;
    out += "\r\r";
  }

 private:
  std::string text_;
  bool any_ = false;
};

// ---- the defect's own fields ----------------------------------------------------------

void CompareFields(const DefectLookups& lookups, const CDefect& o, const CDefect& n,
                   std::string& text) {
  const auto line = [&](std::string_view label, std::string_view from, std::string_view to) {
    text += label;
    text += ": [";
    text += from;
    text += "] to [";
    text += to;
    text += "]\r";
  };
  const auto value = [&](std::string_view label, Tag list, std::uint32_t from, std::uint32_t to) {
    if (from != to) {
      line(label, ValueName(lookups, list, from), ValueName(lookups, list, to));
    }
  };
  const auto words = [&](std::string_view label, const std::string& from, const std::string& to) {
    if (!SameNoCase(from, to)) line(label, from, to);
  };
  const auto date = [](std::uint32_t stamp) {
    return stamp == platform::kNoStamp ? std::string("<not set>") : FormatDate(stamp);
  };

  value("Type", MakeTag("type"), o.typeId, n.typeId);
  value("Priority", MakeTag("prio"), o.priorityId, n.priorityId);
  value("Product", MakeTag("prod"), o.productId, n.productId);
  value("Component", MakeTag("comp"), o.componentId, n.componentId);
  words("Reference", o.reference, n.reference);
  value("Severity", MakeTag("sevr"), o.severityId, n.severityId);
  if (o.enteredById != n.enteredById) line("Entered by", o.FieldText(28), n.FieldText(28));
  if (!SameDay(o.dateEntered, n.dateEntered)) {
    line("Date Entered", date(o.dateEntered), date(n.dateEntered));
  }
  words("Summary", o.summary, n.summary);
  words("Workaround", o.workaround, n.workaround);
}

// ---- reported-by rows -----------------------------------------------------------------

// A row's text form as the change text writes it: lines in CR, one CR behind.
void AppendRowText(const DefectLookups& lookups, const CReportedBy& row, std::string& text) {
  std::string form;
  row.WriteText(form, lookups);
  text += CrLfToCr(form);
  text += '\r';
}

void CompareReportedBy(const DefectLookups& lookups, const CReportedBy& o, const CReportedBy& n,
                       std::string& text) {
  RowChanges changes(Header("Changed", "reported by", FormatDate(o.dateFound)));
  if (!SameDay(o.dateFound, n.dateFound)) {
    changes.Add(Changed("Date found", FormatDate(o.dateFound), FormatDate(n.dateFound)));
  }
  if (o.foundById != n.foundById) {
    changes.Add(Changed("Found by", o.GetFoundByName(lookups), n.GetFoundByName(lookups)));
  }
  if (!SameNoCase(o.versionFound, n.versionFound)) {
    changes.Add(Changed("Version found in", o.versionFound, n.versionFound));
  }
  if (!SameNoCase(o.description, n.description)) {
    changes.Add(ChangedBlock("Description", o.description, n.description));
  }
  // The one detail that ends in a CR of its own.
  if (o.reproducedId != n.reproducedId) {
    changes.Add(Changed("Reproduced", o.GetReproducedName(lookups), n.GetReproducedName(lookups)) +
                '\r');
  }
  if (!SameNoCase(o.steps, n.steps)) {
    changes.Add(ChangedBlock("Steps to Reproduce", o.steps, n.steps));
  }
  if (!SameNoCase(o.otherHardware, n.otherHardware)) {
    changes.Add(ChangedBlock("Other Hardware and Software", o.otherHardware, n.otherHardware));
  }
  const std::uint32_t before = o.AttachmentCount();
  const std::uint32_t after = n.AttachmentCount();
  if (after < before) {
    changes.Add("Removed " + std::to_string(before - after) + " attachments");
  } else if (after > before) {
    changes.Add("Added " + std::to_string(after - before) + " attachments");
  }
  changes.AppendTo(text);
}

void CompareReportedByTables(const DefectLookups& lookups, const CDefect& o, const CDefect& n,
                             std::string& text) {
  const auto find = [](const CDefect& d, std::uint32_t sessionId,
                       std::uint32_t limit) -> const CReportedBy* {
    for (std::uint32_t i = 1; i <= std::min(limit, d.ReportedByCount()); ++i) {
      if (d.ReportedByAt(i)->sessionId == sessionId) return d.ReportedByAt(i);
    }
    return nullptr;
  };
  for (std::uint32_t i = 1; i <= o.ReportedByCount(); ++i) {
    const CReportedBy& row = *o.ReportedByAt(i);
    if (const CReportedBy* now = find(n, row.sessionId, n.ReportedByCount())) {
      CompareReportedBy(lookups, row, *now, text);
    } else {
      text += Header("Deleted", "reported by", FormatDate(row.dateFound));
      AppendRowText(lookups, row, text);
    }
  }
  // Added rows are looked for only at the places the old table had, and only among as
  // many old rows as the new table has: a row added behind the old ones is not reported,
  // and one that moved forward past a deleted row is reported as added.
  for (std::uint32_t i = 1; i <= o.ReportedByCount(); ++i) {
    const CReportedBy* row = n.ReportedByAt(i);
    if (row == nullptr || find(o, row->sessionId, n.ReportedByCount()) != nullptr) continue;
    text += Header("Added", "reported by", FormatDate(row->dateFound));
    AppendRowText(lookups, *row, text);
  }
}

// ---- the notification list ------------------------------------------------------------

// The ids of `list` that `other` lacks, in the order of `list`.
std::vector<std::uint32_t> Missing(const std::vector<std::uint32_t>& list,
                                   const std::vector<std::uint32_t>& other) {
  std::vector<std::uint32_t> ids;
  for (const std::uint32_t id : list) {
    if (std::find(other.begin(), other.end(), id) == other.end()) ids.push_back(id);
  }
  return ids;
}

// The count takes in every id; the names only those of users still there. A name is
// followed by ", " unless its id is the last, so an id without a user at the end leaves
// the separator behind the name before it.
void LogNames(const DefectLookups& lookups, const std::vector<std::uint32_t>& ids,
              std::string_view verb, std::string& text) {
  if (ids.empty()) return;
  text += std::to_string(ids.size()) + " name" + (ids.size() >= 2 ? "s " : " ");
  text += verb;
  text += " the notification list: ";
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (lookups.User(ids[i]) == nullptr) continue;
    text += UserName(lookups, ids[i]);
    if (i + 1 < ids.size()) text += ", ";
  }
  text += '\r';
}

// ---- events ---------------------------------------------------------------------------

void CompareKindDetails(const DefectLookups& lookups, const CDefectEvent& o, const CDefectEvent& n,
                        RowChanges& changes) {
  const auto resolution = [&](std::uint32_t id) { return ValueName(lookups, MakeTag("reso"), id); };
  if (const auto* of = dynamic_cast<const CFixEvent*>(&o)) {
    const auto& nf = dynamic_cast<const CFixEvent&>(n);
    if (of->hours != nf.hours) {
      changes.Add(Changed("Hours to fix", Hours(of->hours), Hours(nf.hours)));
    }
    if (!SameNoCase(of->fixVersion, nf.fixVersion)) {
      changes.Add(Changed("Version fixed in", of->fixVersion, nf.fixVersion));
    }
    // A fix calls its resolution a close resolution too.
    if (of->resolutionId != nf.resolutionId) {
      changes.Add(
          Changed("Close resolution", resolution(of->resolutionId), resolution(nf.resolutionId)));
    }
    if (of->affectsDocs != nf.affectsDocs) {
      changes.Add(Changed("Affects documentation", YesNo(of->affectsDocs), YesNo(nf.affectsDocs)));
    }
    if (of->affectsTestPlan != nf.affectsTestPlan) {
      changes.Add(
          Changed("Affects test plan", YesNo(of->affectsTestPlan), YesNo(nf.affectsTestPlan)));
    }
  } else if (const auto* ov = dynamic_cast<const CVerifyEvent*>(&o)) {
    const auto& nv = dynamic_cast<const CVerifyEvent&>(n);
    const auto result = [](bool passed) { return passed ? "Passed" : "Failed"; };
    if (ov->passed != nv.passed) {
      changes.Add(Changed("Verification", result(ov->passed), result(nv.passed)));
    }
  } else if (const auto* oc = dynamic_cast<const CCloseEvent*>(&o)) {
    const auto& nc = dynamic_cast<const CCloseEvent&>(n);
    if (oc->resolutionId != nc.resolutionId) {
      changes.Add(
          Changed("Close resolution", resolution(oc->resolutionId), resolution(nc.resolutionId)));
    }
  } else if (const auto* oe = dynamic_cast<const CEstimateEvent*>(&o)) {
    const auto& ne = dynamic_cast<const CEstimateEvent&>(n);
    // The detail shows the dates of the two events, not the estimated dates it compares.
    if (!SameDay(oe->estimatedDate, ne.estimatedDate)) {
      changes.Add(Changed("Estimated fix date", FormatDate(oe->date), FormatDate(ne.date)));
    }
    if (oe->hours != ne.hours) {
      changes.Add(Changed("Estimated hours to fix", Hours(oe->hours), Hours(ne.hours)));
    }
    if (!SameNoCase(oe->estimatedVersion, ne.estimatedVersion)) {
      changes.Add(Changed("Estimated version fixed in", oe->estimatedVersion, ne.estimatedVersion));
    }
  } else if (const auto* orn = dynamic_cast<const CReleaseNotesEvent*>(&o)) {
    const auto& nrn = dynamic_cast<const CReleaseNotesEvent&>(n);
    if (!SameNoCase(orn->releaseVersion, nrn.releaseVersion)) {
      changes.Add(Changed("Release Notes version", orn->releaseVersion, nrn.releaseVersion));
    }
  }
}

void CompareEvent(const DefectLookups& lookups, const CDefectEvent& o, const CDefectEvent& n,
                  std::string& text) {
  RowChanges changes(Header("Changed", HistoryName(o.kind()), FormatDate(o.date)));
  if (!SameDay(o.date, n.date)) {
    changes.Add(Changed("Date", FormatDate(o.date), FormatDate(n.date)));
  }
  if (o.userId != n.userId) {
    changes.Add(
        Changed(PersonLabel(o.kind()), UserName(lookups, o.userId), UserName(lookups, n.userId)));
  }
  // Unlike every other text, notes that differ only in case are a change.
  if (o.notes != n.notes) changes.Add(ChangedBlock("Notes", o.notes, n.notes));
  // Paired events are copies of one event, so their kinds agree; a kind's own fields are
  // compared only between events of that kind all the same.
  if (o.kind() == n.kind()) CompareKindDetails(lookups, o, n, changes);
  changes.AppendTo(text);
}

// An event's text form as the change text writes it, under its header.
void LogEvent(const DefectLookups& lookups, std::string_view what, const CDefectEvent& event,
              std::string& text) {
  text += Header(what, HistoryName(event.kind()), FormatDate(event.date));
  std::string form;
  event.WriteText(form, lookups);
  text += CrLfToCr(form);
  text += '\r';
}

const CDefectEvent* FindEvent(const CDefect& d, std::uint32_t sessionId) {
  for (std::uint32_t i = 1; i <= d.EventCount(); ++i) {
    if (d.EventAt(i)->sessionId == sessionId) return d.EventAt(i);
  }
  return nullptr;
}

void CompareEvents(const DefectLookups& lookups, const CDefect& o, const CDefect& n,
                   std::string& text) {
  for (std::uint32_t i = 1; i <= o.EventCount(); ++i) {
    const CDefectEvent& event = *o.EventAt(i);
    if (const CDefectEvent* now = FindEvent(n, event.sessionId)) {
      CompareEvent(lookups, event, *now, text);
    } else {
      LogEvent(lookups, "Deleted", event, text);
    }
  }
  for (std::uint32_t i = 1; i <= n.EventCount(); ++i) {
    const CDefectEvent& event = *n.EventAt(i);
    if (FindEvent(o, event.sessionId) == nullptr) LogEvent(lookups, "Added", event, text);
  }
}

}  // namespace

bool BuildChangeText(const DefectLookups& lookups, const CDefect& oldDefect,
                     const CDefect& newDefect, std::string& text) {
  text.clear();
  CompareFields(lookups, oldDefect, newDefect, text);
  CompareReportedByTables(lookups, oldDefect, newDefect, text);
  LogNames(lookups, Missing(newDefect.notifyList(), oldDefect.notifyList()), "added", text);
  LogNames(lookups, Missing(oldDefect.notifyList(), newDefect.notifyList()), "removed", text);
  CompareEvents(lookups, oldDefect, newDefect, text);
  return !text.empty();
}

}  // namespace qm
