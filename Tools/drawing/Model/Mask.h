#pragma once

/// @file Mask.h
/// Masks: drawings whose brightness or opacity decides how much of a node is visible.

#include "Model/Node.h"

namespace tqdoc {

/// A group that is drawn into an image, which is multiplied with that of the masked node. Its
/// coordinates, before its own transform, are those of the masked node.
class Mask final : public tq::Subclass<Mask, Group> {
 public:
  static constexpr std::string_view className = "TQDocMask";

  enum class Kind : bool {
    luminance,  ///< white shows the masked node, black and transparent hide it
    alpha,      ///< opaque shows the masked node, transparent hides it
  };

  /// @param region  hides everything outside, in the coordinates of the masked node
  Mask(Traits traits, tq::Ref<tq::Array> children, const tq::Rect& region, Kind kind);
  explicit Mask(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;
  [[nodiscard]] tq::Ref<Node> withTraits(Traits traits) const override;
  [[nodiscard]] tq::Ref<Group> withChildren(tq::Ref<tq::Array> children) const override;

  [[nodiscard]] const tq::Rect& region() const noexcept { return region_; }
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  tq::Rect region_;
  Kind kind_ = Kind::luminance;
};

}  // namespace tqdoc
