#include "Model/Compare.h"

#include <string_view>

#include "Model/Mask.h"
#include "Model/Pattern.h"
#include "Model/Text.h"

namespace tqdoc {
namespace {

using Difference = std::optional<std::string>;

/// Compares two strings. A null string differs from an empty one.
[[nodiscard]] bool same(const tq::Ref<tq::String>& a, const tq::Ref<tq::String>& b) {
  return a && b ? a->isEqual(*b) : !a && !b;
}

[[nodiscard]] bool sameRaw(const tq::Rect& a, const tq::Rect& b) {
  return a.origin == b.origin && a.size == b.size;
}

[[nodiscard]] Difference compareTraits(const Node::Traits& a, const Node::Traits& b,
                                       const std::string& path) {
  if (!same(a.name, b.name)) return path + ": the names differ";
  if (a.transform != b.transform) return path + ": the transforms differ";
  if (a.opacity != b.opacity) return path + ": the opacities differ";
  if (a.hidden != b.hidden) return path + ": one is hidden";
  if (a.blend != b.blend) return path + ": the blend modes differ";
  if (a.isolated != b.isolated) return path + ": one is isolated";
  if (!a.clip != !b.clip) return path + ": one is clipped";
  if (!a.mask != !b.mask) return path + ": one is masked";
  if (!a.filter != !b.filter || (a.filter && !a.filter->isEqual(*b.filter))) {
    return path + ": the filters differ";
  }
  if (a.mask) {
    if (auto difference = firstDifference(*a.mask, *b.mask, path + "/mask")) return difference;
  }
  return a.clip ? firstDifference(*a.clip, *b.clip, path + "/clip") : std::nullopt;
}

[[nodiscard]] Difference compareGroups(const Group& a, const Group& b, const std::string& path) {
  const auto* mask = tq::objectCast<Mask>(&a);
  if (mask != nullptr) {
    const auto& other = static_cast<const Mask&>(b);
    if (!sameRaw(mask->region(), other.region())) return path + ": the regions differ";
    if (mask->kind() != other.kind()) return path + ": the kinds of mask differ";
  }
  const auto* pattern = tq::objectCast<Pattern>(&a);
  if (pattern != nullptr && !sameRaw(pattern->tile(), static_cast<const Pattern&>(b).tile())) {
    return path + ": the tiles differ";
  }
  if (a.count() != b.count()) return path + ": the numbers of children differ";
  for (std::size_t i = 0; i < a.count(); ++i) {
    const std::string childPath = path + "/" + std::to_string(i);
    if (auto difference = firstDifference(a.child(i), b.child(i), childPath)) return difference;
  }
  return std::nullopt;
}

[[nodiscard]] Difference compareShapes(const Shape& a, const Shape& b, const std::string& path) {
  if (!a.path().isEqual(b.path())) return path + ": the paths differ";
  if (!a.style().isEqual(b.style())) return path + ": the styles differ";
  return std::nullopt;
}

[[nodiscard]] Difference comparePictures(const Picture& a, const Picture& b,
                                         const std::string& path) {
  if (!sameRaw(a.frame(), b.frame()) || a.fit() != b.fit()) return path + ": the frames differ";
  if (a.mediaType() != b.mediaType() || !a.bytes().isEqual(b.bytes())) {
    return path + ": the images differ";
  }
  return std::nullopt;
}

[[nodiscard]] Difference compareTexts(const Text& a, const Text& b, const std::string& path) {
  if (a.string() != b.string()) return path + ": the strings differ";
  if (a.position() != b.position()) return path + ": the positions differ";
  if (!a.style().isEqual(b.style())) return path + ": the styles differ";
  if (!a.spans().isEqual(b.spans())) return path + ": the spans differ";
  return std::nullopt;
}

}  // namespace

std::optional<std::string> firstDifference(const Node& a, const Node& b, const std::string& path) {
  const std::string place = placeOf(path, a);
  if (&a.objectClass() != &b.objectClass()) return place + ": the kinds differ";
  if (auto difference = compareTraits(a.traits(), b.traits(), place)) return difference;
  if (const auto* group = tq::objectCast<Group>(&a)) {
    return compareGroups(*group, static_cast<const Group&>(b), path);
  }
  if (const auto* shape = tq::objectCast<Shape>(&a)) {
    return compareShapes(*shape, static_cast<const Shape&>(b), place);
  }
  if (const auto* text = tq::objectCast<Text>(&a)) {
    return compareTexts(*text, static_cast<const Text&>(b), place);
  }
  return comparePictures(static_cast<const Picture&>(a), static_cast<const Picture&>(b), place);
}

std::optional<std::string> firstDifference(const Document& a, const Document& b) {
  if (a.title() != b.title()) return "the titles differ";
  if (a.page().size != b.page().size || !sameRaw(a.page().viewBox, b.page().viewBox) ||
      !same(a.page().fit, b.page().fit)) {
    return "the pages differ";
  }
  if (!a.unsupported().isEqual(b.unsupported())) return "the unsupported features differ";
  return firstDifference(a.root(), b.root(), "root");
}

}  // namespace tqdoc
