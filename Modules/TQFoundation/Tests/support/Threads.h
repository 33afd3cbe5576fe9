#pragma once

#include <thread>
#include <type_traits>
#include <vector>

namespace tq::test {

/// Calls `body`, with the numbers from 0 if it takes one, on so many threads, and waits for them.
template <class Body>
void onThreads(int count, const Body& body) {
  std::vector<std::jthread> threads;
  for (int t = 0; t < count; ++t) {
    threads.emplace_back([&body, t] {
      if constexpr (std::is_invocable_v<Body, int>) {
        body(t);
      } else {
        body();
      }
    });
  }
}

}  // namespace tq::test
