#pragma once

/// @file Marker.h
/// Markers: symbols at the points of an outline, such as arrow heads.

#include <cstdint>
#include <string_view>
#include <vector>

#include "Model/Node.h"

namespace tqdoc {

/// A symbol. Immutable; any thread.
class Marker final : public tq::Subclass<Marker> {
 public:
  static constexpr std::string_view className = "TQDocMarker";

  enum class Direction : std::uint8_t { fixed, alongPath, alongPathFromStart };

  struct Placing {
    /// Of its x axis. The third one turns the marker of the first point around.
    Direction direction = Direction::fixed;
    double degrees = 0;            ///< for a fixed direction
    bool scalesWithStroke = true;  ///< its unit is the width of the stroke
  };

  /// @param content  the origin around it is placed on the point
  Marker(tq::Ref<Node> content, const Placing& placing);

  explicit Marker(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] const Node& content() const noexcept { return *content_; }
  [[nodiscard]] const Placing& placing() const noexcept { return placing_; }

  [[nodiscard]] bool isEqual(const tq::Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  tq::Ref<Node> content_;
  Placing placing_;
};

/// A marker at a point. Keeps a pointer: the shape must outlive it.
struct PlacedMarker {
  const Marker* marker;
  tq::AffineTransform transform;  ///< from the coordinates around the content to the shape's
};

/// Returns the markers of a shape in the order of its points.
[[nodiscard]] std::vector<PlacedMarker> placedMarkers(const Shape& shape);

}  // namespace tqdoc
