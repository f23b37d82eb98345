// The user and customer windows' logic: the checks in their order, the statistics over
// the defects, the text form, and the transfer, duplicate and delete commands on a real
// project.
#include "shell/people_window.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include "people/user_group.h"
#include "shell_project.h"

namespace qm::test {
namespace {

std::unique_ptr<CUser> Person(const char* first, const char* last, const char* login,
                              std::uint32_t group) {
  auto person = std::make_unique<CUser>();
  person->SetFirstName(first);
  person->SetLastName(last);
  person->SetLogin(login);
  person->SetGroupId(group);
  return person;
}

TEST(PeopleWindow, TheChecksComeInTheirOrder) {
  ScriptedUi ui;
  CUserTable people(nullptr, ui);
  const std::unique_ptr<CUser> tess = Person("Tess", "Ng", "tess", 1);
  ASSERT_EQ(people.AddSorted(tess.get()), 1u);
  ASSERT_EQ(people.count(), 1u);

  CUser person;
  person.SetCustomer(false);
  const auto check = [&](bool loginsOn) {
    return ValidatePerson(people, person, loginsOn).value_or("");
  };
  EXPECT_EQ(check(true),
            "Please enter a unique name for this user to disinguish her or him from other users.");
  person.SetFirstName("TESS");
  person.SetLastName("ng");
  EXPECT_EQ(check(true),
            "A user with the same first and last name already exists, please enter a unique "
            "name.");
  person.SetLastName("Ngata");
  EXPECT_EQ(check(true),
            "Please enter a unique login name for this user to disinguish her or him from other "
            "users when logging into the program.");
  person.SetLogin("Tess");
  EXPECT_EQ(check(true),
            "A user with the same login name already exists, please enter a unique name.");
  EXPECT_EQ(check(false),
            "Please select the user group to which this user belongs. The user group defines the "
            "user's security settings.")
      << "without logins the login is not checked";
  person.SetGroupId(1);
  EXPECT_EQ(check(false), "");
  person.SetGroupId(0);
  person.SetCustomer(true);
  EXPECT_EQ(check(true), "") << "a customer needs neither login nor group";
}

TEST(PeopleWindow, StatisticsCountTheDefectsOfThePerson) {
  ScriptedUi ui;
  CDefectTable defects(nullptr, ui, static_cast<const DefectLookups*>(nullptr));
  std::vector<std::unique_ptr<CDefect>> made;
  const auto add = [&](std::vector<std::pair<EventKind, double>> events,
                       std::vector<std::pair<std::uint32_t, std::uint32_t>> reports) {
    made.push_back(std::make_unique<CDefect>());
    for (const auto& [finder, date] : reports) {
      auto row = std::make_unique<CReportedBy>();
      row->foundById = finder;
      row->dateFound = date;
      made.back()->AddReportedBy(std::move(row));
    }
    std::uint32_t date = 100;
    for (const auto& [kind, hours] : events) {
      auto event = CDefectEvent::Make(static_cast<std::int16_t>(kind));
      event->userId = 7;
      event->date = date++;
      if (auto* fix = dynamic_cast<CFixEvent*>(event.get())) fix->hours = hours;
      made.back()->AddEvent(std::move(event));
    }
    defects.AddSorted(made.back().get());
  };
  add({{EventKind::kFix, 1.5}, {EventKind::kVerify, 0}},
      {{7, 3'000'000'000u}, {7, 3'100'000'000u}});
  add({{EventKind::kAssign, 0}}, {{8, 3'200'000'000u}});
  add({{EventKind::kFix, 2.0}, {EventKind::kClose, 0}}, {});

  const PersonStatistics s = GatherStatistics(defects, 7);
  CUser user;
  const auto lines = StatisticsLines(s, user);
  std::string text;
  for (const auto& [label, value] : lines) text += label + value + "\n";
  EXPECT_EQ(text,
            "Defects reported by user: 1 (33%)\n"
            "Last reported a defect: " +
                FormatDate(3'100'000'000u) +
                "\n"
                "Last logged in: Never\n"
                "Defects currently assigned to user: 1 (33%)\n"
                "Defects fixed by user: 2 (66%)\n"
                "Time user spent fixing defects:  3.50 hrs\n"
                "Defects verified by user: 1 (33%)\n"
                "Defects closed by user: 2 (66%)\n"  // a passed verify closes too
                "Defects re-opened by user: 0 (0%)\n");
  EXPECT_EQ(StatisticsNote(s),
            "Note: Percentages represent % of total defects (3) in the "
            "project file.");
  CUser customer;
  customer.SetCustomer(true);
  const auto few = StatisticsLines(GatherStatistics(defects, 9), customer);
  ASSERT_EQ(few.size(), 2u);
  EXPECT_EQ(few[0].first + few[0].second, "Defects reported by customer: 0 (0%)");
  EXPECT_EQ(few[1].second, "Never");
}

class PeopleProject : public ShellProject {
 protected:
  void SetUp() override {
    doc = std::make_unique<CDBDoc>(ui, kinds, host);
    ASSERT_EQ(doc->NewProject(path, true), 1);
    for (const auto& [first, last, login] :
         {std::tuple{"Tess", "Ng", "tess"}, std::tuple{"Ola", "Berg", "ola"}}) {
      std::unique_ptr<RecordItem> item = Person(first, last, login, 1);
      ASSERT_EQ(doc->GetTable(kUserTag)->AddItem(item), DBStatus::kOk);
    }
  }
  CUser& Named(const std::string& name) {
    ItemTable& people = *doc->GetTable(kUserTag);
    for (std::uint32_t p = 1; p <= people.count(); ++p) {
      if (people.ItemAt(p)->GetName() == name) return static_cast<CUser&>(*people.ItemAt(p));
    }
    throw std::out_of_range(name);
  }
  // A new defect, assigned to the person.
  CDefect& AssignDefectTo(const CUser& person) {
    ItemTable& defects = *doc->GetTable(kDefectTag);
    std::unique_ptr<RecordItem> item = defects.NewItem();
    auto& defect = static_cast<CDefect&>(*item);
    defect.summary = "Crash on save";
    auto assign = CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kAssign));
    assign->userId = person.GetId();
    defect.AddEvent(std::move(assign));
    EXPECT_EQ(defects.AddItem(item), DBStatus::kOk);
    return defect;
  }
};

TEST_F(PeopleProject, TransferAndDuplicateLeaveOutWhatIsLocked) {
  CUser& tess = Named("Ng, Tess");
  CUser& ola = Named("Berg, Ola");
  ASSERT_EQ(doc->store()->LockRecord(kUserTag, ola.GetId(), doc->currentUserId()), DBStatus::kOk);
  ui.Script({ui::Answer::kOk, ui::Answer::kYes});  // the one left out; tess can log in
  EXPECT_EQ(TransferPeople(*doc, {&tess, &ola}, true, ui), std::vector<CUser*>{&tess});
  EXPECT_EQ(ui.Texts().front(),
            "One or more users will not be transferred because they are in use by another user.");
  EXPECT_TRUE(tess.IsCustomer());
  EXPECT_FALSE(ola.IsCustomer()) << "its window holds it";
  EXPECT_TRUE(TransferPeople(*doc, {&tess}, true, ui).empty()) << "a customer already";
  ui.shown.clear();

  const std::vector<CUser*> copies = DuplicatePeople(*doc, {&tess, &ola}, ui);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"One or more users will not be duplicated "
                                                 "because they are in use by another user."});
  ASSERT_EQ(copies.size(), 1u);
  EXPECT_EQ(copies[0]->GetName(), "Ng, Copy of Tess");
  EXPECT_TRUE(copies[0]->IsCustomer());
  EXPECT_EQ(copies[0]->GetLogin(), "");
  EXPECT_NE(copies[0]->GetId(), tess.GetId());

  std::string text;
  WritePersonText(
      *doc, tess,
      GatherStatistics(*static_cast<CDefectTable*>(doc->GetTable(kDefectTag)), tess.GetId()), text);
  EXPECT_EQ(text.substr(0, text.find("Computer Configuration: ")),
            "Name: Ng, Tess\r\nCompany: \r\nBeta Site: No\r\nAddress: \r\ne-mail: \r\nNotes: \r\n");
  EXPECT_NE(text.find("Statistics: \r\nDefects reported by customer: 0 (0%)\r\n"),
            std::string::npos);
}

// The window checks through ValidatePerson: a customer needs no login, a user a unique one.
TEST_F(PeopleProject, ThePersonWindowAddsCheckedPeopleAndEditsThem) {
  CPersonWindow adding(*doc, *doc->GetTable(kUserTag), ui, marks, true);
  adding.Open(CRecordWindow::kAddClose);
  EXPECT_EQ(adding.title(), "Add Customer");
  EXPECT_FALSE(adding.OnAcceptButton()) << "no name";
  adding.person().SetLastName("Buyer");
  EXPECT_TRUE(adding.OnAcceptButton());
  EXPECT_TRUE(Named("Buyer").IsCustomer());

  CPersonWindow editing(*doc, *doc->GetTable(kUserTag), ui, marks, false);
  editing.Open(CRecordWindow::kEdit, {&Named("Ng, Tess")});
  EXPECT_EQ(editing.title(), "Edit User - Ng, Tess");
  editing.person().SetLogin("OLA");
  EXPECT_FALSE(editing.OnAcceptButton());
  editing.person().SetEmail("tess@example.org");
  editing.person().SetLogin("tess");
  EXPECT_TRUE(editing.OnAcceptButton());
  EXPECT_EQ(Named("Ng, Tess").GetEmail(), "tess@example.org");
  EXPECT_EQ(ui.shown.size(), 2u);

  // Without "Edit User Login" and "Edit User Groups" an edit keeps the stored login,
  // password and group.
  auto& group = static_cast<CUserGroup&>(*doc->GetTable(kGroupTag)->ItemAt(1));
  group.SetCommandDisabled(RightNumber(Right::kEditUserLogin), true);
  group.SetCommandDisabled(RightNumber(Right::kEditUserGroups), true);
  ASSERT_EQ(doc->GetTable(kGroupTag)->SaveItem(group), DBStatus::kOk);
  ASSERT_GE(doc->LogInUser(ui::LoginEntry{"ola", ""}), 0);
  CPersonWindow limited(*doc, *doc->GetTable(kUserTag), ui, marks, false);
  limited.Open(CRecordWindow::kEdit, {&Named("Ng, Tess")});
  EXPECT_TRUE(limited.editable());
  EXPECT_FALSE(limited.loginEditable());
  limited.person().SetLogin("tess2");
  limited.person().SetPassword("secret");
  limited.person().SetGroupId(0);
  limited.person().SetEmail("ng@example.org");
  EXPECT_TRUE(limited.OnAcceptButton());
  EXPECT_EQ(Named("Ng, Tess").GetEmail(), "ng@example.org");
  EXPECT_EQ(Named("Ng, Tess").GetLogin(), "tess");
  EXPECT_EQ(Named("Ng, Tess").GetPassword(), "");
  EXPECT_EQ(Named("Ng, Tess").GetGroupId(), 1u);
}

// Moving people who can log in or have work assigned to the customer list asks, naming
// them; the way back asks nothing.
TEST_F(PeopleProject, TransferToCustomersAsksForPeopleWhoLogInOrHaveDefects) {
  CUser& tess = Named("Ng, Tess");
  CUser& ola = Named("Berg, Ola");
  AssignDefectTo(tess);
  ola.SetLogin("");
  const std::string question =
      "Ng, Tess can log in as \"tess\" and has 1 defect assigned.\n"
      "\nA customer keeps the login and the assigned defects.\n\nDo you want to transfer the "
      "selected users to the customer list?";
  ui.Script({ui::Answer::kNo, ui::Answer::kYes});
  EXPECT_TRUE(TransferPeople(*doc, {&ola, &tess}, true, ui).empty());
  EXPECT_FALSE(ola.IsCustomer()) << "No moves no one";
  EXPECT_EQ(TransferPeople(*doc, {&ola, &tess}, true, ui), (std::vector<CUser*>{&ola, &tess}));
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{question, question}));
  EXPECT_EQ(tess.GetLogin(), "tess") << "kept for the way back";
  EXPECT_EQ(TransferPeople(*doc, {&tess}, false, ui), std::vector<CUser*>{&tess});
  EXPECT_EQ(ui.shown.size(), 2u) << "becoming a user asks nothing";
}

TEST_F(PeopleProject, DeleteAsksAndLeavesOutWhoIsInUse) {
  CUser& tess = Named("Ng, Tess");
  CUser& ola = Named("Berg, Ola");
  CUser& admin = static_cast<CUser&>(*doc->currentUser());
  CDefect& defect = AssignDefectTo(tess);
  const std::string single =
      "Are you sure that you want to delete the selected name? There is no undo available.";

  EXPECT_EQ(DeletePeople(*doc, {&admin}, false, ui), 0u);
  ASSERT_EQ(doc->store()->LockRecord(kUserTag, ola.GetId(), doc->currentUserId()), DBStatus::kOk);
  EXPECT_EQ(DeletePeople(*doc, {&ola}, false, ui), 0u);
  ASSERT_EQ(doc->store()->UnlockRecord(kUserTag, ola.GetId()), DBStatus::kOk);
  ui.Script({ui::Answer::kCancel, ui::Answer::kOk});
  EXPECT_EQ(DeletePeople(*doc, {&tess}, false, ui), 0u);
  EXPECT_EQ(DeletePeople(*doc, {&tess}, false, ui), 1u);
  const std::string assigned =
      "Ng, Tess has 1 defect assigned; their \"Assigned To\" will read \"Unknown\".\n\n";
  EXPECT_EQ(ui.Texts(),
            (std::vector<std::string>{
                "You cannot delete the user you are logged in as.",
                "One or more users will not be deleted because they are in use by another user.",
                assigned + single, assigned + single}));
  EXPECT_THROW(Named("Ng, Tess"), std::out_of_range);
  EXPECT_EQ(defect.FieldText(15), "Unknown");

  // Customers: several names take the other question.
  ui.Script({ui::Answer::kYes});  // ola can log in
  ASSERT_EQ(TransferPeople(*doc, {&ola}, true, ui).size(), 1u);
  ui.shown.clear();
  std::unique_ptr<RecordItem> buyer = Person("Bo", "Buyer", "", 0);
  static_cast<CUser&>(*buyer).SetCustomer(true);
  ASSERT_EQ(doc->GetTable(kUserTag)->AddItem(buyer), DBStatus::kOk);
  ui.Script({ui::Answer::kOk});
  EXPECT_EQ(DeletePeople(*doc, {&ola, &Named("Buyer, Bo")}, true, ui), 2u);
  EXPECT_EQ(ui.Texts().back(),
            "Are you sure that you want to delete the selected items(s)? There is no undo "
            "available.");

  // Without logins nobody is logged in, and the last users cannot all go.
  CDBDoc solo{ui, kinds, host};
  ASSERT_EQ(solo.NewProject(dir.File("Solo.qmk"), false), 1);
  std::vector<CUser*> everyone;
  for (const char* last : {"Ames", "Bell"}) {
    std::unique_ptr<RecordItem> item = Person("", last, "", 0);
    everyone.push_back(static_cast<CUser*>(item.get()));
    ASSERT_EQ(solo.GetTable(kUserTag)->AddItem(item), DBStatus::kOk);
  }
  ui.shown.clear();
  EXPECT_EQ(DeletePeople(solo, everyone, false, ui), 0u);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"If you remove all users you will not be able "
                                                 "to access the project file. Deselect one "
                                                 "user."});
  solo.CloseProject();
}

}  // namespace
}  // namespace qm::test
