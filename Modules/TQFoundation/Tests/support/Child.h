#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Test.h"

namespace tq::test {

/// A child process that runs a function. Its exit status is 1 if an expectation failed in it.
class Child {
 public:
  explicit Child(const std::function<void()>& run) : id_(::fork()) {
    if (id_ != 0) return;
    run();
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  ~Child() {
    if (id_ > 0) end(SIGKILL);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void waitUntilStopped() const {
    int status = 0;
    ::waitpid(id_, &status, WUNTRACED);
    EXPECT_TRUE(WIFSTOPPED(status));
  }
  /// Sends the signal, unless it is 0, and waits for the end. @return the status of waitpid()
  int end(int signal = 0) {
    if (signal != 0) ::kill(id_, signal);
    int status = 0;
    ::waitpid(id_, &status, 0);
    id_ = -1;
    return status;
  }

 private:
  pid_t id_;
};

}  // namespace tq::test
