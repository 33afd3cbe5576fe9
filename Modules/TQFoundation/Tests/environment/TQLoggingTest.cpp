#include <TQFoundation/environment/TQLogging.h>

#include <gmock/gmock.h>

#include <support/CapturedLog.h>

#include <atomic>
#include <concepts>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <TQFoundation/objects/Number.h>

namespace tq {
namespace {

using testing::ElementsAre;

TEST(Logging, ChannelsAreDistinct) {
  using L = TQLogging;
  std::set<LogChannel*> channels;
  for (LogChannel& (*accessor)() :
       {L::renderingLog, L::rasterisationLog, L::modelLog, L::historyLog, L::influenceRectLog,
        L::applicationLog, L::poiLog, L::collaborationOpenerLog, L::collaborationLog,
        L::presenceLog, L::authenticationRefreshLog, L::keychainLog}) {
    EXPECT_TRUE(channels.insert(&accessor()).second);
  }
  EXPECT_EQ(&L::rasterisationLog(), &LogChannel::channel("com.korvan.rendering", "rasterisation"));
}

static_assert(!std::constructible_from<LogArgument, Number*>, "pointers do not convert to bool");

TEST(Logging, MessagesPassByLevelToTheSink) {
  std::vector<std::string> seen;
  const LogSink before = setLogSink([&](const LogMessage& message) {
    seen.push_back(std::string(message.category) + " " + std::string(nameOf(message.level)) + " " +
                   std::string(message.text));
  });
  LogChannel& channel = LogChannel::channel("test", "passing");
  const auto logAll = [](LogChannel& to) {
    for (const LogLevel level :
         {LogLevel::debug, LogLevel::info, LogLevel::default_, LogLevel::error, LogLevel::fault}) {
      to.log(level, "{}");
    }
  };
  logAll(channel);
  EXPECT_THAT(seen, ElementsAre("passing default {}", "passing error {}", "passing fault {}"));
  seen.clear();
  channel.setLevel(LogLevel::fault);
  logAll(channel);
  channel.setLevel(LogLevel::debug);
  channel.log(LogLevel::debug, "d");
  EXPECT_THAT(seen, ElementsAre("passing fault {}", "passing debug d"));

  seen.clear();
  TQLogging::quartzImpositorLog().setLevel(LogLevel::debug);
  logAll(TQLogging::quartzImpositorLog());
  EXPECT_FALSE(TQLogging::quartzImpositorLog().isEnabled(LogLevel::fault));
  EXPECT_THAT(seen, ElementsAre());

  const auto log = [&](std::string_view format, const auto&... arguments) {
    channel.log(LogLevel::info, format, arguments...);
  };
  log("{} {:x} {} {} {} {}", -1, 255u, true, 0.5, 0.1f, 'x');
  log("{1} {0:>4}", "a", std::string("b"));
  log("{}", *Number::numberWith(7));
  log("{} {}", 1);
  log("{} {} {} {} {} {} {} {} {} {}", 0, 1, 2, 3, 4, 5, 6, 7, 8, 9);
  EXPECT_EQ(seen[0], "passing info -1 ff true 0.5 0.1 x");
  EXPECT_EQ(seen[1], "passing info b    a");
  EXPECT_EQ(seen[2], "passing info 7");
  EXPECT_TRUE(seen[3].starts_with("passing info {} {} (")) << seen[3];
  EXPECT_EQ(seen[4], "passing info 0 1 2 3 4 5 6 7 8 9");
  setLogSink(before);
}

TEST(Logging, WritesPlainLinesWithoutASink) {
  const test::CapturedLog log;
  TQLogging::modelLog().log(LogLevel::error, "lost {} shapes", 3);
  EXPECT_THAT(log.messages(), ElementsAre("[com.korvan.xcode:model] error: lost 3 shapes"));
}

TEST(LoggingStress, ThreadsLogWhileTheSinkChanges) {
  std::atomic<int> count = 0;
  const LogSink counting = [&](const LogMessage&) { ++count; };
  const LogSink before = setLogSink(counting);
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t) {
      threads.emplace_back([t] {
        for (int i = 0; i < 2000; ++i) {
          LogChannel::channel("stress", std::to_string((i + t) % 7)).log(LogLevel::error, "{}", i);
        }
      });
    }
    for (int i = 0; i < 500; ++i) setLogSink(counting);
  }
  setLogSink(before);
  EXPECT_EQ(count, 6000);
}

}  // namespace
}  // namespace tq
