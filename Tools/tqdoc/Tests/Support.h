#pragma once

/// @file Support.h
/// Shared by the tests of tqdoc.

#include "Svg/SvgReader.h"
#include "support/Test.h"

namespace tqdoc {

/// Reads a drawing with this content on a page of 120 by 120 pixels.
[[nodiscard]] inline tq::Ref<Document> drawingOf(const std::string& content) {
  const std::string text = "<svg width='120' height='120'>" + content + "</svg>";
  return readSvg(std::as_bytes(std::span(text)), "a.svg", nullptr).document;
}

inline void expectNear(const tq::Rect& actual, const tq::Rect& expected, double tolerance) {
  EXPECT_EQ(tq::RectIsNull(actual), tq::RectIsNull(expected));
  if (tq::RectIsNull(expected)) return;
  EXPECT_NEAR(actual.origin.x, expected.origin.x, tolerance);
  EXPECT_NEAR(actual.origin.y, expected.origin.y, tolerance);
  EXPECT_NEAR(actual.size.width, expected.size.width, tolerance);
  EXPECT_NEAR(actual.size.height, expected.size.height, tolerance);
}

}  // namespace tqdoc
