#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include <TQFoundation/base/Rect.h>

namespace tq::test {

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
