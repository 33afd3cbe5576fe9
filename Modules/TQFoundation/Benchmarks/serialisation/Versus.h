#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <vector>

namespace tq::bench {

/// Returns the processor time of the calling thread, which other work on the machine does not
/// affect.
inline double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Runs ours and the peer in turns, so that both run under the same conditions, and times each. The
/// printed time is ours; "peer_MB/s" is the peer's and "speedup" the ratio of the medians, above 1
/// if ours is faster.
template <class Ours, class Peer>
void versus(benchmark::State& state, std::size_t bytes, Ours ours, Peer peer) {
  std::vector<double> ourTimes;
  std::vector<double> peerTimes;
  const auto seconds = [](auto& call) {
    const double start = processorSeconds();
    call();
    return processorSeconds() - start;
  };
  ours();  // warm up pages and caches
  peer();
  for ([[maybe_unused]] auto _ : state) {
    // The second one finds the caches warmed by the first.
    if (ourTimes.size() % 2 == 0) peerTimes.push_back(seconds(peer));
    ourTimes.push_back(seconds(ours));
    if (peerTimes.size() < ourTimes.size()) peerTimes.push_back(seconds(peer));
    state.SetIterationTime(ourTimes.back());
  }
  const auto median = [](std::vector<double>& times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
  };
  const double our = median(ourTimes);
  const double their = median(peerTimes);
  const auto size = static_cast<double>(bytes);
  state.counters["MB/s"] = size / our / 1e6;
  state.counters["peer_MB/s"] = size / their / 1e6;
  state.counters["speedup"] = their / our;
}

}  // namespace tq::bench
