#include <TQFoundation/platform/files/ExternalTool.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/Child.h"
#include "support/Descriptors.h"
#include "support/Errors.h"
#include "support/FailingSystemCalls.h"
#include "support/TemporaryDirectory.h"
#include "support/Threads.h"

namespace {

using Code = ExternalToolErrorCode;

ExternalTool shell(std::string script, std::string_view input = {}) {
  ExternalTool tool;
  tool.program = "sh";
  tool.arguments = {"-c", std::move(script)};
  tool.input = std::as_bytes(std::span(input));
  return tool;
}

TEST(ExternalTool, CollectsBothStreamsWhileItWritesTheInput) {
  const std::string large(1'000'000, 'x');
  using Text = std::string_view;
  const test::Rows<const char*, Text, Text, Text, int, int> cases{
      {"cat", large, large, "", 0, 0},
      {"cat >&2; echo out; exit 7", "in", "out\n", "in", 7, 0},
      {"cat; head -c 1000000 /dev/zero | tr '\\0' x >&2", large, large, large, 0, 0},
      {"head -c 1000000 /dev/zero | tr '\\0' x; cat >&2", large, large, large, 0, 0},
      {"exit 3", large, "", "", 3, 0},  // never reads: neither SIGPIPE nor a wait
      {"exec 0<&-; echo closed", large, "closed\n", "", 0, 0},
      {"kill -9 $$", "", "", "", -1, SIGKILL},
      {"kill -PIPE $$", "", "", "", -1, SIGPIPE},  // signals have their default action
      {"read line || echo none", "", "none\n", "", 0, 0},
      {"sleep 20 & echo left", "", "left\n", "", 0, 0},  // its own children are not waited for
      {"ls /proc/self/fd | wc -l", "", "4\n", "", 0, 0},
  };
  for (const auto& [script, input, output, errorOutput, exitStatus, signal] : cases) {
    SCOPED_TRACE(script);
    const auto start = std::chrono::steady_clock::now();
    ExternalTool tool = shell(script, input);
    tool.timeoutSeconds = input.empty() ? 1e12 : 60;  // the clock has no such time
    const auto result = runExternalTool(tool);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->output->view() == output) << result->output->description();
    EXPECT_TRUE(result->errorOutput->view() == errorOutput) << result->errorOutput->description();
    EXPECT_EQ(result->exitStatus, exitStatus);
    EXPECT_EQ(result->signal, signal);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
  }
}

TEST(ExternalTool, ReportsWhyItDidNotEnd) {
  const char* const late = "The tool “sh” did not end in time.";
  const char* const notText = "The tool “sh” could not be started: Invalid argument.";
  const test::Rows<const char*, std::function<void(ExternalTool&)>, Code, const char*> cases{
      {"", [](auto& tool) { tool.program = "/nowhere/tool"; }, Code::cannotStart,
       "The tool “/nowhere/tool” could not be started: No such file or directory."},
      {"true", [](auto& tool) { tool.arguments.emplace_back("a\0b", 3); }, Code::cannotStart,
       notText},
      {"true",
       [](auto& tool) {
         tool.workingFolder = {"/\0b", 3};
       },
       Code::cannotStart, notText},
#ifndef TQ_TEST_NEEDS_DESCRIPTORS
      {"true", [](auto&) { test::allowDescriptors(0); }, Code::cannotStart,
       "The tool “sh” could not be started: Too many open files."},
#endif
      {"true", [](auto& tool) { tool.workingFolder = "/nowhere"; }, Code::cannotStart,
       "The tool “sh” could not be started in the folder “/nowhere”: No such file or directory."},
      {"sleep 60 & sleep 60", [](auto& tool) { tool.timeoutSeconds = 0.2; }, Code::timedOut, late},
      {"exec perl -e 'setpgrp(0, getpgrp(getppid())); sleep 60'",
       [](auto& tool) { tool.timeoutSeconds = 1; }, Code::timedOut, late},
      {"yes", [](auto& tool) { tool.mostOutputBytes = 100'000; }, Code::tooMuchOutput,
       "The tool “sh” wrote more than its limit."},
      {"exit 1", [](auto&) { ::signal(SIGCHLD, SIG_IGN); }, Code::unknownEnd,
       "The tool “sh” ended, but another part of this program took its exit status."},
  };
  for (const auto& [script, change, code, text] : cases) {
    ExternalTool tool = shell(script);
    change(tool);
    Ref<Error> error;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(runExternalTool(tool, &error));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    ::signal(SIGCHLD, SIG_DFL);
    test::allowDescriptors(1000);
    test::expectError(error, ExternalToolErrorDomain, code, text);
  }
}

// In any combination. No pipe may have the number of a stream, to which the process may write.
TEST(ExternalTool, StandardStreamsMayBeClosed) {
  for (unsigned closed = 1; closed < 8; ++closed) {
    test::Child child([&] {
      for (int stream = 0; stream < 3; ++stream) {
        if ((closed >> stream & 1) != 0) ::close(stream);
      }
      test::FailingSystemCalls::insteadOfWrite = [](int descriptor, const void* bytes,
                                                    std::size_t count) {
        EXPECT_GT(descriptor, STDERR_FILENO);
        return static_cast<ssize_t>(::syscall(SYS_write, descriptor, bytes, count));
      };
      const std::string input(200'000, 'x');
      const auto result = runExternalTool(shell("cat", input));
      EXPECT_TRUE(result && result->output->view() == input);
    });
    EXPECT_EQ(child.end(), 0) << closed;
  }
}

// The pipe hangs up once its last writer has ended.
TEST(ExternalTool, ItsWholeGroupIsKilledWithIt) {
  const test::TemporaryDirectory directory;
  ASSERT_EQ(::mkfifo(directory.path("pipe").c_str(), 0600), 0);
  const int reader = ::open(directory.path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
  for (int round = 0; round < 20; ++round) {  // it waits, or has often ended before it is killed
    ExternalTool tool = shell(round == 0 ? "exec 3>pipe; sleep 60 & echo output; wait"
                                         : "exec 3>pipe; sleep 60 & echo output");
    tool.workingFolder = directory.path("");
    tool.mostOutputBytes = 1;
    EXPECT_FALSE(runExternalTool(tool));
    pollfd news{reader, POLLIN, 0};
    ASSERT_EQ(::poll(&news, 1, 30'000), 1) << round;
    EXPECT_EQ(news.revents, POLLHUP);
  }
  ::close(reader);
}

TEST(ExternalTool, GoesOnAfterSignalsAndKeepsThoseThatWait) {
  sigset_t pipe, before;
  ::sigemptyset(&pipe);
  ::sigaddset(&pipe, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
  ::pthread_kill(::pthread_self(), SIGPIPE);
  bool wasMet = true;
  for (int n = 4; wasMet; ++n) {  // pipes are opened before
    test::FailingSystemCalls::armAll(n, EINTR);
    const auto result = runExternalTool(shell("read line; echo $line", "line\n"));
    wasMet = test::FailingSystemCalls::disarm();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->output->view(), "line\n");
  }
  constexpr timespec kNow{};
  EXPECT_EQ(::sigtimedwait(&pipe, nullptr, &kNow), SIGPIPE);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(ExternalToolStress, RunsSideBySide) {
  test::onThreads(4, [&](int t) {
    const std::string input(100'000, static_cast<char>('a' + t));
    for (int i = 0; i < 10; ++i) {
      const auto result = runExternalTool(shell("cat", input));
      ASSERT_TRUE(result && result->output->view() == input);
      ASSERT_TRUE(runExternalTool(shell("true", input)));  // SIGPIPE affects only its thread
    }
  });
}

}  // namespace
