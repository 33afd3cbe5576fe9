#pragma once

/// @file Gradient.h
/// Linear and radial gradients.

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// The paint before the first stop and after the last.
enum class Spread : std::uint8_t { pad, reflect, repeat };

/// A colour at an offset. All five values are within 0...1; colours are not premultiplied.
struct GradientStop {
  double offset = 0;
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const GradientStop&, const GradientStop&) = default;
};

/// The geometry of a gradient, in its own coordinates.
struct GradientGeometry {
  bool radial = false;
  tq::Point start;                ///< linear: where offset 0 is; radial: the focus
  tq::Point end;                  ///< linear: where offset 1 is; radial: the circle's centre
  double radius = 0;              ///< radial only
  double focalRadius = 0;         ///< radial: of the circle around the focus where offset 0 is
  tq::AffineTransform transform;  ///< from the gradient's coordinates to the shape's
  Spread spread = Spread::pad;

  friend bool operator==(const GradientGeometry&, const GradientGeometry&) = default;
};

/// A linear or a radial gradient. Immutable; any thread.
class Gradient final : public tq::Subclass<Gradient> {
 public:
  static constexpr std::string_view className = "TQDocGradient";

  /// `stops` must be sorted by offset.
  Gradient(const GradientGeometry& geometry, std::vector<GradientStop> stops);

  explicit Gradient(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] const GradientGeometry& geometry() const noexcept { return geometry_; }
  [[nodiscard]] std::span<const GradientStop> stops() const noexcept { return stops_; }

  [[nodiscard]] bool isEqual(const tq::Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return stops_.size(); }

 private:
  GradientGeometry geometry_;
  std::vector<GradientStop> stops_;
};

}  // namespace tqdoc
