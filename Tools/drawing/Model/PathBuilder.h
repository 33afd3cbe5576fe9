#pragma once

/// @file PathBuilder.h
/// Builds outlines step by step.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "Model/PathData.h"

namespace tqdoc {

/// Collects the steps of a path. Quadratics and arcs become cubics. After close(), a step other
/// than moveTo starts at the start of the closed outline.
class PathBuilder {
 public:
  void moveTo(tq::Point to);
  void lineTo(tq::Point to);
  void cubicTo(tq::Point control1, tq::Point control2, tq::Point to);
  void quadTo(tq::Point control, tq::Point to);

  /// Adds an arc of the ellipse with these radii (the sign is ignored) and its x axis rotated by
  /// `rotationDegrees`. Radii that are too short are scaled up; a radius of 0 adds a line. Each
  /// cubic spans at most a quarter turn, with an error below 3e-4 of the radius. Source: SVG 1.1
  /// (2011), appendix F.6.
  void arcTo(tq::Size radii, double rotationDegrees, bool largeArc, bool sweep, tq::Point to);

  void close();

  /// Returns the point where the next step starts.
  [[nodiscard]] tq::Point current() const noexcept { return current_; }
  [[nodiscard]] std::size_t coordinateCount() const noexcept { return coordinates_.size(); }

  /// Returns the path and empties the builder.
  [[nodiscard]] tq::Ref<PathData> take();

 private:
  void begin();
  void add(char step, std::initializer_list<tq::Point> points);

  std::string steps_;
  std::vector<double> coordinates_;
  tq::Point start_;
  tq::Point current_;
};

}  // namespace tqdoc
