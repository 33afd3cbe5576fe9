#pragma once

/// @file Drawing.h
/// A picture as SVG text. y grows downwards, a unit is a pixel.

#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>

namespace figures {

/// The colours of all figures; they differ in lightness, too.
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

/// How something is drawn. Nothing is filled unless asked for.
struct Style {
  std::string_view stroke = ink::text;
  double width = 1.5;
  std::string_view fill = "none";
  double fillOpacity = 1;
  std::string_view dash = {};
};

/// How a text stands. Its place is the middle of its height.
struct TextStyle {
  std::string_view fill = ink::text;
  double size = 13;
  std::string_view anchor = "middle";  ///< "start", "middle" or "end"
  bool isBold = false;
  double turnDegrees = 0;  ///< clockwise
};

/// Collects shapes; later ones lie on top.
class Drawing {
 public:
  /// @param title  said by readers of screens
  Drawing(tq::Size size, std::string_view title);

  void line(tq::Point from, tq::Point to, const Style& style);
  /// A line with a head at its end.
  void arrow(tq::Point from, tq::Point to, const Style& style);
  void rect(const tq::Rect& rect, const Style& style, double radius = 0);
  void circle(tq::Point center, double radius, const Style& style);
  void polyline(std::span<const tq::Point> points, const Style& style);
  void curve(const tq::TQBezierSegment& segment, const Style& style);
  void text(std::string_view words, tq::Point at, const TextStyle& style = {});

  /// The whole file.
  [[nodiscard]] std::string svg() const;

 private:
  void finish(const Style& style);

  std::string svg_;
};

/// At most one digit behind the point, as the pictures' coordinates are.
[[nodiscard]] std::string numberText(double number, int digits = 1);

}  // namespace figures
