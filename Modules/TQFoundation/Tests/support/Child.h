#pragma once

#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <type_traits>

#include "support/Test.h"

namespace tq::test {

/// Returns a new object that this process shares with its children. It is never unmapped.
template <class T>
T& shared() {
  return *new (
      ::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) T();
}

/// Waits for another process. Fails after about a minute.
template <class T>
void waitFor(const std::atomic<T>& number, std::type_identity_t<T> least) {
  for (int tries = 0; number < least && tries < 1'000'000; ++tries) {
    tries < 1000 ? static_cast<void>(::sched_yield()) : static_cast<void>(::usleep(50));
  }
  EXPECT_GE(number, least) << "the other process has ended";
}

/// A child process that runs a function. Its exit status is 1 if an expectation failed in it.
class Child {
 public:
  explicit Child(const std::function<void()>& run) : id_(::fork()) {
    if (id_ != 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // if the test is ended from outside
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
