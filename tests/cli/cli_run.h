// Runs the real quillmark-cli as a separate program, from a test's own folder.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "support/temp_dir.h"

namespace qm::test {

struct CliResult {
  int code;
  std::string out;
  std::string err;
};

// Runs quillmark-cli with `args` (shell words) and standard input from `input`, its
// preferences kept in the folder's "config", never in the home of whoever runs the tests.
inline CliResult RunCli(const TempDir& dir, const std::string& args,
                        const std::string& input = "") {
  WriteText(dir.File("stdin"), input);
  const std::string command = "XDG_CONFIG_HOME='" + dir.File("config") + "' '" + QM_CLI_PATH +
                              "' " + args + " <'" + dir.File("stdin") + "' >'" +
                              dir.File("stdout") + "' 2>'" + dir.File("stderr") + "'";
  const int status = std::system(command.c_str());
  return {WEXITSTATUS(status), ReadText(dir.File("stdout")), ReadText(dir.File("stderr"))};
}

}  // namespace qm::test
