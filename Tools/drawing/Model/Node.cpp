#include "Model/Node.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Model/Mask.h"
#include "Model/Numbers.h"

namespace tqdoc {
namespace {

[[nodiscard]] tq::Ref<PathData> emptyPath() {
  return tq::makeRef<PathData>(std::string(), std::vector<double>());
}

}  // namespace

Node::Node(Traits traits) : traits_(std::move(traits)) {
  traits_.transform = archivable(traits_.transform);
  traits_.opacity = archivable(traits_.opacity);
}

Node::Node(tq::TQJSONDecoder& decoder) {
  traits_.name = decodeAs<tq::String>(decoder, "name", nullptr);
  traits_.transform = decodeTransform(decoder, "transform");
  traits_.opacity = decoder.decodeDoubleForKey("opacity", 1);
  traits_.hidden = decoder.decodeBoolForKey("hidden", false);
  if (const auto blend = decodeAs<tq::String>(decoder, "blend", nullptr)) {
    const auto known = blendNamed(blend->view());
    if (!known) refuse(decoder, "the blend mode is unknown");
    traits_.blend = known.value_or(Blend::normal);
  }
  traits_.isolated = decoder.decodeBoolForKey("isolated", false);
  traits_.clip = decodeAs<Node>(decoder, "clip", nullptr);
  traits_.filter = decodeAs<Filter>(decoder, "filter", nullptr);
  traits_.mask = decodeAs<Mask>(decoder, "mask", nullptr);
}

std::string_view Node::name() const noexcept {
  return traits_.name ? traits_.name->view() : std::string_view();
}

void Node::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeObject(traits_.name, "name");
  encodeTransform(encoder, traits_.transform, "transform");
  if (traits_.opacity != 1) encoder.encodeDouble(traits_.opacity, "opacity");
  if (traits_.hidden) encoder.encodeBool(true, "hidden");
  if (traits_.blend != Blend::normal) {
    encoder.encodeObject(tq::String::of(nameOf(traits_.blend)), "blend");
  }
  if (traits_.isolated) encoder.encodeBool(true, "isolated");
  encoder.encodeObject(traits_.clip, "clip");
  encoder.encodeObject(traits_.filter, "filter");
  encoder.encodeObject(traits_.mask, "mask");
}

Group::Group(Traits traits, tq::Ref<tq::Array> children)
    : Subclass(std::move(traits)), children_(std::move(children)) {}

Group::Group(tq::TQJSONDecoder& decoder)
    : Subclass(decoder), children_(decodeAs(decoder, "children", tq::Array::array())) {
  for (const tq::Object& child : *children_) {
    if (tq::objectCast<Node>(&child) != nullptr) continue;
    refuse(decoder, "a group has a child that is not a node");
    children_ = tq::Array::array();
    return;
  }
}

void Group::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  Node::encodeAsJSON(encoder);
  encoder.encodeObject(children_, "children");
}

tq::Rect Group::contentBounds(const tq::AffineTransform& transform) const {
  tq::Rect bounds = tq::RectNull;
  for (std::size_t i = 0; i < count(); ++i) {
    bounds = tq::RectUnion(bounds, tightBounds(child(i), transform));
  }
  return bounds;
}

tq::Ref<Node> Group::withTraits(Traits traits) const {
  return tq::makeRef<Group>(std::move(traits), children_);
}

tq::Ref<Group> Group::withChildren(tq::Ref<tq::Array> children) const {
  return tq::makeRef<Group>(traits(), std::move(children));
}

Shape::Shape(Traits traits, tq::Ref<PathData> path, tq::Ref<tq::Dictionary> style)
    : Subclass(std::move(traits)), path_(std::move(path)), style_(std::move(style)) {}

Shape::Shape(tq::TQJSONDecoder& decoder)
    : Subclass(decoder),
      path_(decodeAs(decoder, "path", emptyPath())),
      style_(decodeAs(decoder, "style", tq::Dictionary::dictionary())) {}

void Shape::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  Node::encodeAsJSON(encoder);
  encoder.encodeObject(path_, "path");
  encoder.encodeObject(style_, "style");
}

tq::Rect Shape::contentBounds(const tq::AffineTransform& transform) const {
  return path_->tightBounds(transform);
}

tq::Ref<Node> Shape::withTraits(Traits traits) const {
  return tq::makeRef<Shape>(std::move(traits), path_, style_);
}

tq::Ref<Shape> Shape::withStyle(tq::Ref<tq::Dictionary> style) const {
  return tq::makeRef<Shape>(traits(), path_, std::move(style));
}

Picture::Picture(Traits traits, const tq::Rect& frame, tq::Ref<tq::String> fit,
                 tq::Ref<tq::String> mediaType, tq::Ref<tq::Data> bytes)
    : Subclass(std::move(traits)),
      frame_(archivable(frame)),
      fit_(std::move(fit)),
      mediaType_(std::move(mediaType)),
      bytes_(std::move(bytes)) {}

Picture::Picture(tq::TQJSONDecoder& decoder)
    : Subclass(decoder),
      frame_(decoder.decodeRectForKey("frame")),
      fit_(decodeAs(decoder, "fit", tq::String::of(""))),
      mediaType_(decodeAs(decoder, "mediaType", tq::String::of(""))),
      bytes_(decodeAs(decoder, "bytes", tq::Data::dataWithBytes(std::string_view()))) {}

void Picture::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  Node::encodeAsJSON(encoder);
  encoder.encodeRect(frame_, "frame");
  encoder.encodeObject(fit_, "fit");
  encoder.encodeObject(mediaType_, "mediaType");
  encoder.encodeObject(bytes_, "bytes");
}

tq::Rect Picture::contentBounds(const tq::AffineTransform& transform) const {
  return tq::RectApplyAffineTransform(frame_, transform);
}

tq::Ref<Node> Picture::withTraits(Traits traits) const {
  return tq::makeRef<Picture>(std::move(traits), frame_, fit_, mediaType_, bytes_);
}

const char* kindOf(const Node& node) noexcept {
  return tq::objectCast<Mask>(&node) != nullptr      ? "mask"
         : tq::objectCast<Group>(&node) != nullptr   ? "group"
         : tq::objectCast<Shape>(&node) != nullptr   ? "shape"
         : tq::objectCast<Picture>(&node) != nullptr ? "picture"
                                                     : "text";
}

bool blendsWithBackdrop(const Node& node) {
  const Node::Traits& traits = node.traits();
  if (traits.hidden) return false;
  if (traits.blend != Blend::normal) return true;
  const auto* group = tq::objectCast<Group>(&node);
  if (group == nullptr || traits.isolated || traits.opacity < 1 || traits.clip || traits.filter ||
      traits.mask) {
    return false;
  }
  return std::ranges::any_of(group->children(), [](const tq::Object& child) {
    return blendsWithBackdrop(static_cast<const Node&>(child));
  });
}

std::string placeOf(const std::string& path, const Node& node) {
  return node.name().empty() ? path : path + " (" + std::string(node.name()) + ")";
}

tq::Rect tightBounds(const Node& node, const tq::AffineTransform& parent) {
  if (node.traits().hidden) return tq::RectNull;
  return node.contentBounds(tq::AffineTransformConcat(node.traits().transform, parent));
}

}  // namespace tqdoc
