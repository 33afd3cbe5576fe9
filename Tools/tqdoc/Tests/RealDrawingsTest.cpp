// Checks the library with every drawing of the icon themes that the demo uses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "Files/Drawing.h"
#include "Files/FileList.h"
#include "Model/PlacedNode.h"

namespace tqdoc {
namespace {

class RealDrawingsStress : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    registerModel();
    files_ = listFiles({TQDOC_REAL_DRAWINGS}).files;
  }
  void SetUp() override {
    if (files_.size() < 700) GTEST_SKIP() << "the icon themes are not installed";
  }

  static inline std::vector<std::string> files_;
};

/// Returns the maximum of `value` within `step` of `t`, by golden-section search. There must be
/// only one local maximum.
template <class Value>
[[nodiscard]] double extremeNear(double t, double step, const Value& value) {
  constexpr double kRatio = 0.6180339887498949;
  double low = std::max(0.0, t - step), high = std::min(1.0, t + step);
  for (int i = 0; i < 60; ++i) {
    const double a = high - kRatio * (high - low), b = low + kRatio * (high - low);
    (value(a) > value(b) ? high : low) = value(a) > value(b) ? b : a;
  }
  return std::max({value(low), value(high), value((low + high) / 2)});
}

/// Returns the maximum on [0, 1]: samples, then refines every peak.
template <class Value>
[[nodiscard]] double extreme(const Value& value) {
  constexpr int kSamples = 64;
  double samples[kSamples + 1];
  for (int i = 0; i <= kSamples; ++i) samples[i] = value(double(i) / kSamples);
  double best = samples[0];
  for (int i = 0; i <= kSamples; ++i) {
    if ((i > 0 && samples[i - 1] > samples[i]) || (i < kSamples && samples[i + 1] > samples[i])) {
      continue;
    }
    best = std::max(best, extremeNear(double(i) / kSamples, 1.0 / kSamples, value));
  }
  return best;
}

void expectTight(const tq::TQBezierSegment& segment) {
  const tq::Rect bounds = tq::TQBezierSegmentGetBounds(segment);
  const double size = std::max({bounds.size.width, bounds.size.height, std::abs(bounds.origin.x),
                                std::abs(bounds.origin.y)});
  const auto at = [&](double t) { return tq::TQBezierSegmentPointAtOffset(segment, t); };
  const double edges[] = {-tq::RectGetMinX(bounds), tq::RectGetMaxX(bounds),
                          -tq::RectGetMinY(bounds), tq::RectGetMaxY(bounds)};
  const double reached[] = {
      extreme([&](double t) { return -at(t).x; }), extreme([&](double t) { return at(t).x; }),
      extreme([&](double t) { return -at(t).y; }), extreme([&](double t) { return at(t).y; })};
  for (int i = 0; i < 4; ++i) {
    ASSERT_LE(reached[i], edges[i] + 1e-14 * size) << "edge " << i;
    ASSERT_GE(reached[i], edges[i] - 1e-9 * size) << "edge " << i;
  }
}

TEST_F(RealDrawingsStress, HaveBoundsThatContainAndTouchEverySegment) {
  std::size_t count = 0;
  for (const std::string& file : files_) {
    SCOPED_TRACE(file);
    const auto document = openDrawing(file, nullptr).document;
    if (!document) continue;
    for (const PlacedNode& placed : placedNodes(document->root())) {
      const auto* shape = tq::objectCast<Shape>(placed.node);
      if (shape == nullptr) continue;
      const tq::Path outline = shape->path().outline(placed.transform);
      for (auto all = tq::TQBezierSegmentIteratorMake(outline); auto segment = all.next();
           ++count) {
        expectTight(*segment);
        if (HasFatalFailure()) return;
      }
    }
  }
  EXPECT_GT(count, 100'000u);
}

TEST_F(RealDrawingsStress, SurviveEveryCodecWithTheirArchives) {
  using enum tq::TQCompressionAlgorithm;
  std::size_t shorter = 0;
  for (const std::string& file : files_) {
    SCOPED_TRACE(file);
    const auto plain = tq::dataWithContentsOfURL(*tq::URL::fileURLWithPath(file));
    const auto document = openDrawing(file, nullptr).document;
    if (!plain || !document) continue;
    const auto archive = tq::TQJSONEncoder::encodeObjectAsData(document);
    for (const auto& bytes : {plain, archive}) {
      for (const auto algorithm : {stored, lz4, lz4Raw, deflate, lzma, lzfse}) {
        const auto packed = tq::dataByCompressingWithAlgorithm_tq(*bytes, algorithm);
        const auto unpacked = tq::dataByDecompressing_tq(*packed);
        ASSERT_TRUE(unpacked && unpacked->isEqual(*bytes)) << static_cast<int>(algorithm);
        shorter += packed->length() < bytes->length() ? 1 : 0;
      }
    }
  }
  EXPECT_GT(shorter, files_.size() * 2 * 4);
}

}  // namespace
}  // namespace tqdoc
