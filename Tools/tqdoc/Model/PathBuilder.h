#pragma once

/// @file PathBuilder.h
/// Makes outlines step by step.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "Model/PathData.h"

namespace tqdoc {

/// Collects the steps of a path. Quadratics and arcs become cubics. A step other than moveTo that
/// follows close() starts where the closed outline started.
class PathBuilder {
 public:
  void moveTo(tq::Point to);
  void lineTo(tq::Point to);
  void cubicTo(tq::Point control1, tq::Point control2, tq::Point to);
  void quadTo(tq::Point control, tq::Point to);

  /// An arc of the ellipse with these radii (either sign), its x axis turned by `rotationDegrees`.
  /// Radii too short to reach are scaled up; a radius of 0 draws a line. Each cubic spans a quarter
  /// turn at the most, and strays by less than 3e-4 of the radius.
  /// Source: SVG 1.1 (2011), appendix F.6.
  void arcTo(tq::Size radii, double rotationDegrees, bool largeArc, bool sweep, tq::Point to);

  void close();

  /// Where the next step starts.
  [[nodiscard]] tq::Point current() const noexcept { return current_; }
  [[nodiscard]] std::size_t coordinateCount() const noexcept { return coordinates_.size(); }

  /// Hands the path over; the builder is empty afterwards.
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
