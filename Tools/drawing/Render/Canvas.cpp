#include "Render/Canvas.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <span>
#include <vector>

#include "Files/Drawing.h"
#include "Render/CairoSource.h"
#include "Render/Overlay.h"
#include "Render/Painter.h"

namespace tqdoc {

int pixelsAcross(double length) {
  constexpr double kRounding = 1e-6;
  return static_cast<int>(
      std::ceil(std::clamp(length - kRounding, 1.0, double{Canvas::kSideLimit})));
}

void Canvas::Release::operator()(cairo_t* context) const noexcept { cairo_destroy(context); }

void Canvas::Release::operator()(cairo_surface_t* surface) const noexcept {
  cairo_surface_destroy(surface);
}

Canvas::Canvas(int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
      context_(cairo_create(surface_.get())) {
  if (cairo_status(context_.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
}

Canvas::~Canvas() = default;

int Canvas::width() const { return cairo_image_surface_get_width(surface_.get()); }

int Canvas::height() const { return cairo_image_surface_get_height(surface_.get()); }

void Canvas::fill(const tq::Rect& rect, const Color& color) {
  cairo_t* const cr = context_.get();
  cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
  cairo_rectangle(cr, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  cairo_fill(cr);
}

void Canvas::draw(const Document& document, const tq::Rect& rect, const Overlay& overlay) {
  cairo_t* const cr = context_.get();
  const tq::AffineTransform fitted = pagePlacement(document.page(), rect);
  cairo_save(cr);
  cairo_rectangle(cr, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  cairo_clip(cr);
  Painter painter(cr);
  painter.paintDrawing(document.root(), fitted);
  addTo(leftOut_, painter.leftOut());
  paintOverlay(cr, document.root(), fitted, overlay);
  cairo_restore(cr);
  requireIntact(cr);
}

void Canvas::put(const Canvas& picture, int x, int y) {
  cairo_set_source_surface(context_.get(), picture.surface_.get(), x, y);
  cairo_paint(context_.get());
}

std::span<const std::uint32_t> Canvas::pixels() const {
  cairo_surface_flush(surface_.get());
  const auto* bytes = cairo_image_surface_get_data(surface_.get());
  const auto count = static_cast<std::size_t>(cairo_image_surface_get_stride(surface_.get())) / 4 *
                     static_cast<std::size_t>(cairo_image_surface_get_height(surface_.get()));
  return {reinterpret_cast<const std::uint32_t*>(bytes), count};
}

std::optional<std::vector<std::byte>> Canvas::png(tq::Ref<tq::Error>* error) const {
  std::vector<std::byte> file;
  const auto append = [](void* closure, const unsigned char* bytes, unsigned length) {
    const auto more = std::as_bytes(std::span(bytes, length));
    auto& all = *static_cast<std::vector<std::byte>*>(closure);
    try {
      all.insert(all.end(), more.begin(), more.end());
      return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc&) {  // must not propagate through C
      return CAIRO_STATUS_NO_MEMORY;
    }
  };
  cairo_status_t status = cairo_status(context_.get());
  if (status == CAIRO_STATUS_SUCCESS) {
    status = cairo_surface_write_to_png_stream(surface_.get(), append, &file);
  }
  if (status == CAIRO_STATUS_SUCCESS) return file;
  tq::setOutError(error, errorWith(cairo_status_to_string(status)));
  return std::nullopt;
}

bool Canvas::writePNG(const std::string& path, tq::Ref<tq::Error>* error) const {
  tq::Ref<tq::Error> reason;
  if (const auto file = png(&reason)) return saveFile(path, *file, error);
  tq::setOutError(error, errorWith(path + ": " + std::string(reason->localizedDescription())));
  return false;
}

Canvas rendered(const Document& document, double scale, const Overlay& overlay) {
  const tq::Size page = document.page().size;
  scale = std::min(scale, Canvas::kSideLimit / std::max({page.width, page.height, 1.0}));
  const tq::Size size{page.width * scale, page.height * scale};
  Canvas canvas(pixelsAcross(size.width), pixelsAcross(size.height));
  canvas.draw(document, {{0, 0}, size}, overlay);
  return canvas;
}

Canvas renderedSquare(const Document& document, int side) {
  Canvas canvas(side, side);
  canvas.draw(document, {0, 0, double(side), double(side)});
  return canvas;
}

bool renderPNG(const Document& document, int width, const Overlay& overlay, const std::string& path,
               Features& leftOut, tq::Ref<tq::Error>* error) try {
  const double scale = width > 0 ? width / document.page().size.width : 1;
  const Canvas canvas = rendered(document, scale, overlay);
  addTo(leftOut, canvas.leftOut());
  return canvas.writePNG(path, error);
} catch (...) {
  tq::setOutError(error, errorOfException(path));
  return false;
}

}  // namespace tqdoc
