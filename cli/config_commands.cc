// quillmark-cli configs and config: the shared test configurations as their list shows them,
// one configuration's text or HTML form, and a new one added as its window adds one,
// filled from the machine the command runs on when asked.
#include <ostream>

#include "command.h"
#include "people/machine_capture.h"
#include "people/test_config.h"
#include "session/db_doc.h"
#include "shell/config_window.h"
#include "shell/record_list.h"

namespace qm::cli {
namespace {

int List(CDBDoc& doc, Context& c) {
  ItemTable& configs = *doc.GetTable(kConfigTag);
  CSystemListView list(configs, c.ui);
  WriteList(list, configs, c.out);
  return 0;
}

int Show(CDBDoc& doc, Context& c) {
  const auto& config = static_cast<const CTestConfig&>(
      FindNamed(*doc.GetTable(kConfigTag), c.args.positional()[2], "test configuration"));
  std::string form;
  if (c.args.Flag("html")) {
    config.WriteHtml(form);
  } else {
    config.WriteText(form);
  }
  c.out << form;
  return 0;
}

int Add(CDBDoc& doc, Context& c) {
  EditMarks marks;
  CConfigWindow window(doc, *doc.GetTable(kConfigTag), c.ui, marks);
  window.Open(CRecordWindow::kAddClose);
  CTestConfig& config = window.config();
  SetWhole(config.name, c.args.positional()[3], "A test configuration's name");
  if (c.args.Flag("capture")) CaptureThisComputer(config);
  // A refusal has been told through the Ui, in the window's words.
  if (!window.OnAcceptButton()) return 1;
  c.out << config.name.str() << "\n";
  return 0;
}

}  // namespace

const std::vector<Command>& ConfigCommands() {
  static const std::vector<Command> kRows = {
      {"configs FILE", "", "the shared test configurations", List, Needs<Right::kViewTestConfigs>},
      {"config FILE NAME", "[--html]", "one test configuration's text or HTML form", Show,
       Needs<Right::kViewTestConfigs>},
      {"config FILE add NAME", "[--capture]",
       "a new test configuration, checked as its window\nchecks one; --capture fills it "
       "from this computer",
       Add, Needs<Right::kAddTestConfigs>},
  };
  return kRows;
}

}  // namespace qm::cli
