#include "Model/HitIndex.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>

#include "Model/Marker.h"
#include "Model/Mask.h"
#include "Model/Numbers.h"
#include "Model/Text.h"

namespace tqdoc {
namespace {

/// Returns the path with every open subpath closed, as filling does.
[[nodiscard]] tq::Path closedPath(const tq::Path& path) {
  tq::Path closed;
  bool open = false;
  for (const tq::PathElement& element : path) {
    if (element.type == tq::PathElementType::move && open) closed.close();
    open = element.type != tq::PathElementType::close;
    const auto points = element.points;
    switch (element.type) {
      case tq::PathElementType::move:
        closed.moveTo(points[0]);
        break;
      case tq::PathElementType::line:
        closed.lineTo(points[0]);
        break;
      case tq::PathElementType::quadratic:
        closed.quadraticTo(points[0], points[1]);
        break;
      case tq::PathElementType::cubic:
        closed.cubicTo(points[0], points[1], points[2]);
        break;
      case tq::PathElementType::close:
        closed.close();
        break;
    }
  }
  if (open) closed.close();
  return closed;
}

/// Returns the signed number of crossings of the segment with the ray from `p` to +x: +1 upwards,
/// -1 downwards. A point at the height of the ray counts as below it, so a shared end counts once.
[[nodiscard]] int crossings(const tq::TQBezierSegment& segment, tq::Point p) {
  const tq::Rect bounds = tq::TQBezierSegmentGetControlPointBounds(segment);
  if (!(tq::RectGetMaxX(bounds) >= p.x && tq::RectGetMinY(bounds) <= p.y &&
        tq::RectGetMaxY(bounds) >= p.y)) {
    return 0;
  }
  const auto isAbove = [&](double t) {
    return tq::TQBezierSegmentPointAtOffset(segment, t).y > p.y;
  };
  int count = 0;
  bool above = segment.start().y > p.y;
  const auto passTo = [&](bool next, double t) {
    if (next != above && tq::TQBezierSegmentPointAtOffset(segment, t).x > p.x) {
      count += next ? 1 : -1;
    }
    above = next;
  };
  // Between two intersections with the line of the ray, a segment stays on one side.
  double before = 0;
  for (const double t : tq::TQBezierSegmentIntersectionsWithHorizontalLine(segment, p.y)) {
    if (t > before) passTo(isAbove((before + t) / 2), before);
    before = t;
  }
  if (before < 1) passTo(isAbove((before + 1) / 2), before);
  passTo(segment.end().y > p.y, 1);
  return count;
}

/// comesWithin() for a segment that is halved at most `halvings` times.
[[nodiscard]] bool pieceComesWithin(const tq::TQBezierSegment& segment, double distance,
                                    const tq::Rect& area, double flatEnough, int halvings) {
  if (!tq::RectIntersectsRect(tq::TQBezierSegmentGetControlPointBounds(segment),
                              grown(area, distance))) {
    return false;
  }
  if (halvings == 0 || tq::TQBezierSegmentFlatness(segment) <= flatEnough) {
    const tq::TQLineSegment chord{segment.start(), segment.end() - segment.start()};
    return chord.distance(area) <= distance;
  }
  tq::TQBezierSegment left, right;
  tq::TQBezierSegmentSplit(segment, 0.5, &left, &right);
  return pieceComesWithin(left, distance, area, flatEnough, halvings - 1) ||
         pieceComesWithin(right, distance, area, flatEnough, halvings - 1);
}

[[nodiscard]] bool outlineComesWithin(const tq::Path& path, double distance, const tq::Rect& area) {
  for (auto segments = tq::TQBezierSegmentIteratorMake(path); auto segment = segments.next();) {
    if (comesWithin(*segment, distance, area)) return true;
  }
  return false;
}

/// An area that no outline enters is completely inside or outside the fill.
[[nodiscard]] bool fillMeets(const tq::Path& path, bool evenOdd, const tq::Rect& area) {
  const bool isPoint = area.size.width == 0 && area.size.height == 0;
  if (!isPoint && outlineComesWithin(closedPath(path), 0, area)) return true;
  return fillContains(path, area.origin, evenOdd);
}

/// Returns half the width of the stroke in the drawing, or no value without a stroke.
[[nodiscard]] std::optional<double> strokeReach(const Shape& shape,
                                                const tq::AffineTransform& transform) {
  if (shape.style().objectForKey("stroke") == nullptr) return std::nullopt;
  if (numberIn(shape.style(), "nonScalingStroke", 0) != 0) {
    return numberIn(shape.style(), "strokeWidth", 1) / 2;
  }
  const double area = transform.a * transform.d - transform.b * transform.c;
  return numberIn(shape.style(), "strokeWidth", 1) / 2 * std::sqrt(std::abs(area));
}

[[nodiscard]] bool shapeMeets(const Shape& shape, const tq::AffineTransform& transform,
                              const tq::Rect& area) {
  const tq::Path outline = shape.path().outline(transform);
  const bool evenOdd = numberIn(shape.style(), "evenOdd", 0) != 0;
  if (shape.style().objectForKey("fill") != nullptr && fillMeets(outline, evenOdd, area)) {
    return true;
  }
  const auto reach = strokeReach(shape, transform);
  return reach && outlineComesWithin(outline, *reach, area);
}

[[nodiscard]] bool pictureMeets(const Picture& picture, const tq::AffineTransform& transform,
                                const tq::Rect& area) {
  tq::Path frame = tq::Path::pathWithRect(picture.frame());
  return fillMeets(frame.transformed(transform), false, area);
}

[[nodiscard]] bool meets(const PlacedNode& placed, const tq::Rect& area, bool inMarker = false);

/// A mask shows what its region and any of its nodes cover, whatever their brightness.
[[nodiscard]] bool maskMeets(const Mask& mask, const tq::AffineTransform& parent,
                             const tq::Rect& area) {
  const tq::Path region = tq::Path::pathWithRect(mask.region()).transformed(parent);
  return fillMeets(region, false, area) &&
         std::ranges::any_of(placedNodes(mask, parent),
                             [&](const PlacedNode& part) { return meets(part, area); });
}

[[nodiscard]] bool clipMeets(const PlacedNode::Clip& clip, const tq::Rect& area) {
  if (const auto* mask = tq::objectCast<Mask>(clip.node)) {
    return maskMeets(*mask, clip.parent, area);
  }
  return std::ranges::any_of(placedNodes(*clip.node, clip.parent), [&](const PlacedNode& part) {
    if (const auto* shape = tq::objectCast<Shape>(part.node)) {
      const bool evenOdd = numberIn(shape->style(), "evenOdd", 0) != 0;
      return fillMeets(shape->path().outline(part.transform), evenOdd, area);
    }
    if (const auto* text = tq::objectCast<Text>(part.node)) {
      return std::ranges::any_of(text->shapes(), [&](const tq::Ref<Shape>& shape) {
        return fillMeets(shape->path().outline(part.transform), false, area);
      });
    }
    const auto* picture = tq::objectCast<Picture>(part.node);
    return picture != nullptr && pictureMeets(*picture, part.transform, area);
  });
}

[[nodiscard]] bool markersMeet(const PlacedNode& placed, const tq::Rect& area);

bool meets(const PlacedNode& placed, const tq::Rect& area, bool inMarker) {
  const tq::AffineTransform& transform = placed.transform;
  bool there = false;
  if (const auto* shape = tq::objectCast<Shape>(placed.node)) {
    there = shapeMeets(*shape, transform, area) || (!inMarker && markersMeet(placed, area));
  } else if (const auto* text = tq::objectCast<Text>(placed.node)) {
    there = std::ranges::any_of(text->shapes(), [&](const tq::Ref<Shape>& glyphs) {
      return shapeMeets(*glyphs, transform, area);
    });
  } else if (const auto* picture = tq::objectCast<Picture>(placed.node)) {
    there = pictureMeets(*picture, transform, area);
  }
  return there && std::ranges::all_of(placed.clips, [&](const PlacedNode::Clip& clip) {
           return clipMeets(clip, area);
         });
}

[[nodiscard]] tq::Rect inkBounds(const Shape& shape, const tq::AffineTransform& transform) {
  return grown(shape.path().tightBounds(transform), strokeReach(shape, transform).value_or(0));
}

/// Returns a rect around everything that a node paints, without markers.
[[nodiscard]] tq::Rect plainBounds(const PlacedNode& placed) {
  if (const auto* shape = tq::objectCast<Shape>(placed.node)) {
    return inkBounds(*shape, placed.transform);
  }
  const auto* text = tq::objectCast<Text>(placed.node);
  if (text == nullptr) return outlineBounds(placed);
  tq::Rect bounds = tq::RectNull;
  for (const auto& glyphs : text->shapes()) {
    bounds = tq::RectUnion(bounds, inkBounds(*glyphs, placed.transform));
  }
  return bounds;
}

/// Calls `visit` with each marker of a shape, its transform to the drawing, and a rect around it.
/// Stops when `visit` returns true.
template <class Visit>
void findMarker(const PlacedNode& placed, Visit&& visit) {
  const auto* shape = tq::objectCast<Shape>(placed.node);
  if (shape == nullptr) return;
  std::map<const Marker*, tq::Rect> known;
  for (const PlacedMarker& each : placedMarkers(*shape)) {
    const auto [bounds, isNew] = known.emplace(each.marker, tq::RectNull);
    if (isNew) {
      for (const PlacedNode& part : placedNodes(each.marker->content())) {
        bounds->second = tq::RectUnion(bounds->second, plainBounds(part));
      }
    }
    const auto transform = tq::AffineTransformConcat(each.transform, placed.transform);
    const tq::Rect around = tq::RectApplyAffineTransform(bounds->second, transform);
    if (visit(each.marker->content(), transform, around)) return;
  }
}

[[nodiscard]] bool markersMeet(const PlacedNode& placed, const tq::Rect& area) {
  bool met = false;
  findMarker(placed, [&](const Node& content, const auto& transform, const tq::Rect& around) {
    met = tq::RectIntersectsRect(around, area) &&
          std::ranges::any_of(placedNodes(content, transform),
                              [&](const PlacedNode& part) { return meets(part, area, true); });
    return met;
  });
  return met;
}

/// Returns a rect around everything that a node paints.
[[nodiscard]] tq::Rect inkBounds(const PlacedNode& placed) {
  tq::Rect bounds = plainBounds(placed);
  findMarker(placed, [&](const Node&, const auto&, const tq::Rect& around) {
    bounds = tq::RectUnion(bounds, around);
    return false;
  });
  return bounds;
}

}  // namespace

bool fillContains(const tq::Path& path, tq::Point p, bool evenOdd) {
  int winding = 0;
  const tq::Path closed = closedPath(path);
  for (auto segments = tq::TQBezierSegmentIteratorMake(closed); auto segment = segments.next();) {
    winding += crossings(*segment, p);
  }
  return evenOdd ? winding % 2 != 0 : winding != 0;
}

bool comesWithin(const tq::TQBezierSegment& segment, double distance, const tq::Rect& area) {
  constexpr int kHalvings = 16;
  const tq::Size extent = tq::TQBezierSegmentGetControlPointBounds(segment).size;
  const double detail = 4e-6 * std::max(extent.width, extent.height);  // √flatness is 4 × the error
  return pieceComesWithin(segment, distance, area, detail * detail, kHalvings);
}

HitIndex::HitIndex(const Document& document)
    : nodes_(placedNodes(document.root())), tree_(tq::makeRef<tq::RTree<std::size_t>>(16)) {
  for (std::size_t i = 0; i < nodes_.size(); ++i) tree_->insert(i, inkBounds(nodes_[i]));
}

std::vector<const PlacedNode*> HitIndex::hits(const tq::Rect& area) const {
  std::vector<std::size_t> found = tq::elementsIntersecting(*tree_, area);
  std::erase_if(found, [&](std::size_t index) { return !meets(nodes_[index], area); });
  std::ranges::sort(found, std::ranges::greater());
  std::vector<const PlacedNode*> nodes;
  for (const std::size_t index : found) nodes.push_back(&nodes_[index]);
  return nodes;
}

}  // namespace tqdoc
