#include "Render/CairoSource.h"

#include <cmath>
#include <new>
#include <stdexcept>

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

bool setSource(cairo_t* cr, cairo_pattern_t* pattern) {
  // The limits depend on the whole matrix in ways that only cairo knows. So it has to draw
  // something with the pattern: the corner of the surface that this context draws into.
  double x, y;
  cairo_surface_get_device_offset(cairo_get_group_target(cr), &x, &y);
  const CairoSurface corner(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 2, 2));
  cairo_surface_set_device_offset(corner.get(), x, y);
  const CairoContext trial(cairo_create(corner.get()));
  cairo_matrix_t matrix;
  cairo_get_matrix(cr, &matrix);
  cairo_set_matrix(trial.get(), &matrix);
  cairo_set_source(trial.get(), pattern);
  cairo_paint(trial.get());
  if (cairo_status(trial.get()) != CAIRO_STATUS_SUCCESS) return false;
  cairo_set_source(cr, pattern);
  return true;
}

bool setSource(cairo_t* cr, std::string_view text, double opacity) {
  const auto color = parseColor(text);
  if (!color) return false;
  cairo_set_source_rgba(cr, color->red, color->green, color->blue, color->alpha * opacity);
  return true;
}

CairoPattern patternOf(const Gradient& gradient, double opacity) {
  const GradientGeometry& g = gradient.geometry();
  CairoPattern pattern(g.radial
                           ? cairo_pattern_create_radial(g.start.x, g.start.y, g.focalRadius,
                                                         g.end.x, g.end.y, g.radius)
                           : cairo_pattern_create_linear(g.start.x, g.start.y, g.end.x, g.end.y));
  for (const GradientStop& stop : gradient.stops()) {
    cairo_pattern_add_color_stop_rgba(pattern.get(), stop.offset, stop.red, stop.green, stop.blue,
                                      stop.alpha * opacity);
  }
  constexpr cairo_extend_t kExtends[] = {CAIRO_EXTEND_PAD, CAIRO_EXTEND_REFLECT,
                                         CAIRO_EXTEND_REPEAT};
  cairo_pattern_set_extend(pattern.get(), kExtends[static_cast<std::size_t>(g.spread)]);
  const cairo_matrix_t inverse = matrixOf(tq::AffineTransformInvert(g.transform));
  cairo_pattern_set_matrix(pattern.get(), &inverse);
  return pattern;
}

void requireIntact(cairo_t* cr) {
  const cairo_status_t status = cairo_status(cr);
  if (status == CAIRO_STATUS_SUCCESS) return;
  if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw std::runtime_error(cairo_status_to_string(status));
}

}  // namespace tqdoc
