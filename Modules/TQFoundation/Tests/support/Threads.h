#pragma once

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

}  // namespace tq::test
