// The commands on a selection of defects that add no event: duplicate, delete, copy to the
// clipboard, and the reply to the people who reported them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "defects/defect.h"
#include "defects/defect_table.h"
#include "session/record_notice.h"
#include "store/db_status.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

// Whether the record's lock is held: by another user, or by this user in another window
// or another copy of the program, which would write its own copy over a change made now.
bool RecordLocked(CDBDoc& doc, Tag table, std::uint32_t id);

// The selected items of `table` whose record lock is held are left out, with `message` said
// once; the others are answered in selection order.
template <class Item>
std::vector<Item*> LeaveOutLocked(CDBDoc& doc, Tag table, const std::vector<Item*>& selection,
                                  ui::Ui& ui, std::string_view message) {
  std::vector<Item*> free;
  for (Item* item : selection) {
    if (!RecordLocked(doc, table, item->GetId())) free.push_back(item);
  }
  if (free.size() < selection.size()) ui.Tell(std::string(message), ui::Icon::kWarning);
  return free;
}

// Copies named "Copy of" each selected item that is not locked, each changed by `adjust`
// before it is stored; answers those stored. For items with a name of their own.
template <class Item>
std::vector<Item*> DuplicateNamed(CDBDoc& doc, ItemTable& table,
                                  const std::vector<Item*>& selection, ui::Ui& ui,
                                  std::string_view lockedMessage,
                                  const std::function<void(Item&)>& adjust = nullptr) {
  std::vector<Item*> copies;
  for (const Item* source : LeaveOutLocked(doc, table.tag(), selection, ui, lockedMessage)) {
    auto copy = std::make_unique<Item>();
    copy->CopyPayloadFrom(*source);
    copy->SetId(0);
    copy->name = "Copy of " + source->name.str();
    if (adjust) adjust(*copy);
    Item* raw = copy.get();
    std::unique_ptr<RecordItem> item = std::move(copy);
    if (table.AddItem(item) == DBStatus::kOk) copies.push_back(raw);
  }
  return copies;
}

// "Are you sure that you want to delete the selected items(s)? There is no undo
// available.", with OK and Cancel; true on OK.
bool ConfirmDeleteForGood(ui::Ui& ui);

// Deletes each of `items` from `table` for good, after `before` has run on it, and tells
// the other clients of each one that went. Answers how many went.
std::uint32_t DeleteForGood(CDBDoc& doc, ItemTable& table, const std::vector<RecordItem*>& items,
                            const std::function<void(RecordItem&)>& before = nullptr);

// What duplicate and delete say of the defects they leave out.
inline constexpr std::string_view kNotDuplicatedInUse =
    "One or more defects will not be duplicated because they are in use by another user.";
inline constexpr std::string_view kNotDeletedInUse =
    "One or more defects will not be deleted because they are in use by another user.";

// Copies of the selected defects, events and reported-by rows included. A copy of a
// numbered defect takes the next number; one of an un-numbered defect stays without. The
// copies are stored and join the table; answers them.
std::vector<CDefect*> DuplicateDefects(CDBDoc& doc, CDefectTable& table,
                                       const std::vector<CDefect*>& selection, ui::Ui& ui);

// Deletes the selected defects for good after asking, each with its stored attachments;
// other clients hear of each. Answers how many went.
std::uint32_t DeleteDefects(CDBDoc& doc, CDefectTable& table,
                            const std::vector<CDefect*>& selection, ui::Ui& ui);

// The program's own clipboard format: one entry per defect.
inline constexpr const char* kClipboardFormat = "CF_QUILLMARK";
//   u16     version, 1
//   u32     count of entries
//   per entry, strings of a u16 length and UTF-8 bytes:
//           summary, type, priority, product, component, reference, severity,
//           entered by (the user's name)
std::vector<std::uint8_t> ClipboardBlock(const std::vector<CDefect*>& selection);

// What a reply to the submitters of the selected defects starts with, before the mail
// dialog takes over.
struct SubmitterReply {
  std::vector<std::uint32_t> recipients;  // the found-by users, each once
  std::string subject;
  std::string body;
};
SubmitterReply ReplyToSubmitters(const std::vector<CDefect*>& selection);

}  // namespace qm
