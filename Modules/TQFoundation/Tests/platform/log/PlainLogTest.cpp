#include <TQFoundation/platform/log/PlainLog.h>

#include <errno.h>
#include <unistd.h>

#include <TQFoundation/platform/log/LogChannel.h>

#include "support/CapturedLog.h"
#include "support/HandMovedClock.h"

namespace {

TEST(PlainLog, WritesWholeLinesWithTimeAndThread) {
  program_invocation_short_name = const_cast<char*>("tool\nline");
  test::HandMovedClock clock;
  clock.jump(std::chrono::milliseconds(5'007));
  testing::internal::CaptureStderr();
  for (const char* message : {"message", "message\n"}) plainLog(message);
  const std::string text = testing::internal::GetCapturedStderr();
  // The date and the hour depend on the time zone.
  const std::string line = "(1970-01-01|1969-12-31) [0-9]{2}:[0-9]{2}:05\\.007 tool\\\\nline\\[" +
                           std::to_string(::getpid()) + ":" + std::to_string(::gettid()) +
                           "\\] message\n";
  EXPECT_THAT(text, testing::MatchesRegex("(" + line + "){2}"));
}

TEST(PlainLog, TextFromOutsideCannotLeaveItsLine) {
  const std::pair<std::string_view, const char*> cases[] = {
      {"plain \\ text\n", "plain \\ text\n"},
      {"a\nb\r\tc\n\n", "a\\nb\\r\\tc\\n\n"},
      {"\x1b[2J\x7f", "\\x1b[2J\\x7f"},
      {std::string_view("a\0b", 3), "a\\x00b"},
      {"Größe “5” 📐", "Größe “5” 📐"},
      {"\xC2\x9B\u2028\u202E\u2069", "\\u009b\\u2028\\u202e\\u2069"},
      {"\x9B\xE2\x80\xED\xA0\x80", "\\x9b\\xe2\\x80\\ud800"},
      {"\n", "\n"},
      {"", ""},
  };
  const test::CapturedLog log;
  for (const auto& [message, line] : cases) {
    plainLog(message);
    EXPECT_EQ(log.messages().back(), line);
  }
}

TEST(PlainLog, FailuresOfSinksDoNotReachTheCaller) {
  const auto fails = [](const auto&) { throw std::runtime_error("sink"); };
  PlainLogSink plainSink = setPlainLogSink(fails);
  LogSink sink = setLogSink(fails);
  const auto logs = []() noexcept {
    plainLog("a");
    LogChannel::channel("s", "c").log(LogLevel::fault, "{}", 1);
  };
  logs();
#if defined(__GLIBCXX__) && !defined(TQ_SANITIZED)  // libc++ cannot end a thread
  setPlainLogSink([](std::string_view) {
    ::pthread_cancel(::pthread_self());
    ::pthread_testcancel();
  });
  bool continues = false;
  std::jthread([&] {
    plainLog("a");
    continues = true;
  }).join();
  EXPECT_FALSE(continues) << "a cancelled thread ends";
#endif
  setPlainLogSink(std::move(plainSink));
  setLogSink(std::move(sink));
}

TEST(PlainLog, PrintsNullStringsAsSuch) {
  const test::CapturedLog log;
  const char* const none = nullptr;
  plainLog(none);
  const LogChannel& channel = LogChannel::channel("s", "c");
  channel.log(LogLevel::error, none);
  channel.log(LogLevel::error, "{} {}", none, 7);
  EXPECT_THAT(log.messages(),
              testing::ElementsAre("(null)", "[s:c] error: (null)", "[s:c] error: (null) 7"));
}

}  // namespace
