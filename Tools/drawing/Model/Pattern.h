#pragma once

/// @file Pattern.h
/// Patterns: paint that repeats a drawing.

#include "Model/Node.h"

namespace tqdoc {

/// A group that is drawn in a tile, which is repeated in both directions. What is outside of the
/// tile is not drawn. The coordinates of the children begin at the corner of the tile. Of the
/// traits, only the name and the transform are used; the transform leads to the coordinates of the
/// shape.
class Pattern final : public tq::Subclass<Pattern, Group> {
 public:
  static constexpr std::string_view className = "TQDocPattern";

  /// @param tile  one of the tiles, in the coordinates before the pattern's transform
  Pattern(Traits traits, tq::Ref<tq::Array> children, const tq::Rect& tile);
  explicit Pattern(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;
  [[nodiscard]] tq::Ref<Node> withTraits(Traits traits) const override;
  [[nodiscard]] tq::Ref<Group> withChildren(tq::Ref<tq::Array> children) const override;

  [[nodiscard]] const tq::Rect& tile() const noexcept { return tile_; }

  /// Returns "pattern" with the tile and the number of children.
  [[nodiscard]] std::string description() const override;
  /// Compares the tile and all nodes.
  [[nodiscard]] bool isEqual(const tq::Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return count(); }

 private:
  tq::Rect tile_;
};

}  // namespace tqdoc
