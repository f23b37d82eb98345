// What the user and customer windows and lists do beyond one record: the checks of the
// user window, the statistics over the project's defects, the text and HTML forms, and the
// list commands that transfer people between the two lists and duplicate them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "defects/defect_table.h"
#include "people/user.h"
#include "platform/clock.h"
#include "shell/record_window.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

// Why the person cannot be saved as entered, in the order the window checks; nothing when
// they can. `people` is the table the person stands in or joins; logins are checked in a
// project that asks for them, and never for a customer.
std::optional<std::string> ValidatePerson(const ItemTable& people, const CUser& person,
                                          bool loginsOn);

// The Statistics tab, counted over every defect of the project.
struct PersonStatistics {
  std::uint32_t defects = 0;  // in the project
  std::uint32_t reported = 0;
  std::uint32_t lastReported = platform::kNoStamp;
  std::uint32_t assigned = 0;
  std::uint32_t fixed = 0;
  double hoursFixing = 0.0;
  std::uint32_t verified = 0;
  std::uint32_t closed = 0;
  std::uint32_t reopened = 0;
};
PersonStatistics GatherStatistics(const CDefectTable& defects, std::uint32_t personId);
// The tab's lines, label and value; a customer has the first two.
std::vector<std::pair<std::string, std::string>> StatisticsLines(const PersonStatistics& stats,
                                                                 const CUser& person);
// "Note: Percentages represent % of total defects (n) in the project file."
std::string StatisticsNote(const PersonStatistics& stats);

// The forms of a person with their statistics; CR LF line ends in the text.
void WritePersonText(const CDBDoc& doc, const CUser& person, const PersonStatistics& stats,
                     std::string& out);
void WritePersonHtml(const CDBDoc& doc, const CUser& person, const PersonStatistics& stats,
                     std::string& out);

// "Transfer to User List" and its way back: every selected person whose record nobody holds
// becomes a customer (or a user) and is saved; the others are left out, with a message.
// A person keeps everything on the way, login, group and assigned defects included, so
// before users who can log in or have defects assigned become customers the person is
// asked, with those people named. Answers the people moved.
std::vector<CUser*> TransferPeople(CDBDoc& doc, const std::vector<CUser*>& selection,
                                   bool toCustomers, ui::Ui& ui);
// "Delete Item" on the user list (or, with `customers`, the customer list): the selected
// people go for good, after the question, which names the defects still assigned to them;
// those defects then read "Unknown" as their assignee. Left out, with a message each: the
// people whose record is held or who are logged in now, and the user logged in here. The
// users of the user list are never all deleted: someone must be able to log in. Other
// clients hear of each. Answers how many went.
std::uint32_t DeletePeople(CDBDoc& doc, const std::vector<CUser*>& selection, bool customers,
                           ui::Ui& ui);
// Copies of the selected people who are not locked, saved and added; the copies are named
// "Copy of" the person, as two people may not share a name.
std::vector<CUser*> DuplicatePeople(CDBDoc& doc, const std::vector<CUser*>& selection, ui::Ui& ui);

// The record window of a user or a customer: the person as the window shows it, checked as
// the user window checks, with the statistics of its tab.
class CPersonWindow : public CRecordWindow {
 public:
  // `customers`: the window of the customer list, whose new people are customers.
  CPersonWindow(CDBDoc& doc, ItemTable& people, ui::Ui& ui, EditMarks& marks, bool customers,
                platform::Clock& clock = platform::Clock::System());

  // The person as shown; a view changes it here and then calls MarkChanged.
  CUser& person() { return *shown_; }
  void MarkChanged() { changed_ = true; }
  bool fieldsEnabled() const { return fieldsEnabled_; }
  // Whether the login and password of a person in the list may change, and whether the
  // person's group may: on an edit, only for those whose group allows "Edit User Login", and
  // "Edit User Groups", since a new group changes the groups' members. Without the right an
  // edit keeps what was stored, whatever was typed.
  bool loginEditable() const;
  bool groupEditable() const;
  // The Statistics tab, counted now.
  PersonStatistics Statistics() const;

 protected:
  std::string GetWindowTitle(std::uint16_t mode) const override;
  void LoadFields(const RecordItem& item) override;
  void StoreFields(RecordItem& item) override;
  std::unique_ptr<RecordItem> NewItem() override;
  std::optional<FieldRefusal> ValidateFields() override;
  // The group the person was given lists the person, and no other group does.
  void AfterAdd(RecordItem& item) override;
  void AfterUpdate(RecordItem& item) override { AfterAdd(item); }
  void EnableFields(bool enable) override { fieldsEnabled_ = enable; }
  bool FieldsChanged() const override;
  void ResetForAdd() override;

 private:
  // Puts back the stored login, password and group where the user may not change them.
  void KeepWhatMayNotChange();

  bool customers_;
  std::unique_ptr<CUser> shown_;
  std::vector<std::uint8_t> loaded_;
  bool changed_ = false;
  bool fieldsEnabled_ = true;
};

}  // namespace qm
