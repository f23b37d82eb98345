// Duplicate, delete, the clipboard block and the reply to submitters.
#include "defects/selection_commands.h"

#include <algorithm>
#include <array>

#include "defects/task.h"
#include "defects/text_forms.h"
#include "session/db_doc.h"
#include "session/numbering.h"
#include "session/payload.h"

namespace qm {

namespace {

constexpr std::uint16_t kClipboardVersion = 1;

// Tells the other clients of a multi-user project what happened to a defect.

}  // namespace

bool RecordLocked(CDBDoc& doc, Tag table, std::uint32_t id) {
  bool locked = false;
  // A lock that cannot be looked at does not keep the item out: the store's write lock
  // still orders the updates, and the last writer wins.
  return doc.store() != nullptr &&
         doc.store()->IsRecordLocked(table, id, locked) == DBStatus::kOk && locked;
}

bool ConfirmDeleteForGood(ui::Ui& ui) {
  return ui.Ask({"Are you sure that you want to delete the selected items(s)? There is no undo "
                 "available.",
                 "", ui::Icon::kQuestion, ui::Buttons::kOkCancel}) == ui::Answer::kOk;
}

std::uint32_t DeleteForGood(CDBDoc& doc, ItemTable& table, const std::vector<RecordItem*>& items,
                            const std::function<void(RecordItem&)>& before) {
  std::uint32_t deleted = 0;
  for (RecordItem* item : items) {
    const std::uint32_t id = item->GetId();
    if (before) before(*item);
    if (table.DeleteItem(*item, false) != DBStatus::kOk) continue;
    doc.PostChangeNotice(kNoticeDeleted, table.tag(), id);
    ++deleted;
  }
  return deleted;
}

std::vector<CDefect*> DuplicateDefects(CDBDoc& doc, CDefectTable& table,
                                       const std::vector<CDefect*>& selection, ui::Ui& ui) {
  std::vector<CDefect*> copies;
  for (CDefect* source : LeaveOutLocked(doc, kDefectTag, selection, ui, kNotDuplicatedInUse)) {
    std::unique_ptr<CDefect> copy = source->Clone();
    copy->SetId(0);
    if (source->number != 0 &&
        doc.NextCounter(kMiscTag, kDefectCounterRecord, copy->number) != DBStatus::kOk) {
      continue;
    }
    CDefect* raw = copy.get();
    std::unique_ptr<RecordItem> item = std::move(copy);
    if (table.AddItem(item) == DBStatus::kOk) copies.push_back(raw);
  }
  return copies;
}

std::uint32_t DeleteDefects(CDBDoc& doc, CDefectTable& table,
                            const std::vector<CDefect*>& selection, ui::Ui& ui) {
  const std::vector<CDefect*> free =
      LeaveOutLocked(doc, kDefectTag, selection, ui, kNotDeletedInUse);
  if (free.empty()) return 0;
  if (!ConfirmDeleteForGood(ui)) return 0;
  auto* workbook = dynamic_cast<CTaskTable*>(doc.GetTable(kTasksTag));
  return DeleteForGood(doc, table, {free.begin(), free.end()}, [workbook](RecordItem& defect) {
    // The workbook lets go of the defect first: its task must not outlive it.
    if (workbook != nullptr) DropDefectTasks(*workbook, static_cast<const CDefect&>(defect));
  });
}

std::vector<std::uint8_t> ClipboardBlock(const std::vector<CDefect*>& selection) {
  CHandleFile file;
  PayloadWriter out(file);
  out.U16(kClipboardVersion);
  out.U32(static_cast<std::uint32_t>(selection.size()));
  for (const CDefect* defect : selection) {
    constexpr std::array<std::uint16_t, 8> kFields{2, 4, 5, 3, 24, 25, 33, 28};
    for (const std::uint16_t field : kFields) {
      out.Text(defect->FieldText(field));
    }
  }
  return file.Detach();
}

SubmitterReply ReplyToSubmitters(const std::vector<CDefect*>& selection) {
  SubmitterReply reply;
  for (const CDefect* defect : selection) {
    for (std::uint32_t n = 1; n <= defect->ReportedByCount(); ++n) {
      const std::uint32_t who = defect->ReportedByAt(n)->foundById;
      if (who != 0 && std::find(reply.recipients.begin(), reply.recipients.end(), who) ==
                          reply.recipients.end()) {
        reply.recipients.push_back(who);
      }
    }
    const CReportedBy* first = defect->ReportedByAt(1);
    reply.body += QuoteText(CrToCrLf(first != nullptr ? first->description : std::string()));
    reply.body += "\r\n>\r\n";
  }
  if (!selection.empty()) {
    reply.subject = "Re: " + selection.front()->summary;
    if (selection.size() > 1) reply.subject += ", etc.";
  }
  return reply;
}

}  // namespace qm
