#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include <TQFoundation/base/Rect.h>

namespace tq::test {

inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kTiny = std::numeric_limits<double>::denorm_min();
inline constexpr double kMax = std::numeric_limits<double>::max();
inline constexpr double kPi = std::numbers::pi;

// Bit for bit but for the payload of a NaN: the signs of zeros count.
inline bool sameNumber(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b && std::signbit(a) == std::signbit(b);
}

/// The raw fields, which operator== standardises away.
inline void expectFields(const Rect& actual, const Rect& expected) {
  EXPECT_PRED2(sameNumber, actual.origin.x, expected.origin.x);
  EXPECT_PRED2(sameNumber, actual.origin.y, expected.origin.y);
  EXPECT_PRED2(sameNumber, actual.size.width, expected.size.width);
  EXPECT_PRED2(sameNumber, actual.size.height, expected.size.height);
}

}  // namespace tq::test
