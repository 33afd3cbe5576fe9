#include <TQFoundation/platform/loops/RunLoop.h>

#include <glib.h>

#include <TQFoundation/concurrency/work/TimerBlock.h>

#include "support/HandMovedClock.h"
#include "support/OnDestruction.h"
#include "support/Threads.h"

namespace {

// Records what runs, in order.
struct Trace {
  std::vector<std::string> steps;
  auto says(std::string step) {
    return [this, step] { steps.push_back(step); };
  }
  std::vector<std::string> take() { return std::exchange(steps, {}); }
};

TEST(RunLoop, AModeMayBecomeCommonLater) {
  static std::uint32_t next = 7;  // a mode that is common stays so
  const RunLoopMode tracking{next++};
  RunLoop& loop = RunLoop::current();
  Trace trace;
  loop.performBlock(trace.says("common"));
  mainQueueAsync(trace.says("queue"));
  EXPECT_FALSE(loop.runOnce(0, tracking));
  EXPECT_THAT(trace.take(), ElementsAre());
  loop.addCommonMode(tracking);
  EXPECT_TRUE(loop.runOnce(0, tracking));
  EXPECT_THAT(trace.take(), ElementsAre("common", "queue"));
}

/// What the main context would do next: how long it would sleep, and whether it was woken.
struct Sleep {
  Sleep() {
    GMainContext* const context = g_main_context_default();
    EXPECT_TRUE(g_main_context_acquire(context));
    gint priority = 0;
    isReady = g_main_context_prepare(context, &priority) != FALSE;
    GPollFD fds[8];
    const gint count = g_main_context_query(context, priority, &timeout, fds, 8);
    isWoken = g_poll(fds, static_cast<guint>(count), 0) != 0;
    g_main_context_release(context);
  }
  bool isReady = false;
  bool isWoken = false;
  gint timeout = 0;
};

TEST(RunLoop, PerformedBlocksDoNotWakeIt) {
  RunLoop& loop = RunLoop::main();
  Trace trace;
  while (loop.runOnce()) {
  }
  std::jthread([&] { loop.performBlock(trace.says("performed")); }).join();
  EXPECT_FALSE(Sleep().isWoken);
  std::jthread([&] { mainQueueAsync(trace.says("queue")); }).join();
  EXPECT_TRUE(Sleep().isWoken);
  EXPECT_TRUE(loop.runOnce(60));
  EXPECT_THAT(trace.take(), ElementsAre("performed", "queue"));
}

TEST(RunLoop, SleepsUntilTheNextTimerInWholeMilliseconds) {
  while (RunLoop::main().runOnce()) {
  }
  const HandMovedClock clock;
  const Rows<double, int> cases{{0.1, 100}, {0.0001, 1}, {0.100000001, 101}, {1e7, INT32_MAX}};
  for (const auto& [seconds, milliseconds] : cases) {
    const auto timer = Timer::scheduledTimerWithTimeInterval(
        seconds, [](Timer&) {}, nullptr, false);
    EXPECT_EQ(Sleep().timeout, milliseconds) << seconds;
    timer->invalidate();
  }
  EXPECT_EQ(Sleep().timeout, -1);
}

// GLib keeps a source ready if a pass has served only more urgent ones.
TEST(RunLoop, ASourceThatStaysReadyServesWhatHasComeMeanwhile) {
  RunLoop& loop = RunLoop::main();
  while (loop.runOnce()) {
  }
  Trace trace;
  loop.performBlock(trace.says("performed"));
  EXPECT_TRUE(Sleep().isReady);
  const auto timer = Timer::scheduledTimerWithTimeInterval(
      0.0001, [](Timer&) {}, nullptr, false);
  mainQueueAsync(trace.says("queue"));
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  loop.runOnce();
  EXPECT_FALSE(timer->isValid()) << "it has fired";
  EXPECT_THAT(trace.take(), ElementsAre("performed", "queue"));
}

// A host that runs the default main context itself, like toolkits.
TEST(RunLoop, HostsMayRunTheContextThemselves) {
  RunLoop& loop = RunLoop::main();
  GMainContext* const context = g_main_context_default();
  const auto hostPass = [&] { return g_main_context_iteration(context, FALSE) != FALSE; };
  Trace trace;
  int again = 0;
  std::function<void()> performAgain = [&] {
    ++again;
    loop.performBlock(performAgain);
  };
  loop.performBlock(trace.says("performed"));
  mainQueueAsync(trace.says("queue"));
  const auto timer = Timer::scheduledTimerWithTimeInterval(
      0.0001, [](Timer& t) { static_cast<void>(t.userInfo()); }, share(loop), false);
  while (timer->isValid()) hostPass();
  EXPECT_THAT(trace.take(), UnorderedElementsAre("performed", "queue"));
  EXPECT_FALSE(hostPass());

  loop.performBlock(performAgain);
  EXPECT_TRUE(hostPass());
  EXPECT_EQ(again, 1);
  const Sleep sleep;
  EXPECT_FALSE(sleep.isReady) << "a block that adds a block must not keep the loop awake";
  EXPECT_EQ(sleep.timeout, -1);
  loop.performBlock(trace.says("later"));  // not added by a block: the pass begins with it
  EXPECT_TRUE(hostPass());
  EXPECT_EQ(again, 2);
  EXPECT_THAT(trace.take(), ElementsAre("later"));
  performAgain = [] {};
  hostPass();
}

constexpr RunLoopMode kModal{8}, kPrivate{9};  // a common mode, and one that is not

// What the blocks of a random script do.
struct Step {
  enum Kind { perform, queue, schedule, pass, hostPass } kind;
  RunLoopMode mode;
  char name = 0;
  std::vector<Step> inside = {};  // what the step's block does
};

std::vector<Step> randomSteps(std::mt19937& random, std::size_t count, int depth) {
  constexpr RunLoopMode kModes[] = {kModal, kPrivate, RunLoopMode::standard, RunLoopMode::common};
  std::vector<Step> steps(count);
  for (Step& step : steps) {
    step.kind = static_cast<Step::Kind>(random() % 5);
    step.mode = kModes[random() % (step.kind == Step::perform ? 4 : 3)];
    if (step.kind == Step::hostPass) step.mode = RunLoopMode::standard;
    step.name = static_cast<char>('A' + random() % 58);
    if (depth > 0) step.inside = randomSteps(random, random() % 4, depth - 1);
  }
  return steps;
}

// What a pass does, literally.
struct LiteralLoop {
  struct Waiting {
    RunLoopMode mode;
    int time;
    std::function<void()> block;
  };
  std::vector<Waiting> waiting[3];  // by kind
  int now = 0;
  bool isServing = false;

  void pass(RunLoopMode mode, bool isHost) {
    auto& [performed, queued, timers] = waiting;
    const auto drain = [&, &list = performed] {
      const auto others = std::ranges::stable_partition(list, [&](const Waiting& each) {
        return each.mode == mode || (each.mode == RunLoopMode::common && mode != kPrivate);
      });
      const std::vector<Waiting> taken(list.begin(), others.begin());
      list.erase(list.begin(), others.begin());
      for (const Waiting& each : taken) each.block();
    };
    if (!isHost) drain();
    const bool serves = !isServing && mode != kPrivate && !queued.empty();
    if (isHost) drain();
    while (mode == RunLoopMode::standard && !timers.empty() && timers[0].time < now) {
      const Waiting timer = timers[0];
      timers.erase(timers.begin());
      timer.block();
    }
    if (serves) {
      isServing = true;
      for (const Waiting& each : std::exchange(queued, {})) each.block();
      isServing = false;
    }
    if (!isHost) drain();
  }
};

// Does the step in the library's loop if `literal` is null.
void play(const Step& step, LiteralLoop* literal, std::string& trace) {
  const auto block = [&step, literal, &trace] {
    trace += step.name;
    for (const Step& each : step.inside) play(each, literal, trace);
  };
  const bool isPass = step.kind >= Step::pass;
  if (isPass) trace += '(';
  if (literal != nullptr) {
    isPass ? literal->pass(step.mode, step.kind == Step::hostPass)
           : literal->waiting[step.kind].push_back({step.mode, literal->now, block});
  } else if (step.kind == Step::perform) {
    RunLoop::main().performBlock(block, step.mode);
  } else if (step.kind == Step::queue) {
    mainQueueAsync(block);
  } else if (step.kind == Step::schedule) {
    scheduledTimerWithTimeInterval(0, false, [block](Timer&) { block(); });
  } else {
    step.kind == Step::pass ? RunLoop::main().runOnce(0, step.mode)
                            : g_main_context_iteration(nullptr, FALSE);
  }
  if (isPass) trace += ')';
}

TEST(RunLoop, PassesDoWhatALiteralLoopDoes) {
  RunLoop::main().addCommonMode(kModal);
  while (RunLoop::main().runOnce()) {
  }
  HandMovedClock clock;
  for (unsigned seed = 0; seed < 2'000; ++seed) {
    std::mt19937 random(seed);
    auto script = randomSteps(random, 10, 3);
    for (std::size_t i = 0; i < 18; ++i) {  // until nothing waits
      script.push_back({Step::pass, std::array{kModal, kPrivate, RunLoopMode::standard}[i % 3]});
    }
    LiteralLoop literal;
    std::string trace, expected;
    for (const Step& step : script) {
      clock.jump(std::chrono::milliseconds(1));
      ++literal.now;
      play(step, nullptr, trace);
      play(step, &literal, expected);
    }
    ASSERT_EQ(trace, expected) << "seed " << seed;
  }
}

TEST(RunLoop, EndsWithItsThread) {
  Ref<RunLoop> kept;
  const auto held = std::make_shared<int>(1);
  const auto block = [held] { ADD_FAILURE() << "this loop does not run"; };
  std::jthread([&] {
    GMainContext* const own = g_main_context_new();  // of a host that runs it on this thread
    g_main_context_push_thread_default(own);
    kept = share(RunLoop::current());
    bool hasRun = false;
    kept->performBlock([&] { hasRun = true; });
    EXPECT_TRUE(g_main_context_iteration(own, FALSE) && hasRun);
    g_main_context_pop_thread_default(own);
    g_main_context_unref(own);
    EXPECT_NE(kept.get(), &RunLoop::main());
    EXPECT_FALSE(isMainThread());
    kept->performBlock(block);
    EXPECT_EQ(held.use_count(), 3);
    const auto atEnd = makeRef<OnDestruction>([&] {
      EXPECT_NE(&RunLoop::current(), kept.get());
      EXPECT_FALSE(kept->isCurrent());
    });
    kept->performBlock([atEnd] {});
  }).join();
  EXPECT_EQ(held.use_count(), 2) << "released";
  kept->performBlock(block);
  kept->wakeUp();
  EXPECT_EQ(held.use_count(), 2) << "not kept";
}

TEST(RunLoop, RunReturnsWhenStopped) {
  std::atomic<RunLoop*> loop{nullptr};
  std::atomic<int> passes{0};
  std::jthread runner([&] {
    RunLoop::current().performBlock([&] { loop = &RunLoop::current(); });
    RunLoop::current().run();
  });
  while (loop == nullptr) std::this_thread::yield();
  loop.load()->performBlock([&] { ++passes; });
  loop.load()->stop();
  runner.join();
  EXPECT_EQ(passes, 1);
  RunLoop::main().runFor(0.01);
  RunLoop::main().runFor(-1);
}

TEST(RunLoopStress, KeepsTheOrderOfEachThreadsBlocks) {
  constexpr int kThreads = 4, kBlocks = 5'000;
  std::vector<int> seen(kThreads, 0);
  int total = 0;
  const auto send = [&](int t) {
    for (int i = 0; i < kBlocks; ++i) {
      const auto block = [&, t, i] {
        ++total;
        EXPECT_EQ(seen[static_cast<std::size_t>(t)]++, i);
      };
      t % 2 == 0 ? mainQueueAsync(block) : RunLoop::main().performBlock(block);
    }
    RunLoop::main().wakeUp();
  };
  std::jthread senders([&] { test::onThreads(kThreads, send); });
  while (total < kThreads * kBlocks) RunLoop::main().runOnce(60);
}

TEST(RunLoopDeathTest, MisuseStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(RunLoop::main().performBlock(nullptr), "block != nullptr");
  EXPECT_DEATH(mainQueueAsync(nullptr), "block != nullptr");
  EXPECT_DEATH(std::jthread([] { RunLoop::main().runOnce(); }).join(), "isCurrent");
  EXPECT_DEATH(
      {
        mainQueueAsync([] { throw 1; });
        RunLoop::main().runOnce();
      },
      "terminat");  // libc++abi: "terminating"
}

}  // namespace
