#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>
#include <vector>

#include <TQFoundation/base/Rect.h>

namespace tq::test {

inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kTiny = std::numeric_limits<double>::denorm_min();
inline constexpr double kMax = std::numeric_limits<double>::max();
inline constexpr double kPi = std::numbers::pi;

/// The rows of a test's table.
template <class... Fields>
using Rows = std::vector<std::tuple<Fields...>>;

/// True if both are equal bit for bit; the payload of a NaN is ignored. The signs of zeros count.
inline bool sameNumber(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b && std::signbit(a) == std::signbit(b);
}

/// Compares the raw fields; operator== would standardise them.
inline void expectFields(const Rect& actual, const Rect& expected) {
  EXPECT_PRED2(sameNumber, actual.origin.x, expected.origin.x);
  EXPECT_PRED2(sameNumber, actual.origin.y, expected.origin.y);
  EXPECT_PRED2(sameNumber, actual.size.width, expected.size.width);
  EXPECT_PRED2(sameNumber, actual.size.height, expected.size.height);
}

}  // namespace tq::test
