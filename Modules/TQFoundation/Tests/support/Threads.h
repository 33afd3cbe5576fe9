#pragma once

#include <barrier>
#include <latch>
#include <type_traits>

#include "support/Test.h"

namespace tq::test {

/// Calls `body` on `count` threads and waits for them. If `body` takes a number, the threads pass
/// 0, 1, 2 …
template <class Body>
void onThreads(int count, const Body& body) {
  std::vector<std::jthread> threads;
  for (int t = 0; t < count; ++t) {
    if constexpr (std::is_invocable_v<Body, int>) {
      threads.emplace_back(std::cref(body), t);
    } else {
      threads.emplace_back(std::cref(body));
    }
  }
}

/// Calls `body(t, round)` on two threads, t = 0 and 1, which begin each round almost together.
template <class Body>
void inStep(std::size_t rounds, const Body& body) {
  std::atomic<std::size_t> begun[2] = {0, 0};
  onThreads(2, [&](int t) {
    for (std::size_t round = 0; round < rounds; body(t, round++)) {
      begun[t] = round + 1;
      for (int spins = 0; begun[1 - t] <= round;) {
        if (++spins > 1000) std::this_thread::yield();
      }
      for (auto i = (t == 0 ? round : round / 64) % 64; i > 0; --i) begun[t] = round + 1;
    }
  });
}

}  // namespace tq::test
