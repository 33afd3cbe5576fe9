// Timers, compared with GLib's sources: scheduling and cancelling one while many others are
// pending, and an iteration of the run loop that fires one of them. A request of a rate limiter
// with a scheduled update, compared with one atomic exchange.

#include <benchmark/benchmark.h>
#include <glib.h>

#include <atomic>
#include <vector>

#include <TQFoundation/concurrency/work/TQRateLimiter.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/loops/Timer.h>

namespace {

using namespace tq;

constexpr double kFarAway = 3600;

void BM_TimerScheduleCancel_TQ(benchmark::State& state) {
  std::vector<Ref<Timer>> pending;
  const auto add = [&](std::int64_t i) {
    return Timer::scheduledTimerWithTimeInterval(
        kFarAway + static_cast<double>(i * 7919 % 1000), [](Timer&) {}, nullptr, false);
  };
  for (std::int64_t i = 0; i < state.range(0); ++i) pending.push_back(add(i));
  std::int64_t i = 0;
  for (auto _ : state) add(++i)->invalidate();
  for (const auto& each : pending) each->invalidate();
}

gboolean keep(gpointer) { return G_SOURCE_CONTINUE; }

GSource* addSource(GMainContext* context, guint milliseconds) {
  GSource* const source = g_timeout_source_new(milliseconds);
  g_source_set_callback(source, keep, nullptr, nullptr);
  g_source_attach(source, context);
  return source;
}

void drop(GSource* source) {
  g_source_destroy(source);
  g_source_unref(source);
}

void BM_TimerScheduleCancel_GLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  std::vector<GSource*> pending;
  const auto add = [&](std::int64_t i) {
    return addSource(context, static_cast<guint>(3'600'000 + i * 7919 % 1000 * 1000));
  };
  for (std::int64_t i = 0; i < state.range(0); ++i) pending.push_back(add(i));
  std::int64_t i = 0;
  for (auto _ : state) drop(add(++i));
  for (GSource* each : pending) drop(each);
  g_main_context_unref(context);
}
BENCHMARK(BM_TimerScheduleCancel_GLib)->ArgName("pending")->Arg(0)->Arg(1'000)->Arg(100'000);
BENCHMARK(BM_TimerScheduleCancel_TQ)->ArgName("pending")->Arg(0)->Arg(1'000)->Arg(100'000);

void BM_LoopPass_TQ(benchmark::State& state) {
  std::vector<Ref<Timer>> pending;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    pending.push_back(Timer::scheduledTimerWithTimeInterval(
        kFarAway, [](Timer&) {}, nullptr, false));
  }
  const auto often = Timer::scheduledTimerWithTimeInterval(
      1e-9, [](Timer&) {}, nullptr, true);
  for (auto _ : state) RunLoop::current().runOnce();
  often->invalidate();
  for (const auto& each : pending) each->invalidate();
}

void BM_LoopPass_GLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  std::vector<GSource*> pending;
  for (std::int64_t i = 0; i < state.range(0); ++i)
    pending.push_back(addSource(context, 3'600'000));
  GSource* const often = addSource(context, 0);
  for (auto _ : state) g_main_context_iteration(context, FALSE);
  drop(often);
  for (GSource* each : pending) drop(each);
  g_main_context_unref(context);
}
BENCHMARK(BM_LoopPass_GLib)->ArgName("pending")->Arg(0)->Arg(100'000);
BENCHMARK(BM_LoopPass_TQ)->ArgName("pending")->Arg(0)->Arg(100'000);

class Canvas final : public Subclass<Canvas> {
 public:
  static constexpr std::string_view className = "Canvas";
  void redraw() {}
};

void BM_NeedsUpdate_TQ(benchmark::State& state) {
  const auto canvas = makeRef<Canvas>();
  const auto limiter = TQRateLimiter::initWithTarget(canvas, &Canvas::redraw);
  for (auto _ : state) limiter->setNeedsUpdate(true);
  RunLoop::main().runOnce();
}

void BM_NeedsUpdate_Exchange(benchmark::State& state) {
  std::atomic<bool> flag{false};
  for (auto _ : state) benchmark::DoNotOptimize(flag.exchange(true));
}
BENCHMARK(BM_NeedsUpdate_Exchange);
BENCHMARK(BM_NeedsUpdate_TQ);

}  // namespace
