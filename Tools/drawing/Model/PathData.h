#pragma once

/// @file PathData.h
/// Outlines for filling, stroking and clipping.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// A sequence of steps and their points. Steps are letters: M moves (1 point), L draws a line (1),
/// C a cubic (3), Z closes the outline (0); the first one is M. Immutable; any thread.
class PathData final : public tq::Subclass<PathData> {
 public:
  static constexpr std::string_view className = "TQDocPath";

  /// Returns the number of points of `step`, or -1 for any other letter.
  [[nodiscard]] static constexpr int pointsOf(char step) noexcept {
    switch (step) {
      case 'M':
      case 'L':
        return 1;
      case 'C':
        return 3;
      case 'Z':
        return 0;
      default:
        return -1;
    }
  }

  /// `coordinates` are x, y, x, y… in the order of the steps, exactly as many as the steps need.
  PathData(std::string steps, std::vector<double> coordinates) noexcept
      : steps_(std::move(steps)), coordinates_(std::move(coordinates)) {}

  /// Reads an empty path if the number of coordinates does not match the steps.
  explicit PathData(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] bool isEmpty() const noexcept { return steps_.empty(); }
  [[nodiscard]] const std::string& steps() const noexcept { return steps_; }
  [[nodiscard]] std::span<const double> coordinates() const noexcept { return coordinates_; }

  /// Calls `visit(step, points)` for each step in turn.
  template <class Visit>
  void forEach(Visit&& visit) const {
    std::size_t at = 0;
    for (const char step : steps_) {
      tq::Point points[3];
      const int count = pointsOf(step);
      for (int i = 0; i < count; ++i, at += 2) {
        points[i] = {coordinates_[at], coordinates_[at + 1]};
      }
      visit(step, points);
    }
  }

  /// Returns the steps as a path with transformed points.
  [[nodiscard]] tq::Path outline(const tq::AffineTransform& transform = {}) const;

  /// Returns the smallest rect around the transformed curves, without control points and strokes.
  /// An empty path has the null rect.
  [[nodiscard]] tq::Rect tightBounds(const tq::AffineTransform& transform = {}) const;

  [[nodiscard]] bool isEqual(const tq::Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return tq::String::hashOf(steps_); }

 private:
  std::string steps_;
  std::vector<double> coordinates_;
};

}  // namespace tqdoc
