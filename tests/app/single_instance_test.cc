// One copy of the program per user: a second start finds the first, asks it to come to the
// front, and ends at once. Run as real processes of the program.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/temp_dir.h"

extern char** environ;

namespace qm::test {
namespace {

// Starts the program offscreen with its preferences, sockets and temporary files in `dir`.
pid_t StartProgram(const TempDir& dir) {
  std::vector<std::string> env = {"QT_QPA_PLATFORM=offscreen", "XDG_CONFIG_HOME=" + dir.path(),
                                  "XDG_RUNTIME_DIR=" + dir.path(), "TMPDIR=" + dir.path(),
                                  "HOME=" + dir.path()};
  std::vector<char*> envp;
  for (std::string& e : env) envp.push_back(e.data());
  envp.push_back(nullptr);
  std::string program = QM_APP_PATH;
  char* argv[] = {program.data(), nullptr};
  pid_t pid = -1;
  if (posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv, envp.data()) != 0) return -1;
  return pid;
}

// Whether the process ended within `seconds`, with its exit code.
bool EndsWithin(pid_t pid, double seconds, int& code) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < deadline) {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) {
      code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

TEST(SingleInstance, ASecondStartHandsOverToTheFirstAndEnds) {
  TempDir dir;
  const pid_t first = StartProgram(dir);
  ASSERT_GT(first, 0);
  int code = -1;
  // The first copy keeps running: on a first start it waits in the new project dialog.
  EXPECT_FALSE(EndsWithin(first, 3.0, code)) << "the first copy ended with " << code;

  const pid_t second = StartProgram(dir);
  ASSERT_GT(second, 0);
  EXPECT_TRUE(EndsWithin(second, 10.0, code));
  EXPECT_EQ(code, 0);
  EXPECT_FALSE(EndsWithin(first, 0.5, code)) << "the first copy is still there";

  kill(first, SIGTERM);
  EXPECT_TRUE(EndsWithin(first, 10.0, code));
}

}  // namespace
}  // namespace qm::test
