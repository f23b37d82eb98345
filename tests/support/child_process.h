// A forked process that runs a piece of a test and talks with the parent line by line,
// so several clients of one file can be driven step by step as real processes.
#pragma once

#include <sys/types.h>
#include <functional>
#include <string>

namespace qm::test {

class Child {
 public:
  class Channel {
   public:
    Channel(int in, int out) : in_(in), out_(out) {}
    void Send(const std::string& line);
    // The next line; empty when the other side has gone.
    std::string Receive();
    void Close();

   private:
    int in_;
    int out_;
  };

  // Forks; the child runs `body` and exits with its answer.
  explicit Child(std::function<int(Channel&)> body);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Send(const std::string& line) { channel_.Send(line); }
  std::string Receive() { return channel_.Receive(); }
  // Waits for the end; the exit code, or 128 + the signal that ended it.
  int Wait();
  // Ends the child at once, as a crash would.
  void Kill();

 private:
  pid_t pid_ = -1;
  Channel channel_{-1, -1};
  bool waited_ = false;
  int status_ = 0;
};

}  // namespace qm::test
