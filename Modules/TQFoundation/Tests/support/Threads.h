#pragma once

#include <functional>
#include <thread>
#include <type_traits>
#include <vector>

namespace tq::test {

/// Calls `body`, with the numbers from 0 if it takes one, on so many threads, and waits for them.
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

}  // namespace tq::test
