#include "Report/Outlines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tqdoc {
namespace {

/// Appends a coordinate, rounded to a tenth of a pixel.
void append(std::string& text, double number) {
  std::array<char, 64> digits;
  const double bounded = std::isfinite(number) ? std::clamp(number, -1e6, 1e6) : 0;
  auto end = std::to_chars(digits.data(), digits.data() + digits.size(), bounded,
                           std::chars_format::fixed, 1)
                 .ptr;
  if (end[-1] == '0') end -= 2;
  text.append(digits.data(), end) += ' ';
}

void append(std::string& text, char letter, const tq::Point* points, int count) {
  text += letter;
  for (int i = 0; i < count; ++i) {
    append(text, points[i].x);
    append(text, points[i].y);
  }
}

void appendRect(std::string& text, const tq::Rect& rect) {
  const auto [x, y] = rect.origin;
  const tq::Point corners[] = {{x, y},
                               {x + rect.size.width, y},
                               {x + rect.size.width, y + rect.size.height},
                               {x, y + rect.size.height}};
  append(text, 'M', corners, 4);
  text += 'Z';
}

}  // namespace

Outlines::Outlines(const Document& document, const tq::AffineTransform& toPixels) {
  add(document.root(), toPixels);
}

void Outlines::add(const Node& node, const tq::AffineTransform& parent) {
  if (node.traits().hidden) return;
  Range range{leaves_.size(), 0};
  if (const auto* group = tq::objectCast<Group>(&node)) {
    const auto transform = tq::AffineTransformConcat(node.traits().transform, parent);
    for (std::size_t i = 0; i < group->count(); ++i) add(group->child(i), transform);
  } else {
    leaves_.push_back({&node, parent});
  }
  range.last = leaves_.size();
  ranges_.emplace(&node, range);
  for (const auto* cover : {&node.traits().clip, &node.traits().mask}) {
    if (*cover) addCover(**cover, range);
  }
}

void Outlines::addCover(const Node& cover, Range covered) {
  ranges_.emplace(&cover, covered);
  for (const auto* inner : {&cover.traits().clip, &cover.traits().mask}) {
    if (*inner) addCover(**inner, covered);
  }
  if (const auto* group = tq::objectCast<Group>(&cover)) {
    for (std::size_t i = 0; i < group->count(); ++i) addCover(group->child(i), covered);
  }
}

std::optional<Outline> Outlines::of(const Node& node) const {
  const auto found = ranges_.find(&node);
  if (found == ranges_.end()) return std::nullopt;
  Outline outline{"", tq::RectNull};
  std::size_t steps = 0;
  for (std::size_t i = found->second.first; i < found->second.last; ++i) {
    const auto& [leaf, parent] = leaves_[i];
    const tq::Rect bounds = tightBounds(*leaf, parent);
    if (tq::RectIsNull(bounds)) continue;
    outline.bounds = tq::RectUnion(outline.bounds, bounds);
    const auto* shape = tq::objectCast<Shape>(leaf);
    steps += shape != nullptr ? shape->path().steps().size() : 4;
    if (steps > kMostSteps) continue;
    if (shape == nullptr) {
      appendRect(outline.path, bounds);
      continue;
    }
    const auto transform = tq::AffineTransformConcat(leaf->traits().transform, parent);
    shape->path().forEach([&](char step, tq::Point* points) {
      const int count = PathData::pointsOf(step);
      for (int j = 0; j < count; ++j) {
        points[j] = tq::PointApplyAffineTransform(points[j], transform);
      }
      append(outline.path, step, points, count);
    });
  }
  if (tq::RectIsNull(outline.bounds)) return std::nullopt;
  if (steps > kMostSteps) {
    outline.path.clear();
    appendRect(outline.path, outline.bounds);
  }
  return outline;
}

}  // namespace tqdoc
