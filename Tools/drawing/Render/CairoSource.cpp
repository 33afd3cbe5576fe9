#include "Render/CairoSource.h"

#include <cmath>

#include "Model/Gradient.h"
#include "Svg/SvgColor.h"

namespace tqdoc {

cairo_matrix_t matrixOf(const tq::AffineTransform& t) noexcept {
  return {t.a, t.b, t.c, t.d, t.tx, t.ty};
}

bool isUsable(const tq::AffineTransform& t) noexcept {
  const double determinant = t.a * t.d - t.b * t.c;
  return std::isfinite(determinant) && determinant != 0 && std::isfinite(1 / determinant) &&
         std::isfinite(t.tx) && std::isfinite(t.ty);
}

void setTransform(cairo_t* cr, const tq::AffineTransform& transform) {
  const cairo_matrix_t matrix = matrixOf(transform);
  cairo_set_matrix(cr, &matrix);
}

bool setSource(cairo_t* cr, const tq::Object* paint, double opacity) {
  if (const auto* text = tq::objectCast<tq::String>(paint)) {
    const auto color = parseColor(text->view());
    if (!color) return false;
    cairo_set_source_rgba(cr, color->red, color->green, color->blue, color->alpha * opacity);
    return true;
  }
  const auto* gradient = tq::objectCast<Gradient>(paint);
  if (gradient == nullptr || !isUsable(gradient->geometry().transform)) return false;
  const GradientGeometry& g = gradient->geometry();
  const CairoPattern pattern(
      g.radial ? cairo_pattern_create_radial(g.start.x, g.start.y, g.focalRadius, g.end.x, g.end.y,
                                             g.radius)
               : cairo_pattern_create_linear(g.start.x, g.start.y, g.end.x, g.end.y));
  for (const GradientStop& stop : gradient->stops()) {
    cairo_pattern_add_color_stop_rgba(pattern.get(), stop.offset, stop.red, stop.green, stop.blue,
                                      stop.alpha * opacity);
  }
  constexpr cairo_extend_t kExtends[] = {CAIRO_EXTEND_PAD, CAIRO_EXTEND_REFLECT,
                                         CAIRO_EXTEND_REPEAT};
  cairo_pattern_set_extend(pattern.get(), kExtends[static_cast<std::size_t>(g.spread)]);
  const cairo_matrix_t inverse = matrixOf(tq::AffineTransformInvert(g.transform));
  cairo_pattern_set_matrix(pattern.get(), &inverse);
  cairo_set_source(cr, pattern.get());
  return true;
}

}  // namespace tqdoc
