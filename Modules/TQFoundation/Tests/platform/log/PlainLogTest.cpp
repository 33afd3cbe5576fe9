#include <TQFoundation/platform/log/PlainLog.h>

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

namespace tq {
namespace {

// Many times, so that no moment's thousandths fit by chance.
TEST(PlainLog, WritesWholeLinesWithTimeAndThread) {
  testing::internal::CaptureStderr();
  for (int i = 0; i < 20; ++i) {
    plainLog(i % 2 == 0 ? "message" : "message\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const std::string text = testing::internal::GetCapturedStderr();
  const std::string line =
      "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} [^ ]+\\[" +
      std::to_string(::getpid()) + ":" + std::to_string(::gettid()) + "\\] message\n";
  EXPECT_THAT(text, testing::MatchesRegex("(" + line + "){20}"));
}

}  // namespace
}  // namespace tq
