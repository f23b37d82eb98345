// One copy of the program per user: a second start finds the first, hands it its file and
// user or hears why not, and ends at once. Run as real processes of the program.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "store/project_store.h"
#include "support/made_project.h"
#include "support/temp_dir.h"

extern char** environ;

namespace qm::test {
namespace {

// Starts the program offscreen with `args`, its preferences, sockets and temporary files in
// `dir`, what it says on standard error in the file `err` there.
pid_t StartProgram(const TempDir& dir, std::vector<std::string> args = {},
                   const std::string& err = "stderr") {
  std::vector<std::string> env = {"QT_QPA_PLATFORM=offscreen", "XDG_CONFIG_HOME=" + dir.path(),
                                  "XDG_RUNTIME_DIR=" + dir.path(), "TMPDIR=" + dir.path(),
                                  "HOME=" + dir.path()};
  std::vector<char*> envp;
  for (std::string& e : env) envp.push_back(e.data());
  envp.push_back(nullptr);
  std::string program = QM_APP_PATH;
  args.insert(args.begin(), program);
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 2, dir.File(err).c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0644);
  pid_t pid = -1;
  const int failed =
      posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  return failed != 0 ? -1 : pid;
}

// Whether `condition` holds within `seconds`.
template <class Condition>
bool Within(double seconds, Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < deadline) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

// Whether the process ended within `seconds`, with its exit code.
bool EndsWithin(pid_t pid, double seconds, int& code) {
  return Within(seconds, [&] {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) != pid) return false;
    code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return true;
  });
}

// A later start with another file and user: the first copy puts its project away and opens
// that one, and the later one ends at once; a first copy waiting for an answer in a dialog
// says why it cannot, and goes on waiting.
TEST(SingleInstance, ALaterStartsFileIsOpenedByTheFirstCopyOrRefusedWithItsReason) {
  TempDir dir;
  const std::string first = dir.File("First.qmk");
  const std::string second = dir.File("Second.qmk");
  MakeProject(first);
  MakeProject(second);
  const auto open = [](const std::string& path) {
    return IsFileOpenElsewhere(platform::FileSystem::Real(), path);
  };
  const auto with = [](const std::string& path) {
    return std::vector<std::string>{path, "--user", "admin", "--password", ""};
  };
  int code = -1;
  const pid_t running = StartProgram(dir, with(first));
  ASSERT_GT(running, 0);
  ASSERT_TRUE(Within(10, [&] { return open(first); }));

  const pid_t later = StartProgram(dir, with(second));
  EXPECT_TRUE(EndsWithin(later, 10, code));
  EXPECT_EQ(code, 0);
  EXPECT_TRUE(Within(10, [&] { return open(second) && !open(first); }))
      << "the first copy has the second project open instead";
  // Killed only once it has noted the second project as the last one, after its login.
  EXPECT_TRUE(Within(10, [&] {
    std::stringstream text;
    text << std::ifstream(dir.File("Corvane Software/Quillmark.conf")).rdbuf();
    return text.str().find("Second.qmk") != std::string::npos;
  }));
  kill(running, SIGTERM);
  EXPECT_TRUE(EndsWithin(running, 10, code));

  // A bare start waits in a dialog: the login of the last project it had open.
  const pid_t waiting = StartProgram(dir);
  ASSERT_GT(waiting, 0);
  EXPECT_FALSE(EndsWithin(waiting, 3, code));
  const pid_t refused = StartProgram(dir, with(first), "refused");
  EXPECT_TRUE(Within(10, [&] {
    return ReadText(dir.File("refused"))
               .find(
                   "Quillmark is already running and waits for an answer in one of its "
                   "windows, so it cannot open anything now.") != std::string::npos;
  }));
  kill(refused, SIGTERM);  // its message box stays up until someone answers it
  EXPECT_TRUE(EndsWithin(refused, 10, code));
  EXPECT_FALSE(EndsWithin(waiting, 0.5, code)) << "the first copy still waits for its answer";
  kill(waiting, SIGTERM);
  EXPECT_TRUE(EndsWithin(waiting, 10, code));
}

}  // namespace
}  // namespace qm::test
