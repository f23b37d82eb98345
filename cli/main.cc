// quillmark-cli: the Quillmark core without a window, for administrators and scripts.
#include <iostream>
#include <string>
#include <vector>

#include "commands.h"

int main(int argc, char** argv) {
  return qm::cli::RunCommandLine(std::vector<std::string>(argv + 1, argv + argc), std::cout,
                                 std::cerr);
}
