// quillmark-cli new, info and values: a project as its users see it, opened and logged in
// to as the program does.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "shell/app_preferences.h"
#include "ui/ui.h"

namespace qm::cli {

bool IsProjectCommand(const std::string& word);

// Runs a project command, its name the first word; answers the exit code: 0 done, 1 the
// command was refused or failed, 2 the project could not be opened or made, 64 the
// command line was wrong.
int RunProject(const std::vector<std::string>& words, ui::Ui& ui, CAppPreferences& preferences,
               std::ostream& out, std::ostream& err);

// The lines of help for the project commands.
const char* ProjectUsage();

}  // namespace qm::cli
