// Forked children of the tests.
#include "support/child_process.h"

#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>

namespace qm::test {

void Child::Channel::Send(const std::string& line) {
  const std::string text = line + "\n";
  (void)!::write(out_, text.data(), text.size());
}

std::string Child::Channel::Receive() {
  std::string line;
  char c = 0;
  while (::read(in_, &c, 1) == 1) {
    if (c == '\n') return line;
    line += c;
  }
  return line;
}

void Child::Channel::Close() {
  if (in_ >= 0) ::close(in_);
  if (out_ >= 0) ::close(out_);
  in_ = out_ = -1;
}

Child::Child(std::function<int(Channel&)> body) {
  int toChild[2], toParent[2];
  if (::pipe(toChild) != 0 || ::pipe(toParent) != 0) std::abort();
  pid_ = ::fork();
  if (pid_ < 0) std::abort();
  if (pid_ == 0) {
    ::close(toChild[1]);
    ::close(toParent[0]);
    Channel mine(toChild[0], toParent[1]);
    ::_exit(body(mine));
  }
  ::close(toChild[0]);
  ::close(toParent[1]);
  channel_ = Channel(toParent[0], toChild[1]);
}

Child::~Child() {
  Kill();
  channel_.Close();
}

int Child::Wait() {
  if (!waited_) {
    ::waitpid(pid_, &status_, 0);
    waited_ = true;
  }
  if (WIFEXITED(status_)) return WEXITSTATUS(status_);
  return 128 + WTERMSIG(status_);
}

void Child::Kill() {
  if (waited_) return;
  ::kill(pid_, SIGKILL);
  (void)Wait();
}

}  // namespace qm::test
