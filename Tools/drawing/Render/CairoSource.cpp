#include "Render/CairoSource.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

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

CairoSurface decodePNG(const tq::Data& data) {
  // Reads width and height from the header first: a small file may claim any size.
  constexpr std::size_t kWidthAt = 16;
  constexpr std::uint64_t kPixelLimit = 64'000'000;
  const std::span<const std::byte> bytes = data.bytes();
  if (bytes.size() < kWidthAt + 8) return nullptr;
  std::uint64_t sides[2] = {};
  for (std::size_t i = 0; i < 8; ++i) {
    sides[i / 4] = sides[i / 4] << 8 | std::to_integer<std::uint64_t>(bytes[kWidthAt + i]);
  }
  if (sides[0] * sides[1] > kPixelLimit) return nullptr;

  std::span<const std::byte> rest = bytes;
  const auto read = [](void* closure, unsigned char* to, unsigned int length) -> cairo_status_t {
    auto& from = *static_cast<std::span<const std::byte>*>(closure);
    if (from.size() < length) return CAIRO_STATUS_READ_ERROR;
    std::transform(from.begin(), from.begin() + length, to,
                   [](std::byte byte) { return std::to_integer<unsigned char>(byte); });
    from = from.subspan(length);
    return CAIRO_STATUS_SUCCESS;
  };
  CairoSurface surface(cairo_image_surface_create_from_png_stream(read, &rest));
  return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS ? std::move(surface) : nullptr;
}

}  // namespace tqdoc
