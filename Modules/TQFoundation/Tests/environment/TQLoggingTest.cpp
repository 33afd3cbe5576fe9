#include <TQFoundation/environment/TQLogging.h>

#include <concepts>

#include <TQFoundation/objects/Number.h>

#include "support/Threads.h"

namespace {

TEST(Logging, ChannelsAreDistinct) {
  using L = TQLogging;
  std::set<LogChannel*> channels;
  for (LogChannel& (*accessor)() :
       {L::renderingLog, L::rasterisationLog, L::modelLog, L::historyLog, L::influenceRectLog,
        L::applicationLog, L::poiLog, L::collaborationOpenerLog, L::collaborationLog,
        L::presenceLog, L::authenticationRefreshLog, L::keychainLog}) {
    EXPECT_TRUE(channels.insert(&accessor()).second);
  }
  EXPECT_EQ(&L::modelLog(), &LogChannel::channel("com.korvan.xcode", "model"));
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
    for (int level = 0; level < 5; ++level) to.log(static_cast<LogLevel>(level), "{}");
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
  log("{1} {0:>4} {2}", "a", std::string("b"), *Number::numberWith(7));
  log("{} {}", 1);
  log("{} {} {} {} {} {} {} {} {} {}", 0, 1, 2, 3, 4, 5, 6, 7, 8, 9);
  EXPECT_THAT(seen, ElementsAre("passing info -1 ff true 0.5 0.1 x", "passing info b    a 7",
                                testing::StartsWith("passing info {} {} ("),
                                "passing info 0 1 2 3 4 5 6 7 8 9"));
  setLogSink(before);
}

TEST(LoggingStress, ThreadsLogWhileTheSinkChanges) {
  std::atomic<int> count = 0;
  const LogSink counting = [&](const LogMessage&) { ++count; };
  const LogSink before = setLogSink(counting);
  onThreads(4, [&](int t) {
    for (int i = 0; i < 2000; ++i) {
      if (t == 3) setLogSink(counting);
      auto& channel = LogChannel::channel("stress", std::to_string((i + t) % 7));
      if (t != 3) channel.log(LogLevel::error, "{}", i);
    }
  });
  setLogSink(before);
  EXPECT_EQ(count, 6000);
}

}  // namespace
