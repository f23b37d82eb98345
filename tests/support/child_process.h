// A forked process that runs a piece of a test and talks with the parent line by line,
// so several clients of one file can be driven step by step as real processes.
#pragma once

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>

namespace qm::test {

class Child {
 public:
  // One end of the two pipes between parent and child.
  class Channel {
   public:
    Channel(int in, int out) : in_(in), out_(out) {}
    void Send(const std::string& line) {
      const std::string text = line + "\n";
      (void)!::write(out_, text.data(), text.size());
    }
    // The next line; empty when the other side has gone.
    std::string Receive() {
      std::string line;
      for (char c = 0; ::read(in_, &c, 1) == 1 && c != '\n';) line += c;
      return line;
    }

   private:
    friend class Child;
    int in_;
    int out_;
  };

  // Forks; the child runs `body` and exits with its answer.
  explicit Child(std::function<int(Channel&)> body) {
    int toChild[2], toParent[2];
    if (::pipe(toChild) != 0 || ::pipe(toParent) != 0 || (pid_ = ::fork()) < 0) std::abort();
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
  ~Child() {
    Kill();
    ::close(channel_.in_);
    ::close(channel_.out_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Send(const std::string& line) { channel_.Send(line); }
  std::string Receive() { return channel_.Receive(); }
  // Waits for the end; the exit code, or 128 + the signal that ended it.
  int Wait() {
    if (!waited_) ::waitpid(pid_, &status_, 0);
    waited_ = true;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
  }
  // Ends the child at once, as a crash would.
  void Kill() {
    if (!waited_) ::kill(pid_, SIGKILL);
    (void)Wait();
  }

 private:
  pid_t pid_ = -1;
  Channel channel_{-1, -1};
  bool waited_ = false;
  int status_ = 0;
};

}  // namespace qm::test
