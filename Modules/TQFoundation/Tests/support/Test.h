#pragma once

// The test framework, the standard headers that tests use most, and the tables and numbers of
// Expectations.h. The other headers of this folder that need it include it for their tests.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <numbers>
#include <optional>
#include <random>
#include <set>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "support/Expectations.h"

namespace tq::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

/// The share of a long test's work that is done: the sanitizers make loops ten times slower.
#ifdef TQ_SANITIZED
constexpr double kShare = 0.125;
#else
constexpr double kShare = 1;
#endif

}  // namespace tq::test

// Tests are written like programs that use the library.
using namespace tq;
using namespace tq::test;
