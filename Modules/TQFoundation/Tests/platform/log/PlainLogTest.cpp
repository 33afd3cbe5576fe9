#include <TQFoundation/platform/log/PlainLog.h>

#include <gmock/gmock.h>
#include <unistd.h>

#include <support/HandMovedClock.h>

#include <string>

namespace tq {
namespace {

TEST(PlainLog, WritesWholeLinesWithTimeAndThread) {
  test::HandMovedClock clock;
  clock.jump(std::chrono::milliseconds(5'007));
  testing::internal::CaptureStderr();
  for (const char* message : {"message", "message\n"}) plainLog(message);
  const std::string text = testing::internal::GetCapturedStderr();
  // The date and the hour depend on the time zone.
  const std::string line = "(1970-01-01|1969-12-31) [0-9]{2}:[0-9]{2}:05\\.007 [^ ]+\\[" +
                           std::to_string(::getpid()) + ":" + std::to_string(::gettid()) +
                           "\\] message\n";
  EXPECT_THAT(text, testing::MatchesRegex("(" + line + "){2}"));
}

}  // namespace
}  // namespace tq
