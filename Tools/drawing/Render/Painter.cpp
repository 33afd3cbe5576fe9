#include "Render/Painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Model/Document.h"
#include "Model/Gradient.h"
#include "Model/Marker.h"
#include "Model/Numbers.h"
#include "Model/Text.h"
#include "Model/TextLayout.h"
#include "Render/CairoSource.h"
#include "Render/FilterPainter.h"
#include "Render/Images.h"
#include "Render/InkBounds.h"
#include "Render/Layer.h"

namespace tqdoc {
namespace {

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

/// Returns whether drawing dashes would take too long: too many at all, or too many in one place,
/// as cairo intersects those that overlap.
/// @param reach  of a dash, in pixels
[[nodiscard]] bool areTooMany(double count, double reach, const PixelArea& picture) {
  constexpr double kMost = 1e6;
  constexpr double kMostInOnePlace = 1e4;
  const double share = std::min(1.0, reach / std::max(picture.width, picture.height));
  return !(count < kMost && count * share < kMostInOnePlace);  // also for NaN
}

/// Sets the pen. Returns false if a stroke of too many dashes is solid. Its cost is bounded, also
/// for a hostile transform: cairo makes a point for each deviation of a round join from a polygon,
/// and a piece for each dash. A stroke wider than any picture gets coarser joins, and one of too
/// many dashes is solid.
[[nodiscard]] bool setPen(cairo_t* cr, const Shape& shape, const tq::AffineTransform& transform) {
  constexpr double kToleranceOfWidth = 2e-5;
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
  cairo_set_dash(cr, nullptr, 0, 0);
  const auto picture = visiblePixels(cr, tq::RectInfinite);
  if (!isDashed || !picture) return true;
  const double period = std::accumulate(lengths->begin(), lengths->end(), 0.0);
  const double count = longestLength(shape.path()) / period;
  const double reach = (period + std::abs(width)) * largestScale(transform);
  if (areTooMany(count, reach, *picture)) return false;
  cairo_set_dash(cr, lengths->data(), static_cast<int>(lengths->size()),
                 numberIn(style, "dashOffset", 0));
  return true;
}

[[nodiscard]] cairo_operator_t operatorOf(Blend blend) {
  static_assert(CAIRO_OPERATOR_HSL_LUMINOSITY - CAIRO_OPERATOR_MULTIPLY ==
                static_cast<int>(Blend::luminosity) - static_cast<int>(Blend::multiply));
  if (blend == Blend::normal) return CAIRO_OPERATOR_OVER;
  return static_cast<cairo_operator_t>(CAIRO_OPERATOR_MULTIPLY + static_cast<int>(blend) -
                                       static_cast<int>(Blend::multiply));
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

void Painter::paintDrawing(const Node& root, const tq::AffineTransform& parent) {
  if (!blendsWithBackdrop(root)) return paint(root, parent);
  setTransform(cr_, tq::AffineTransformIdentity);
  cairo_push_group(cr_);
  paint(root, parent);
  setTransform(cr_, tq::AffineTransformIdentity);
  cairo_pop_group_to_source(cr_);
  cairo_paint(cr_);
}

void Painter::paint(const Node& node, const tq::AffineTransform& parent) {
  const Node::Traits& traits = node.traits();
  const auto transform = tq::AffineTransformConcat(traits.transform, parent);
  if (traits.hidden || !isUsable(transform)) return;
  if (inMarker_ && ++markerNodes_ > kMarkerNodeLimit) {
    ++leftOut_["shapes of too many markers"];
    return;
  }
  const bool translucent = traits.opacity < 1 && !silhouette_;
  const bool changed = (traits.filter || traits.mask) && !silhouette_;
  const bool blending = (traits.isolated || traits.blend != Blend::normal) && !silhouette_;
  const bool isLayer = translucent || changed || blending || traits.clip;
  if (isLayer && layers_ < kLayerLimit) return paintAsLayer(node, transform);
  if (isLayer) ++leftOut_["effects that are nested too deeply"];
  paintContent(node, transform);
}

void Painter::paintAsLayer(const Node& node, const tq::AffineTransform& transform) {
  const Node::Traits& traits = node.traits();
  const auto area = visiblePixels(cr_, inkBounds(node, transform));
  if (!area) return;
  ++layers_;
  cairo_save(cr_);  // a layer has the size of the clip
  // A layer is placed by the transform at its beginning. Layers are images of the pixels, whatever
  // transform the shape before left behind.
  setTransform(cr_, tq::AffineTransformIdentity);
  cairo_rectangle(cr_, area->x, area->y, area->width, area->height);
  cairo_clip(cr_);
  cairo_push_group(cr_);
  if (traits.filter && !silhouette_) {
    paintFiltered(node, transform);
  } else {
    paintContent(node, transform);
  }
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
  if (traits.mask && !silhouette_) {
    const auto* mask = tq::objectCast<Mask>(traits.mask.get());
    if (mask != nullptr) paintMasked(*mask, transform);
  }
  cairo_pop_group_to_source(cr_);
  if (!silhouette_) cairo_set_operator(cr_, operatorOf(traits.blend));
  cairo_paint_with_alpha(cr_, silhouette_ ? 1 : traits.opacity);
  cairo_restore(cr_);
  --layers_;
}

bool Painter::spendPixels(std::size_t count) {
  if (count > pixelsLeft_) return false;
  pixelsLeft_ -= count;
  return true;
}

template <class Draw>
void Painter::drawInto(cairo_surface_t* image, const Draw& draw) {
  const CairoContext context(cairo_create(image));
  cairo_t* const outer = std::exchange(cr_, context.get());
  draw();
  requireIntact(cr_);
  cr_ = outer;
}

void Painter::paintFiltered(const Node& node, const tq::AffineTransform& transform) {
  const Filter& filter = *node.traits().filter;
  const auto area = visiblePixels(cr_, tq::RectApplyAffineTransform(filter.region(), transform));
  if (!area) return;
  if (!spendPixels(filter.steps().size() * area->count())) {
    ++leftOut_["filters of too many pixels"];
    return paintContent(node, transform);
  }
  CairoSurface source = layerFor(*area);
  drawInto(source.get(), [&] { paintContent(node, transform); });
  const CairoSurface result = filtered(std::move(source), *area, filter, transform);
  if (!result) return paintContent(node, transform);
  setTransform(cr_, tq::AffineTransformIdentity);
  cairo_set_source_surface(cr_, result.get(), 0, 0);
  cairo_paint(cr_);
}

/// Multiplies the current layer with a mask.
void Painter::paintMasked(const Mask& mask, const tq::AffineTransform& transform) {
  const auto area = visiblePixels(cr_, tq::RectApplyAffineTransform(mask.region(), transform));
  const CairoPattern content(cairo_pop_group(cr_));
  setTransform(cr_, tq::AffineTransformIdentity);
  cairo_push_group(cr_);
  if (!area) return;
  const CairoSurface image = layerFor(*area);
  drawInto(image.get(), [&] {
    setTransform(cr_, transform);
    const tq::Rect& region = mask.region();
    cairo_rectangle(cr_, region.origin.x, region.origin.y, region.size.width, region.size.height);
    cairo_clip(cr_);
    paint(mask, transform);
  });
  if (mask.kind() == Mask::Kind::luminance) setAlphaToLuminance(image.get());
  cairo_set_source(cr_, content.get());
  cairo_mask_surface(cr_, image.get(), 0, 0);
}

void Painter::paintContent(const Node& node, const tq::AffineTransform& transform) {
  if (const auto* shape = tq::objectCast<Shape>(&node)) {
    paintShape(*shape, transform);
  } else if (const auto* picture = tq::objectCast<Picture>(&node)) {
    paintPicture(*picture, transform);
  } else if (const auto* text = tq::objectCast<Text>(&node)) {
    paintText(*text, transform);
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
  std::array parts{Part{"fill", &Painter::fill}, Part{"stroke", &Painter::stroke},
                   Part{"markers", &Painter::paintMarkers}};
  const std::string_view order = textIn(shape.style(), "paintOrder");
  std::ranges::stable_sort(parts, {}, [&](const Part& part) { return order.find(part.word); });
  for (const Part& part : parts) (this->*part.paint)(shape, transform);
}

void Painter::fill(const Shape& shape, const tq::AffineTransform& transform) {
  const tq::Dictionary& style = shape.style();
  setTransform(cr_, transform);
  if (silhouette_) {
    cairo_set_source_rgba(cr_, 0, 0, 0, 1);
  } else if (!setPaint(style.objectForKey("fill"), numberIn(style, "fillOpacity", 1), transform)) {
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
  if (!setPaint(style.objectForKey("stroke"), numberIn(style, "strokeOpacity", 1), transform))
    return;
  addPath(cr_, shape.path());
  const bool scales = numberIn(style, "nonScalingStroke", 0) == 0;
  if (!scales) setTransform(cr_, tq::AffineTransformIdentity);
  if (!setPen(cr_, shape, scales ? transform : tq::AffineTransformIdentity)) {
    ++leftOut_["dashes of a long stroke"];
  }
  cairo_stroke(cr_);
  cairo_set_tolerance(cr_, kTolerance);
}

void Painter::paintMarkers(const Shape& shape, const tq::AffineTransform& transform) {
  if (std::exchange(inMarker_, true)) return;
  for (const PlacedMarker& placed : placedMarkers(shape)) {
    if (markerNodes_ > kMarkerNodeLimit) break;
    paint(placed.marker->content(), tq::AffineTransformConcat(placed.transform, transform));
  }
  inMarker_ = false;
}

bool Painter::setPaint(const tq::Object* paint, double opacity,
                       const tq::AffineTransform& transform) {
  if (const auto* color = tq::objectCast<tq::String>(paint)) {
    return setSource(cr_, color->view(), opacity);
  }
  if (const auto* gradient = tq::objectCast<Gradient>(paint)) {
    return isUsable(gradient->geometry().transform) &&
           setCounted(patternOf(*gradient, opacity), "gradients that are too small");
  }
  const auto* pattern = tq::objectCast<Pattern>(paint);
  return pattern != nullptr && setPattern(*pattern, opacity, transform);
}

bool Painter::setCounted(const CairoPattern& pattern, std::string_view nameIfNot) {
  if (setSource(cr_, pattern.get())) return true;
  ++leftOut_[std::string(nameIfNot)];
  return false;
}

/// Draws one tile into an image of about its size in pixels, and repeats that.
bool Painter::setPattern(const Pattern& pattern, double opacity,
                         const tq::AffineTransform& transform) {
  constexpr double kSideLimit = 4096;
  const tq::Rect& tile = pattern.tile();
  const tq::AffineTransform& own = pattern.traits().transform;
  const auto toPixels = tq::AffineTransformConcat(own, transform);
  if (!isUsable(own) || !isUsable(toPixels)) return false;
  if (!(tile.size.width > 0 && tile.size.height > 0)) return false;
  const auto side = [](double length, double x, double y) {
    return std::clamp(std::ceil(length * std::hypot(x, y) - 1e-6), 1.0, double{kSideLimit});
  };
  const double width = side(tile.size.width, toPixels.a, toPixels.b);
  const double height = side(tile.size.height, toPixels.c, toPixels.d);
  const double sx = width / tile.size.width, sy = height / tile.size.height;
  const tq::AffineTransform toTile{sx, 0, 0, sy, 0, 0};
  if (!isUsable(toTile)) return false;

  const PixelArea area{0, 0, static_cast<int>(width), static_cast<int>(height)};
  if (layers_ >= kLayerLimit || !spendPixels(area.count())) {
    ++leftOut_["patterns of too many pixels"];
    return false;
  }
  const CairoSurface image = layerFor(area);
  ++layers_;
  drawInto(image.get(), [&] {
    for (std::size_t i = 0; i < pattern.count(); ++i) paint(pattern.child(i), toTile);
  });
  if (opacity < 1) {
    drawInto(image.get(), [&] {
      cairo_set_operator(cr_, CAIRO_OPERATOR_DEST_IN);
      cairo_paint_with_alpha(cr_, opacity);
    });
  }
  --layers_;
  // From pixels of the picture to those of the tile. They repeat, so whole tiles do not matter; nor
  // does the scale of an axis with one pixel. Cairo cannot draw large numbers.
  tq::AffineTransform toImage =
      tq::AffineTransformConcat(tq::AffineTransformInvert(toPixels),
                                {sx, 0, 0, sy, -tile.origin.x * sx, -tile.origin.y * sy});
  const auto reduce = [](double length, double& x, double& y, double& offset) {
    const double scale = length > 1 ? 1 : std::max({1.0, std::abs(x), std::abs(y)});
    x /= scale;
    y /= scale;
    offset = std::remainder(offset / scale, length);
  };
  reduce(width, toImage.a, toImage.c, toImage.tx);
  reduce(height, toImage.b, toImage.d, toImage.ty);
  if (!isUsable(toImage)) return false;
  const CairoPattern source(cairo_pattern_create_for_surface(image.get()));
  cairo_pattern_set_extend(source.get(), CAIRO_EXTEND_REPEAT);
  const cairo_matrix_t matrix = matrixOf(toImage);
  cairo_pattern_set_matrix(source.get(), &matrix);
  setTransform(cr_, tq::AffineTransformIdentity);
  const bool isSet = setCounted(source, "patterns that are too small");
  setTransform(cr_, transform);
  return isSet;
}

void Painter::paintText(const Text& text, const tq::AffineTransform& transform) {
  const TextOutlines outlines = layOut(text);
  for (const auto& glyphs : outlines.shapes) paintShape(*glyphs, transform);
  if (outlines.withoutGlyph > 0) {
    leftOut_["characters that no font has"] += outlines.withoutGlyph;
  }
  if (outlines.coloured > 0) leftOut_["colours of fonts"] += outlines.coloured;
}

void Painter::paintPicture(const Picture& picture, const tq::AffineTransform& transform) {
  const CairoSurface image = decodeImage(picture.bytes());
  const tq::Rect& frame = picture.frame();
  if (!image) {
    // Those of other types were counted by the reader.
    const bool isKnown = picture.mediaType() == "image/png" || picture.mediaType() == "image/jpeg";
    if (isKnown) ++leftOut_["damaged or too large image"];
    return;
  }
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
  const CairoPattern source(cairo_pattern_create_for_surface(image.get()));
  cairo_pattern_set_extend(source.get(), CAIRO_EXTEND_PAD);  // no soft edges
  if (setCounted(source, "images that are too small")) cairo_fill(cr_);
  cairo_restore(cr_);
}

}  // namespace tqdoc
