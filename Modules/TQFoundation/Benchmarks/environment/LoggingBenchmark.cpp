// A log call at a disabled level, compared with a relaxed load. A log call at an enabled level with
// three arguments, compared with spdlog and its null sink. One read of the clock.

#include <benchmark/benchmark.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#include <time.h>

#include <atomic>
#include <memory>

#include <TQFoundation/environment/TQLogging.h>
#include <TQFoundation/environment/TQPerformanceTimer.h>

namespace {

using namespace tq;

std::atomic<int> level = 2;

void BM_LogOff_RelaxedLoad(benchmark::State& state) {
  for (auto _ : state) {
    if (level.load(std::memory_order_relaxed) < 1) state.SkipWithError("logged");
  }
}
BENCHMARK(BM_LogOff_RelaxedLoad);

void BM_LogOff_TQ(benchmark::State& state) {
  const LogChannel& channel = TQLogging::modelLog();
  int shape = 0;
  for (auto _ : state)
    channel.log(LogLevel::debug, "moved shape {} by {} in {}", ++shape, 0.5, "layer");
}
BENCHMARK(BM_LogOff_TQ);

void BM_LogOn_Spdlog(benchmark::State& state) {
  spdlog::logger logger("null", std::make_shared<spdlog::sinks::null_sink_mt>());
  int shape = 0;
  for (auto _ : state) logger.info("moved shape {} by {} in {}", ++shape, 0.5, "layer");
}
BENCHMARK(BM_LogOn_Spdlog);

void BM_LogOn_TQ(benchmark::State& state) {
  const LogSink before = setLogSink([](const LogMessage&) {});
  const LogChannel& channel = TQLogging::modelLog();
  int shape = 0;
  for (auto _ : state) {
    channel.log(LogLevel::default_, "moved shape {} by {} in {}", ++shape, 0.5, "layer");
  }
  setLogSink(before);
}
BENCHMARK(BM_LogOn_TQ);

void BM_Clock_System(benchmark::State& state) {
  timespec now;
  for (auto _ : state) {
    clock_gettime(CLOCK_MONOTONIC, &now);
    benchmark::DoNotOptimize(now);
  }
}
BENCHMARK(BM_Clock_System);

void BM_Clock_TQ(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TQTimeNow());
}
BENCHMARK(BM_Clock_TQ);

}  // namespace
