#pragma once

/// @file Drawing.h
/// Writes SVG pictures. y points down; the unit is a pixel.

#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>

namespace figures {

/// The colours of all figures. They also differ in lightness.
namespace ink {
inline constexpr std::string_view text = "#1f2933";
inline constexpr std::string_view quiet = "#7b8794";
inline constexpr std::string_view faint = "#d5dae0";
inline constexpr std::string_view paper = "#ffffff";
inline constexpr std::string_view blue = "#2563eb";
inline constexpr std::string_view red = "#c81e1e";
inline constexpr std::string_view green = "#047857";
inline constexpr std::string_view amber = "#b45309";
}  // namespace ink

/// The style of a shape. By default it is not filled.
struct Style {
  std::string_view stroke = ink::text;
  double width = 1.5;
  std::string_view fill = "none";
  double fillOpacity = 1;
  std::string_view dash = {};
};

/// The style of a text. It is centred vertically at its position.
struct TextStyle {
  std::string_view fill = ink::text;
  double size = 13;
  std::string_view anchor = "middle";  ///< "start", "middle" or "end"
  bool isBold = false;
  double turnDegrees = 0;  ///< clockwise
};

/// Collects shapes. Later ones are drawn on top.
class Drawing {
 public:
  /// @param title  for screen readers
  Drawing(tq::Size size, std::string_view title);

  void line(tq::Point from, tq::Point to, const Style& style);
  /// Adds an arrow.
  void arrow(tq::Point from, tq::Point to, const Style& style);
  void rect(const tq::Rect& rect, const Style& style, double radius = 0);
  void circle(tq::Point center, double radius, const Style& style);
  void polyline(std::span<const tq::Point> points, const Style& style);
  void curve(const tq::TQBezierSegment& segment, const Style& style);
  void text(std::string_view words, tq::Point at, const TextStyle& style = {});

  /// Returns the complete file.
  [[nodiscard]] std::string svg() const;

 private:
  void finish(const Style& style);

  std::string svg_;
};

/// Formats a coordinate with at most one decimal.
[[nodiscard]] std::string numberText(double number, int digits = 1);

}  // namespace figures
