#include <TQFoundation/concurrency/work/TQRateLimiter.h>

#include <TQFoundation/platform/loops/RunLoop.h>

#include "support/Objects.h"
#include "support/Threads.h"

namespace {

struct View final : Subclass<View> {
  static constexpr std::string_view className = "View";

  void redraw() {
    ++redrawn;
    EXPECT_TRUE(isMainThread());
    if (then) then();
  }
  int redrawFor(TQRateLimiter& limiter) {
    by = &limiter;
    return ++redrawn;
  }
  void redrawWith(Ref<Object> limiter, int number, const char* text) const {
    EXPECT_EQ(number, 0);
    EXPECT_EQ(text, nullptr);
    by = limiter.get();
  }
  void redrawBy(const Ref<TQRateLimiter>& limiter) { by = limiter.get(); }
  void redrawAt(TQRateLimiter* const& limiter) { by = limiter; }

  int redrawn = 0;
  mutable Object* by = nullptr;
  std::function<void()> then;
};

void pass() { RunLoop::main().runOnce(); }

class RateLimiting : public testing::TestWithParam<TQRateLimiterUpdateStrategy> {
 protected:
  Ref<View> view = makeRef<View>();
  Ref<TQRateLimiter> limiter = TQRateLimiter::initWithTarget(view, &View::redraw, GetParam());
};
INSTANTIATE_TEST_SUITE_P(Strategies, RateLimiting,
                         testing::Values(TQRateLimiterUpdateOnMainQueue,
                                         TQRateLimiterUpdateInRunLoop));

TEST_P(RateLimiting, ManyRequestsMakeOneUpdate) {
  for (int i = 0; i < 10; ++i) limiter->setNeedsUpdate(true);
  EXPECT_TRUE(limiter->needsUpdate());
  EXPECT_EQ(view->redrawn, 0);
  pass();
  EXPECT_EQ(view->redrawn, 1);
  EXPECT_FALSE(limiter->needsUpdate());
  limiter->setNeedsUpdate(true);
  limiter->setNeedsUpdate(false);
  pass();
  EXPECT_EQ(view->redrawn, 1) << "withdrawn";
  limiter->setNeedsUpdate(true);
  limiter->updateIfNeeded();
  limiter->updateIfNeeded();
  EXPECT_EQ(view->redrawn, 2) << "a direct update runs at once";
  limiter->setNeedsUpdate(true);
  pass();
  EXPECT_EQ(view->redrawn, 3) << "through the block that was scheduled before";
}

TEST_P(RateLimiting, ARequestDuringTheUpdateMakesAnotherAndKeepsTheLimiterButNotTheTarget) {
  view->then = [&] {
    if (view->redrawn == 1) limiter->setNeedsUpdate(true);
    EXPECT_EQ(limiter->needsUpdate(), view->redrawn == 1);
  };
  limiter->setNeedsUpdate(true);
  pass();
  pass();
  EXPECT_EQ(view->redrawn, 2);
  const Weak<TQRateLimiter> weakLimiter = limiter;
  limiter->setNeedsUpdate(true);
  view = nullptr;
  EXPECT_EQ(limiter->target(), nullptr);
  limiter = nullptr;
  EXPECT_FALSE(weakLimiter.expired());
  pass();
  EXPECT_TRUE(weakLimiter.expired());
}

TEST_P(RateLimiting, RequestsOfManyThreadsAreNeverLost) {
  for (int round = 0; round < 300; ++round) {
    const int before = view->redrawn;
    std::jthread requests([&] { test::onThreads(2, [&] { limiter->setNeedsUpdate(true); }); });
    pass();
    requests.join();
    pass();
    EXPECT_GT(view->redrawn, before);
    EXPECT_FALSE(limiter->needsUpdate());
  }
}

TEST(TQRateLimiter, OtherStrategiesScheduleNothing) {
  const auto view = makeRef<View>();
  const auto limiter = TQRateLimiter::initWithTarget(view, &View::redraw, 2);
  limiter->setNeedsUpdate(true);
  pass();
  EXPECT_EQ(view->redrawn, 0);
  limiter->setUpdateStrategy(TQRateLimiterUpdateOnMainQueue);
  limiter->setNeedsUpdate(true);
  pass();
  EXPECT_EQ(view->redrawn, 0) << "marked as scheduled";
  limiter->performUpdateIfNeeded();
  EXPECT_EQ(view->redrawn, 1);
}

TEST(TQRateLimiter, PassesTheArgumentsOfTheMethod) {
  const auto view = makeRef<View>();
  const auto one = TQRateLimiter::initWithTarget(view, &View::redrawFor);
  const auto three = TQRateLimiter::initWithTarget(view, &View::redrawWith);
  EXPECT_EQ(three->updateStrategy(), TQRateLimiterUpdateOnMainQueue);
  for (const auto& each : {one, three, TQRateLimiter::initWithTarget(view, &View::redrawBy),
                           TQRateLimiter::initWithTarget(view, &View::redrawAt)}) {
    each->update();
    EXPECT_EQ(view->by, each.get());
  }
  EXPECT_EQ(view->redrawn, 1);

  three->setActionInvocation(one->actionInvocation());
  three->update();
  EXPECT_EQ(view->redrawn, 2);
  three->setActionInvocation(nullptr);
  three->update();
  EXPECT_EQ(view->redrawn, 2);

  const auto stranger = String::stringWithUTF8("no view");
  one->setTarget(stranger.get());
  EXPECT_THROW(one->update(), Exception);
  one->setTarget(nullptr);
  one->update();
  const Ref<View> nobody;
  EXPECT_THROW(static_cast<void>(TQRateLimiter::initWithTarget(nobody, &View::redraw)), Exception);
  void (View::*nothing)() = nullptr;
  EXPECT_THROW(static_cast<void>(TQRateLimiter::initWithTarget(view, nothing)), Exception);
}

}  // namespace
