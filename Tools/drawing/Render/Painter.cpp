#include "Render/Painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Model/Document.h"
#include "Model/Numbers.h"
#include "Model/Text.h"
#include "Render/CairoSource.h"

namespace tqdoc {
namespace {

[[nodiscard]] std::string_view textIn(const tq::Dictionary& style, std::string_view key) {
  const auto* text = tq::objectCast<tq::String>(style.objectForKey(key));
  return text != nullptr ? text->view() : std::string_view();
}

constexpr double kTolerance = 0.1;  // of curves, in pixels

/// A negative dash length, or only zeros, puts cairo into an error state.
[[nodiscard]] bool isDashing(const std::vector<double>& lengths) {
  return std::ranges::all_of(lengths, [](double length) { return length >= 0; }) &&
         std::ranges::any_of(lengths, [](double length) { return length > 0; });
}

/// Returns the length of the lines between a path's points, which is at least that of its curves.
[[nodiscard]] double longestLength(const PathData& path) {
  double length = 0;
  tq::Point before;
  path.forEach([&](char step, const tq::Point* points) {
    for (int i = 0; i < PathData::pointsOf(step); ++i) {
      if (step != 'M') length += std::hypot(points[i].x - before.x, points[i].y - before.y);
      before = points[i];
    }
  });
  return length;
}

/// Returns the largest factor by which a transform lengthens a vector.
[[nodiscard]] double largestScale(const tq::AffineTransform& t) {
  return (std::hypot(t.a + t.d, t.b - t.c) + std::hypot(t.a - t.d, t.b + t.c)) / 2;
}

/// Sets the pen. Its cost is bounded, also for a hostile transform: cairo makes a point for each
/// deviation of a round join from a polygon, and a piece for each dash. A stroke wider than any
/// picture gets coarser joins, and one of too many dashes is solid.
void setPen(cairo_t* cr, const Shape& shape, const tq::AffineTransform& transform) {
  constexpr double kToleranceOfWidth = 2e-5;
  constexpr double kMostDashes = 1e6;
  const tq::Dictionary& style = shape.style();
  const double width = numberIn(style, "strokeWidth", 1);
  cairo_set_tolerance(
      cr, std::max(kTolerance, kToleranceOfWidth * std::abs(width) * largestScale(transform)));
  const std::string_view cap = textIn(style, "lineCap");
  const std::string_view join = textIn(style, "lineJoin");
  cairo_set_line_width(cr, width);
  cairo_set_miter_limit(cr, numberIn(style, "miterLimit", 4));
  cairo_set_line_cap(cr, cap == "round"    ? CAIRO_LINE_CAP_ROUND
                         : cap == "square" ? CAIRO_LINE_CAP_SQUARE
                                           : CAIRO_LINE_CAP_BUTT);
  cairo_set_line_join(cr, join == "round"   ? CAIRO_LINE_JOIN_ROUND
                          : join == "bevel" ? CAIRO_LINE_JOIN_BEVEL
                                            : CAIRO_LINE_JOIN_MITER);
  const auto* dashes = tq::objectCast<tq::Array>(style.objectForKey("dashes"));
  const auto lengths = dashes != nullptr ? numbersOf(*dashes) : std::nullopt;
  const bool isDashed = lengths && isDashing(*lengths);
  const double period = isDashed ? std::accumulate(lengths->begin(), lengths->end(), 0.0) : 0;
  if (isDashed && longestLength(shape.path()) < kMostDashes * period) {
    cairo_set_dash(cr, lengths->data(), static_cast<int>(lengths->size()),
                   numberIn(style, "dashOffset", 0));
  } else {
    cairo_set_dash(cr, nullptr, 0, 0);
  }
}

}  // namespace

void addPath(cairo_t* cr, const PathData& path) {
  cairo_new_path(cr);
  path.forEach([cr](char step, const tq::Point* p) {
    switch (step) {
      case 'M':
        return cairo_move_to(cr, p[0].x, p[0].y);
      case 'L':
        return cairo_line_to(cr, p[0].x, p[0].y);
      case 'C':
        return cairo_curve_to(cr, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
      default:
        return cairo_close_path(cr);
    }
  });
}

void Painter::paint(const Node& node, const tq::AffineTransform& parent) {
  const Node::Traits& traits = node.traits();
  const auto transform = tq::AffineTransformConcat(traits.transform, parent);
  if (traits.hidden || !isUsable(transform)) return;
  const bool translucent = traits.opacity < 1 && !silhouette_;
  if ((translucent || traits.clip) && layers_ < kLayerLimit) {
    paintAsLayer(node, transform);
  } else {
    paintContent(node, transform);
  }
}

void Painter::paintAsLayer(const Node& node, const tq::AffineTransform& transform) {
  const Node::Traits& traits = node.traits();
  ++layers_;
  // A layer is placed by the transform at its beginning. Layers are images of the pixels, whatever
  // transform the shape before left behind.
  setTransform(cr_, tq::AffineTransformIdentity);
  cairo_push_group(cr_);
  paintContent(node, transform);
  if (traits.clip) {
    const CairoPattern content(cairo_pop_group(cr_));
    cairo_push_group_with_content(cr_, CAIRO_CONTENT_ALPHA);
    const bool outer = std::exchange(silhouette_, true);
    paint(*traits.clip, transform);
    silhouette_ = outer;
    const CairoPattern mask(cairo_pop_group(cr_));
    cairo_push_group(cr_);
    cairo_set_source(cr_, content.get());
    cairo_mask(cr_, mask.get());
  }
  cairo_pop_group_to_source(cr_);
  cairo_paint_with_alpha(cr_, silhouette_ ? 1 : traits.opacity);
  --layers_;
}

void Painter::paintContent(const Node& node, const tq::AffineTransform& transform) {
  if (const auto* shape = tq::objectCast<Shape>(&node)) {
    paintShape(*shape, transform);
  } else if (const auto* picture = tq::objectCast<Picture>(&node)) {
    paintPicture(*picture, transform);
  } else if (const auto* text = tq::objectCast<Text>(&node)) {
    for (const auto& glyphs : text->shapes()) paintShape(*glyphs, transform);
  } else if (const auto* group = tq::objectCast<Group>(&node)) {
    for (std::size_t i = 0; i < group->count(); ++i) paint(group->child(i), transform);
  }
}

void Painter::paintShape(const Shape& shape, const tq::AffineTransform& transform) {
  if (silhouette_) return fill(shape, transform);
  struct Part {
    std::string_view word;
    void (Painter::*paint)(const Shape&, const tq::AffineTransform&);
  };
  std::array parts{Part{"fill", &Painter::fill}, Part{"stroke", &Painter::stroke}};
  const std::string_view order = textIn(shape.style(), "paintOrder");
  std::ranges::stable_sort(parts, {}, [&](const Part& part) { return order.find(part.word); });
  for (const Part& part : parts) (this->*part.paint)(shape, transform);
}

void Painter::fill(const Shape& shape, const tq::AffineTransform& transform) {
  const tq::Dictionary& style = shape.style();
  setTransform(cr_, transform);
  if (silhouette_) {
    cairo_set_source_rgba(cr_, 0, 0, 0, 1);
  } else if (!setSource(cr_, style.objectForKey("fill"), numberIn(style, "fillOpacity", 1))) {
    return;
  }
  addPath(cr_, shape.path());
  cairo_set_fill_rule(
      cr_, numberIn(style, "evenOdd", 0) != 0 ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
  cairo_fill(cr_);
}

void Painter::stroke(const Shape& shape, const tq::AffineTransform& transform) {
  const tq::Dictionary& style = shape.style();
  setTransform(cr_, transform);
  if (!setSource(cr_, style.objectForKey("stroke"), numberIn(style, "strokeOpacity", 1))) return;
  addPath(cr_, shape.path());
  setPen(cr_, shape, transform);
  cairo_stroke(cr_);
  cairo_set_tolerance(cr_, kTolerance);
}

void Painter::paintPicture(const Picture& picture, const tq::AffineTransform& transform) {
  const CairoSurface image = decodePNG(picture.bytes());
  const tq::Rect& frame = picture.frame();
  if (!image) return;
  const double width = cairo_image_surface_get_width(image.get());
  const double height = cairo_image_surface_get_height(image.get());
  const tq::AffineTransform fitted =
      tq::AffineTransformConcat(viewTransform({0, 0, width, height}, frame.size, picture.fit()),
                                {1, 0, 0, 1, frame.origin.x, frame.origin.y});
  const auto inside = tq::AffineTransformConcat(fitted, transform);
  if (!isUsable(inside)) return;
  cairo_save(cr_);
  setTransform(cr_, transform);
  cairo_rectangle(cr_, frame.origin.x, frame.origin.y, frame.size.width, frame.size.height);
  cairo_clip(cr_);
  setTransform(cr_, inside);
  cairo_rectangle(cr_, 0, 0, width, height);
  cairo_set_source_surface(cr_, image.get(), 0, 0);
  cairo_fill(cr_);
  cairo_restore(cr_);
}

}  // namespace tqdoc
