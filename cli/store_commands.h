// quillmark-cli store: the administrator's view of a project file, record by record.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "ui/ui.h"

namespace qm::cli {

// Runs `store SUBCOMMAND ...` with the words after "store"; answers the exit code:
// 0 done, 1 an operation failed (or check found damage), 2 the file could not be opened.
int RunStore(const std::vector<std::string>& words, ui::Ui& ui, std::ostream& out,
             std::ostream& err);

// The lines of help for the store commands.
const char* StoreUsage();

}  // namespace qm::cli
