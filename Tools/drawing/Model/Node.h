#pragma once

/// @file Node.h
/// Nodes of a drawing's tree: groups, shapes and pictures.

#include <cstddef>
#include <string>
#include <string_view>

#include "Model/Blend.h"
#include "Model/Filter.h"
#include "Model/PathData.h"

namespace tqdoc {

/// A node of a drawing. Immutable, as the whole model; any thread.
class Node : public tq::Subclass<Node> {
 public:
  static constexpr std::string_view className = "TQDocNode";

  /// Properties that all nodes have.
  struct Traits {
    tq::Ref<tq::String> name;       ///< may be null
    tq::AffineTransform transform;  ///< from the node's coordinates to its parent's
    double opacity = 1;             ///< of the node as a whole, 0...1
    bool hidden = false;
    Blend blend = Blend::normal;
    bool isolated = false;  ///< its content blends only with what the node itself draws
    tq::Ref<Node> clip;  ///< only what it covers is visible, in the node's coordinates; may be null
    tq::Ref<Filter> filter;  ///< changes the pixels before the clip and the mask; may be null
    tq::Ref<Node> mask;      ///< a Mask, or null
  };

  [[nodiscard]] const Traits& traits() const noexcept { return traits_; }
  /// Empty for a node without a name.
  [[nodiscard]] std::string_view name() const noexcept;
  /// Returns a node with the same content and other traits.
  [[nodiscard]] virtual tq::Ref<Node> withTraits(Traits traits) const = 0;
  /// Returns the smallest rect around the visible content, without strokes. The null rect if there
  /// is none.
  /// @param transform  from the node's coordinates to those of the result
  [[nodiscard]] virtual tq::Rect contentBounds(const tq::AffineTransform& transform) const = 0;

  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

 protected:
  explicit Node(Traits traits);
  explicit Node(tq::TQJSONDecoder& decoder);

 private:
  Traits traits_;
};

/// A list of nodes. The first one is drawn first, at the bottom.
class Group : public tq::Subclass<Group, Node> {
 public:
  static constexpr std::string_view className = "TQDocGroup";

  /// All `children` must be nodes.
  Group(Traits traits, tq::Ref<tq::Array> children);
  explicit Group(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;
  [[nodiscard]] tq::Ref<Node> withTraits(Traits traits) const override;
  [[nodiscard]] tq::Rect contentBounds(const tq::AffineTransform& transform) const override;
  /// Returns a group of the same kind with the same traits and other children.
  [[nodiscard]] virtual tq::Ref<Group> withChildren(tq::Ref<tq::Array> children) const;

  [[nodiscard]] const tq::Array& children() const noexcept { return *children_; }
  [[nodiscard]] std::size_t count() const noexcept { return children_->count(); }
  [[nodiscard]] const Node& child(std::size_t index) const {
    return static_cast<const Node&>(children_->objectAtIndex(index));
  }

 protected:
  [[nodiscard]] const tq::Ref<tq::Array>& childArray() const noexcept { return children_; }

 private:
  tq::Ref<tq::Array> children_;
};

/// An outline with a style.
///
/// The style's keys, each of which may be absent: "fill" and "stroke", a colour as "#rrggbb", a
/// Gradient or a Pattern (absent: not painted); "fillOpacity" and "strokeOpacity", 0...1 (1);
/// "evenOdd", whether the fill uses the even-odd rule (no); "strokeWidth" (1); "lineCap", "butt",
/// "round" or "square"; "lineJoin", "miter", "round" or "bevel"; "miterLimit" (4); "dashes", an
/// array of lengths, and "dashOffset" (0); "paintOrder", the words "fill", "stroke" and "markers"
/// in the order of painting (that order); "markerStart", "markerMid" and "markerEnd", a Marker for
/// the first, the inner and the last points; "nonScalingStroke", whether the stroke's width and
/// dashes are in pixels of the picture (no).
class Shape final : public tq::Subclass<Shape, Node> {
 public:
  static constexpr std::string_view className = "TQDocShape";

  Shape(Traits traits, tq::Ref<PathData> path, tq::Ref<tq::Dictionary> style);
  explicit Shape(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;
  [[nodiscard]] tq::Ref<Node> withTraits(Traits traits) const override;
  [[nodiscard]] tq::Rect contentBounds(const tq::AffineTransform& transform) const override;
  /// Returns a shape with the same traits and outline and another style.
  [[nodiscard]] tq::Ref<Shape> withStyle(tq::Ref<tq::Dictionary> style) const;

  [[nodiscard]] const PathData& path() const noexcept { return *path_; }
  [[nodiscard]] const tq::Dictionary& style() const noexcept { return *style_; }

 private:
  tq::Ref<PathData> path_;
  tq::Ref<tq::Dictionary> style_;
};

/// An embedded image with a frame.
class Picture final : public tq::Subclass<Picture, Node> {
 public:
  static constexpr std::string_view className = "TQDocPicture";

  /// A preserveAspectRatio value: how the image fits its frame; see viewTransform().
  Picture(Traits traits, const tq::Rect& frame, tq::Ref<tq::String> fit,
          tq::Ref<tq::String> mediaType, tq::Ref<tq::Data> bytes);
  explicit Picture(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;
  [[nodiscard]] tq::Ref<Node> withTraits(Traits traits) const override;
  [[nodiscard]] tq::Rect contentBounds(const tq::AffineTransform& transform) const override;

  [[nodiscard]] const tq::Rect& frame() const noexcept { return frame_; }
  [[nodiscard]] std::string_view fit() const noexcept { return fit_->view(); }
  /// The media type, such as "image/png".
  [[nodiscard]] std::string_view mediaType() const noexcept { return mediaType_->view(); }
  [[nodiscard]] const tq::Data& bytes() const noexcept { return *bytes_; }

 private:
  tq::Rect frame_;
  tq::Ref<tq::String> fit_;
  tq::Ref<tq::String> mediaType_;
  tq::Ref<tq::Data> bytes_;
};

/// Returns "group", "shape", "picture" or "text".
[[nodiscard]] const char* kindOf(const Node& node) noexcept;

/// Returns true if something in `node` blends with what is behind it.
[[nodiscard]] bool blendsWithBackdrop(const Node& node);

/// Returns the place of a node for messages, such as "root/1/0 (eye)": indexes and its name.
[[nodiscard]] std::string placeOf(const std::string& path, const Node& node);

/// Returns the smallest rect around the visible outlines and frames of a node, without strokes, in
/// the coordinates of its parent. The null rect if there are none.
[[nodiscard]] tq::Rect tightBounds(const Node& node, const tq::AffineTransform& parent = {});

}  // namespace tqdoc
