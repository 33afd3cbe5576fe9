#pragma once

/// @file Node.h
/// What a drawing's tree is made of: groups, shapes and pictures.

#include <cstddef>
#include <string>
#include <string_view>

#include "Model/PathData.h"

namespace tqdoc {

/// A part of a drawing. Immutable, as all of the model is; any thread.
class Node : public tq::Subclass<Node> {
 public:
  static constexpr std::string_view className = "TQDocNode";

  /// What groups, shapes and pictures have in common.
  struct Traits {
    tq::Ref<tq::String> name;       ///< or none
    tq::AffineTransform transform;  ///< from the node's coordinates to its parent's
    double opacity = 1;             ///< of the node as a whole, 0...1
    bool hidden = false;
    tq::Ref<Node> clip;  ///< what its shapes cover shows, in the node's coordinates; none shows all
  };

  [[nodiscard]] const Traits& traits() const noexcept { return traits_; }
  /// Empty for a node without one.
  [[nodiscard]] std::string_view name() const noexcept;

  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

 protected:
  explicit Node(Traits traits);
  explicit Node(tq::TQJSONDecoder& decoder);

 private:
  Traits traits_;
};

/// Nodes drawn in order, the first one at the bottom.
class Group final : public tq::Subclass<Group, Node> {
 public:
  static constexpr std::string_view className = "TQDocGroup";

  /// `children` are nodes.
  Group(Traits traits, tq::Ref<tq::Array> children);
  explicit Group(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] const tq::Array& children() const noexcept { return *children_; }
  [[nodiscard]] std::size_t count() const noexcept { return children_->count(); }
  [[nodiscard]] const Node& child(std::size_t index) const {
    return static_cast<const Node&>(children_->objectAtIndex(index));
  }

 private:
  tq::Ref<tq::Array> children_;
};

/// An outline with a style.
///
/// The style's keys, each of which may be absent: "fill" and "stroke", a colour as "#rrggbb" or a
/// Gradient (absent: not painted); "fillOpacity" and "strokeOpacity", 0...1 (1); "evenOdd", whether
/// the fill goes by the even-odd rule (no); "strokeWidth" (1); "lineCap", "butt", "round" or
/// "square"; "lineJoin", "miter", "round" or "bevel"; "miterLimit" (4); "dashes", an array of
/// lengths, and "dashOffset" (0).
class Shape final : public tq::Subclass<Shape, Node> {
 public:
  static constexpr std::string_view className = "TQDocShape";

  Shape(Traits traits, tq::Ref<PathData> path, tq::Ref<tq::Dictionary> style);
  explicit Shape(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] const PathData& path() const noexcept { return *path_; }
  [[nodiscard]] const tq::Dictionary& style() const noexcept { return *style_; }

 private:
  tq::Ref<PathData> path_;
  tq::Ref<tq::Dictionary> style_;
};

/// An embedded image, stretched over its frame.
class Picture final : public tq::Subclass<Picture, Node> {
 public:
  static constexpr std::string_view className = "TQDocPicture";

  /// How the image is fitted into the frame, as preserveAspectRatio says it; see viewTransform().
  Picture(Traits traits, const tq::Rect& frame, tq::Ref<tq::String> fit,
          tq::Ref<tq::String> mediaType, tq::Ref<tq::Data> bytes);
  explicit Picture(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] const tq::Rect& frame() const noexcept { return frame_; }
  [[nodiscard]] std::string_view fit() const noexcept { return fit_->view(); }
  /// Such as "image/png".
  [[nodiscard]] std::string_view mediaType() const noexcept { return mediaType_->view(); }
  [[nodiscard]] const tq::Data& bytes() const noexcept { return *bytes_; }

 private:
  tq::Rect frame_;
  tq::Ref<tq::String> fit_;
  tq::Ref<tq::String> mediaType_;
  tq::Ref<tq::Data> bytes_;
};

/// How a node is told to people: "root/1/0 (eye)", its place among its parents' children and its
/// name.
[[nodiscard]] std::string placeOf(const std::string& path, const Node& node);

/// Smallest rect around a node's outlines and frames in its parent's coordinates, hidden nodes and
/// strokes left out; the null rect when nothing is there.
[[nodiscard]] tq::Rect tightBounds(const Node& node, const tq::AffineTransform& parent = {});

}  // namespace tqdoc
