#include "Compare/Image.h"

#include <cairo.h>

#include <algorithm>
#include <cstdlib>

#include "Render/Images.h"

namespace tqdoc {
namespace {

constexpr std::uint32_t kOpaque = 0xff000000;
constexpr int kColours[] = {0, 8, 16};  // the shifts of blue, green and red

[[nodiscard]] int part(std::uint32_t pixel, int shift) noexcept {
  return static_cast<int>(pixel >> shift & 255);
}

/// Returns a colour of a pixel on white. PNG decoders round, so a sum may exceed 255.
[[nodiscard]] int onWhite(std::uint32_t pixel, int shift) noexcept {
  return std::min(part(pixel, shift) + 255 - part(pixel, 24), 255);
}

}  // namespace

Image::Image(int w, int h)
    : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}

Image::Image(const Canvas& canvas)
    : width(canvas.width()),
      height(canvas.height()),
      pixels(canvas.pixels().begin(), canvas.pixels().end()) {}

void Image::put(const Image& image, int left, int top) {
  for (int y = 0; y < std::min(image.height, height - top); ++y) {
    for (int x = 0; x < std::min(image.width, width - left); ++x) {
      const std::uint32_t from = image.pixels[static_cast<std::size_t>(y * image.width + x)];
      std::uint32_t& to = pixels[static_cast<std::size_t>((top + y) * width + left + x)];
      to = kOpaque;
      for (const int shift : kColours)
        to |= static_cast<std::uint32_t>(onWhite(from, shift)) << shift;
    }
  }
}

Image Image::topLeft(int w, int h) const {
  Image result(w, h);
  for (int y = 0; y < h; ++y) {
    std::copy_n(pixels.begin() + y * width, w, result.pixels.begin() + y * w);
  }
  return result;
}

std::optional<Image> decodedImage(const tq::Data& png) {
  const CairoSurface surface = decodeImage(png);
  if (!surface) return std::nullopt;
  cairo_surface_t* const raw = surface.get();
  Image image(cairo_image_surface_get_width(raw), cairo_image_surface_get_height(raw));
  const auto* rows = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(raw));
  std::copy_n(rows, image.pixels.size(), image.pixels.begin());  // 32 bits leave no gaps
  if (cairo_image_surface_get_format(raw) == CAIRO_FORMAT_RGB24) {
    for (std::uint32_t& pixel : image.pixels) pixel |= kOpaque;
  }
  return image;
}

bool writeImage(const Image& image, const std::string& path) {
  std::vector<std::uint32_t> rows = image.pixels;  // cairo takes pixels that it may change
  const CairoSurface surface(cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(rows.data()), CAIRO_FORMAT_ARGB32, image.width, image.height,
      image.width * 4));
  return cairo_surface_write_to_png(surface.get(), path.c_str()) == CAIRO_STATUS_SUCCESS;
}

double differenceOf(const Image& a, const Image& b) {
  if (a.width != b.width || a.height != b.height || a.pixels.empty()) return 255;
  double white = 0, black = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) {
    for (const int shift : kColours) {
      white += std::abs(onWhite(a.pixels[i], shift) - onWhite(b.pixels[i], shift));
      black += std::abs(part(a.pixels[i], shift) - part(b.pixels[i], shift));
    }
  }
  return std::max(white, black) / (3 * static_cast<double>(a.pixels.size()));
}

Image differencePicture(const Image& a, const Image& b) {
  Image picture(a.width, a.height);
  for (std::size_t i = 0; i < a.pixels.size(); ++i) {
    picture.pixels[i] = kOpaque;
    for (const int shift : kColours) {
      const int difference = std::abs(onWhite(a.pixels[i], shift) - onWhite(b.pixels[i], shift));
      picture.pixels[i] |= static_cast<std::uint32_t>(difference) << shift;
    }
  }
  return picture;
}

}  // namespace tqdoc
