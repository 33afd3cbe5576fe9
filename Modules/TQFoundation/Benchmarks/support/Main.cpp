#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <thread>

// A second thread sleeps during every benchmark. The C library omits atomic instructions while a
// process has only one thread, but real applications have several.
int main(int argc, char** argv) {
  std::jthread sleeper([](const std::stop_token& stop) {
    std::mutex lock;
    std::condition_variable_any wakes;
    std::unique_lock guard(lock);
    wakes.wait(guard, stop, [] { return false; });
  });
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
