#include "Render/Images.h"

#include <turbojpeg.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace tqdoc {
namespace {

[[nodiscard]] CairoSurface decodePNG(std::span<const std::byte> bytes) {
  // Reads width and height from the header first.
  constexpr std::size_t kWidthAt = 16;
  if (bytes.size() < kWidthAt + 8) return nullptr;
  std::uint64_t sides[2] = {};
  for (std::size_t i = 0; i < 8; ++i) {
    sides[i / 4] = sides[i / 4] << 8 | std::to_integer<std::uint64_t>(bytes[kWidthAt + i]);
  }
  if (sides[0] * sides[1] > kImagePixelLimit) return nullptr;

  const auto read = [](void* closure, unsigned char* to, unsigned int length) -> cairo_status_t {
    auto& from = *static_cast<std::span<const std::byte>*>(closure);
    if (from.size() < length) return CAIRO_STATUS_READ_ERROR;
    std::transform(from.begin(), from.begin() + length, to,
                   [](std::byte byte) { return std::to_integer<unsigned char>(byte); });
    from = from.subspan(length);
    return CAIRO_STATUS_SUCCESS;
  };
  CairoSurface surface(cairo_image_surface_create_from_png_stream(read, &bytes));
  return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS ? std::move(surface) : nullptr;
}

/// A JPEG in memory and its decoder.
class JpegReader {
 public:
  explicit JpegReader(std::span<const std::byte> bytes)
      : bytes_(reinterpret_cast<const unsigned char*>(bytes.data())),
        size_(static_cast<unsigned long>(bytes.size())),
        decoder_(tjInitDecompress()) {
    int subsampling = 0, space = 0;
    const bool isValid = decoder_ && tjDecompressHeader3(decoder_.get(), bytes_, size_, &width_,
                                                         &height_, &subsampling, &space) == 0;
    if (!isValid || width_ < 1 || height_ < 1) width_ = height_ = 0;
    hasInks_ = space == TJCS_CMYK || space == TJCS_YCCK;
  }

  /// Returns 0 for an invalid image.
  [[nodiscard]] std::size_t pixelCount() const {
    return static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
  }

  [[nodiscard]] CairoSurface read() {
    CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width_, height_));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    const int stride = cairo_image_surface_get_stride(surface.get());
    unsigned char* const rows = cairo_image_surface_get_data(surface.get());
    constexpr bool kIsLittle = std::endian::native == std::endian::little;
    const bool isRead = hasInks_ ? readInto(rows, stride, TJPF_CMYK) && mix(rows, stride)
                                 : readInto(rows, stride, kIsLittle ? TJPF_BGRX : TJPF_XRGB);
    cairo_surface_mark_dirty(surface.get());
    return isRead ? std::move(surface) : nullptr;
  }

 private:
  [[nodiscard]] bool readInto(unsigned char* rows, int stride, TJPF format) {
    const int status = tjDecompress2(decoder_.get(), bytes_, size_, rows, width_, stride, height_,
                                     format, TJFLAG_ACCURATEDCT | TJFLAG_LIMITSCANS);
    return status == 0 || tjGetErrorCode(decoder_.get()) == TJERR_WARNING;
  }

  /// Mixes the four inks of each pixel in place. JPEG files have them inverted: 255 is no ink.
  bool mix(unsigned char* rows, int stride) const {
    for (int y = 0; y < height_; ++y) {
      unsigned char* pixel = rows + static_cast<std::ptrdiff_t>(y) * stride;
      for (int x = 0; x < width_; ++x, pixel += 4) {
        const auto part = [&](int ink) { return pixel[ink] * pixel[3] / 255u; };
        const std::uint32_t mixed = part(0) << 16 | part(1) << 8 | part(2);
        std::copy_n(reinterpret_cast<const unsigned char*>(&mixed), sizeof mixed, pixel);
      }
    }
    return true;
  }

  struct Release {
    void operator()(void* decoder) const noexcept { tjDestroy(decoder); }
  };
  const unsigned char* bytes_;
  unsigned long size_;
  std::unique_ptr<std::remove_pointer_t<tjhandle>, Release> decoder_;
  int width_ = 0;
  int height_ = 0;
  bool hasInks_ = false;
};

}  // namespace

CairoSurface decodeImage(const tq::Data& data) {
  const std::span<const std::byte> bytes = data.bytes();
  if (!data.view().starts_with("\xff\xd8\xff")) return decodePNG(bytes);
  JpegReader reader(bytes);
  const std::size_t count = reader.pixelCount();
  return count > 0 && count <= kImagePixelLimit ? reader.read() : nullptr;
}

}  // namespace tqdoc
