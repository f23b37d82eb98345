// What the event dialogs, the defect window and the task window refuse of the text typed
// into their fields, in which words, and which field then gets the focus.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "defects/event_dialogs.h"
#include "shell/defect_window.h"
#include "shell/task_window.h"
#include "shell_project.h"

namespace qm::test {
namespace {

constexpr std::string_view kFixHours =
    "Please enter the hours to fix as a number of 0 or more, such as 2.5, or leave the field "
    "empty.";
constexpr std::string_view kEstimateHours = "The number of hours you entered is not valid.";
constexpr std::string_view kNothingEstimated =
    "Please estimate the number of hours to resolve the problem or enter a target date or "
    "version.";
constexpr std::string_view kCompletionDate =
    "Please enter the estimated completion date as M/D/YYYY or YYYY-MM-DD, or leave the field "
    "empty.";
constexpr std::string_view kFixDate = "Please enter the date this defect was fixed.";
constexpr std::string_view kComment = "Please enter the text of the comment.";
constexpr std::string_view kSummary = "Please enter a summary for the defect.";
constexpr std::string_view kToDo = "Please enter what is to be done.";
constexpr std::string_view kDateNeeded =
    "Please enter the date needed as M/D/YYYY or YYYY-MM-DD, or leave the field empty.";

// The fields of an event dialog, in the order of EventField.
constexpr const char* kEventFields[] = {"date", "user", "resolution", "hours", "completion date",
                                        "notes"};

// The refusal of OK: its message and the field it focuses, both empty when OK closes.
struct Outcome {
  std::string message;
  std::string focus;
};

class TypedInputTest : public ShellProject {
 protected:
  void SetUp() override {
    doc = std::make_unique<CDBDoc>(ui, kinds, host);
    ASSERT_EQ(doc->NewProject(path, false), 1);
  }

  // An event dialog filled so that it passes, with `field` then set to `input`.
  static Outcome Event(EventKind kind, const std::string& field, const std::string& input) {
    auto event = CDefectEvent::Make(static_cast<std::int16_t>(kind));
    EventDialog dialog(*event, EventDialogMode::kEdit, 9, true);
    dialog.dateText = "3/7/2021";
    dialog.resolutionId = 2;
    dialog.notes = "Seen on the build server";
    dialog.hoursText = kind == EventKind::kEstimate ? "4" : "";
    std::string* texts[] = {&dialog.dateText, &dialog.hoursText, &dialog.estimatedDateText,
                            &dialog.notes};
    const char* names[] = {"date", "hours", "completion date", "notes"};
    for (std::size_t n = 0; n < std::size(names); ++n) {
      if (field == names[n]) *texts[n] = input;
    }
    const auto answer = dialog.Accept(EventDialogResult::kOk);
    if (const auto* refusal = std::get_if<EventDialogRefusal>(&answer)) {
      return {std::string(refusal->message), kEventFields[static_cast<int>(refusal->focus)]};
    }
    return {};
  }

  // A record window's add, with `type` typed into the field the window's view names so.
  Outcome Add(CRecordWindow& window, const std::function<void()>& type) {
    window.Open(CRecordWindow::kAddClose);
    type();
    ui.shown.clear();
    if (window.OnAcceptButton()) return {};
    EXPECT_EQ(ui.shown.size(), 1u);
    return {ui.shown.empty() ? std::string() : ui.shown.back().text, window.refusedField()};
  }

  Outcome Defect(const std::string& input) {
    CDefectWindow window(*doc, table<CDefectTable>(kDefectTag), ui, marks,
                         [](CDefectEvent&, EventDialogMode) { return std::nullopt; });
    return Add(window, [&] { window.defect().summary = input; });
  }

  Outcome Task(const std::string& field, const std::string& input) {
    CTaskWindow window(*doc, table<CTaskTable>(kTasksTag), ui, marks);
    return Add(window, [&] {
      window.task().toDo = field == "to do" ? input : "Write the notes";
      window.dateNeededText = field == "date needed" ? input : "";
    });
  }
};

TEST_F(TypedInputTest, EachDialogRefusesWhatItCannotTakeAndSaysWhatItWants) {
  struct Row {
    const char* dialog;  // an event kind's dialog, "defect" or "task"
    const char* field;
    const char* input;
    std::string_view message;  // empty: taken
  };
  const Row rows[] = {
      {"fix", "hours", "abc", kFixHours},
      {"fix", "hours", "-5", kFixHours},
      {"fix", "hours", "2 hours", kFixHours},
      {"fix", "hours", "1,5", kFixHours},
      {"fix", "hours", "nan", kFixHours},
      {"fix", "hours", "1e999", kFixHours},
      {"fix", "hours", "", ""},
      {"fix", "hours", "0", ""},
      {"fix", "hours", " 2.50", ""},
      {"fix", "date", "13/45/2026", kFixDate},
      {"estimate", "hours", "abc", kEstimateHours},
      {"estimate", "hours", "0", kEstimateHours},
      {"estimate", "hours", "", kNothingEstimated},
      {"estimate", "completion date", "13/45/2026", kCompletionDate},
      {"estimate", "completion date", "tomorrow", kCompletionDate},
      {"estimate", "completion date", "12/24/2026", ""},
      {"comment", "notes", "", kComment},
      {"comment", "notes", " \r\n\t", kComment},
      {"comment", "notes", "Seen again", ""},
      {"close", "notes", "", ""},
      {"defect", "summary", "", kSummary},
      {"defect", "summary", "   ", kSummary},
      {"defect", "summary", "Crash on save", ""},
      {"task", "to do", " ", kToDo},
      {"task", "date needed", "tomorrow", kDateNeeded},
      {"task", "date needed", "13/45/2026", kDateNeeded},
      {"task", "date needed", "2026-12-24", ""},
      {"task", "date needed", " ", ""},
  };
  const std::pair<const char*, EventKind> dialogs[] = {{"fix", EventKind::kFix},
                                                       {"estimate", EventKind::kEstimate},
                                                       {"comment", EventKind::kComment},
                                                       {"close", EventKind::kClose}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.dialog) + " / " + row.field + " / \"" + row.input + "\"");
    Outcome outcome;
    if (row.dialog == std::string_view("defect")) {
      outcome = Defect(row.input);
    } else if (row.dialog == std::string_view("task")) {
      outcome = Task(row.field, row.input);
    } else {
      for (const auto& [name, kind] : dialogs) {
        if (row.dialog == std::string_view(name)) outcome = Event(kind, row.field, row.input);
      }
    }
    EXPECT_EQ(outcome.message, row.message);
    // A refusal puts the focus on the field it is about.
    EXPECT_EQ(outcome.focus, row.message.empty() ? "" : row.field);
  }
}

}  // namespace
}  // namespace qm::test
