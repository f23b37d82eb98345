// quillmark-cli's command line: matched against the rows of the commands, checked, and
// carried out with the file opened as the command's row says.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace qm::cli {

// Runs the words after the program's name; answers the exit code: 0 done, 1 refused or
// failed, 2 the file could not be opened, 64 the command line was wrong and nothing was
// opened or changed.
int RunCommandLine(const std::vector<std::string>& words, std::ostream& out, std::ostream& err);

}  // namespace qm::cli
