#include "Render/Layer.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace tqdoc {

std::optional<PixelArea> visiblePixels(cairo_t* cr, const tq::Rect& rect) {
  cairo_matrix_t matrix;
  cairo_get_matrix(cr, &matrix);
  cairo_identity_matrix(cr);
  double left, top, right, bottom;
  cairo_clip_extents(cr, &left, &top, &right, &bottom);
  cairo_set_matrix(cr, &matrix);
  left = std::max(left, std::floor(tq::RectGetMinX(rect)));
  top = std::max(top, std::floor(tq::RectGetMinY(rect)));
  right = std::min(right, std::ceil(tq::RectGetMaxX(rect)));
  bottom = std::min(bottom, std::ceil(tq::RectGetMaxY(rect)));
  if (!(left < right && top < bottom)) return std::nullopt;  // also for NaN
  return PixelArea{static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
                   static_cast<int>(bottom - top)};
}

CairoSurface layerFor(const PixelArea& area) {
  CairoSurface layer(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, area.width, area.height));
  if (cairo_surface_status(layer.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  cairo_surface_set_device_offset(layer.get(), -area.x, -area.y);
  return layer;
}

std::span<std::uint32_t> pixelsOf(cairo_surface_t* image) {
  cairo_surface_flush(image);
  const auto count = static_cast<std::size_t>(cairo_image_surface_get_stride(image)) / 4 *
                     static_cast<std::size_t>(cairo_image_surface_get_height(image));
  return {reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(image)), count};
}

void setAlphaToLuminance(cairo_surface_t* image) {
  // In 65536ths; the sum is that of white. The colours are already multiplied by alpha.
  constexpr std::uint32_t kRed = 13927, kGreen = 46885, kBlue = 4724;
  for (std::uint32_t& pixel : pixelsOf(image)) {
    const std::uint32_t sum =
        kRed * (pixel >> 16 & 255) + kGreen * (pixel >> 8 & 255) + kBlue * (pixel & 255);
    pixel = (sum + (1 << 15)) >> 16 << 24;
  }
  cairo_surface_mark_dirty(image);
}

}  // namespace tqdoc
