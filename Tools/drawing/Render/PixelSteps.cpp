#include "Render/PixelSteps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numbers>
#include <vector>

#include "Render/Layer.h"

namespace tqdoc {
namespace {

using Row = std::span<std::uint32_t>;
using Channels = std::array<std::uint32_t, 4>;

constexpr int kShifts[] = {0, 8, 16, 24};  // of blue, green, red and alpha

[[nodiscard]] std::uint32_t channel(std::uint32_t pixel, int shift) noexcept {
  return pixel >> shift & 255;
}

[[nodiscard]] std::uint32_t rounded(double value) noexcept {
  return static_cast<std::uint32_t>(std::clamp(value, 0.0, 255.0) + 0.5);
}

/// Mirrors the rows and columns, in blocks that fit into the processor's cache.
[[nodiscard]] std::vector<std::uint32_t> transposed(Row pixels, std::size_t width) {
  constexpr std::size_t kBlock = 16;
  const std::size_t height = pixels.size() / width;
  std::vector<std::uint32_t> result(pixels.size());
  for (std::size_t top = 0; top < height; top += kBlock) {
    for (std::size_t left = 0; left < width; left += kBlock) {
      for (std::size_t y = top; y < std::min(height, top + kBlock); ++y) {
        for (std::size_t x = left; x < std::min(width, left + kBlock); ++x) {
          result[x * height + y] = pixels[y * width + x];
        }
      }
    }
  }
  return result;
}

/// Changes each row, then each column. An empty function changes nothing.
using RowChange = std::function<void(Row)>;
void changeLines(cairo_surface_t* image, const RowChange& across, const RowChange& down) {
  const Row pixels = pixelsOf(image);
  const auto width = static_cast<std::size_t>(cairo_image_surface_get_width(image));
  if (across) {
    for (std::size_t i = 0; i < pixels.size(); i += width) across(pixels.subspan(i, width));
  }
  if (down) {
    const std::size_t height = pixels.size() / width;
    std::vector<std::uint32_t> columns = transposed(pixels, width);
    for (std::size_t i = 0; i < columns.size(); i += height) {
      down(Row(columns).subspan(i, height));
    }
    std::ranges::copy(transposed(columns, height), pixels.begin());
  }
  cairo_surface_mark_dirty(image);
}

/// Replaces each pixel by the average of itself, `before` pixels and `after` pixels. The sums move
/// along the row, so that the cost does not depend on the width.
void average(Row row, std::size_t before, std::size_t after, std::vector<std::uint32_t>& scratch) {
  scratch.assign(row.begin(), row.end());
  const std::uint64_t count = before + after + 1;
  std::array<std::uint64_t, 4> sums{};
  const auto change = [&](std::uint32_t pixel, std::uint64_t sign) {
    for (std::size_t c = 0; c < 4; ++c) sums[c] += sign * channel(pixel, kShifts[c]);
  };
  for (std::size_t i = 0; i < std::min(after, scratch.size()); ++i) change(scratch[i], 1);
  for (std::size_t i = 0; i < scratch.size(); ++i) {
    if (i + after < scratch.size()) change(scratch[i + after], 1);
    std::uint32_t pixel = 0;
    for (std::size_t c = 0; c < 4; ++c) {
      pixel |= static_cast<std::uint32_t>((sums[c] + count / 2) / count) << kShifts[c];
    }
    row[i] = pixel;
    if (i >= before) change(scratch[i - before], ~std::uint64_t{0});  // minus one
  }
}

/// Averages three times, as Filter Effects (W3C, 2018), feGaussianBlur, describes.
[[nodiscard]] RowChange averages(double deviation) {
  constexpr double kWidest = 1 << 20;
  const auto width = static_cast<std::size_t>(
      std::min(kWidest, std::floor(deviation * 3 * std::sqrt(2 * std::numbers::pi) / 4 + 0.5)));
  return [width, scratch = std::vector<std::uint32_t>()](Row row) mutable {
    const std::size_t half = width / 2;
    const bool isOdd = width % 2 != 0;
    average(row, half, isOdd ? half : half - 1, scratch);
    average(row, isOdd ? half : half - 1, half, scratch);
    average(row, half, half, scratch);
  };
}

[[nodiscard]] RowChange weights(double deviation) {
  const int reach = static_cast<int>(std::ceil(3 * deviation));
  std::vector<float> kernel;
  float sum = 0;
  for (int i = -reach; i <= reach; ++i) {
    const double x = i / deviation;
    kernel.push_back(static_cast<float>(std::exp(-x * x / 2)));
    sum += kernel.back();
  }
  for (float& weight : kernel) weight /= sum;
  const auto margin = static_cast<std::size_t>(reach);
  return [kernel, margin, scratch = std::vector<std::uint32_t>()](Row row) mutable {
    scratch.assign(row.size() + 2 * margin, 0);
    std::ranges::copy(row, scratch.begin() + static_cast<std::ptrdiff_t>(margin));
    for (std::size_t i = 0; i < row.size(); ++i) {
      std::array<float, 4> sums{0.5F, 0.5F, 0.5F, 0.5F};
      for (std::size_t k = 0; k < kernel.size(); ++k) {
        for (std::size_t c = 0; c < 4; ++c) {
          sums[c] += kernel[k] * static_cast<float>(channel(scratch[i + k], kShifts[c]));
        }
      }
      row[i] = 0;
      for (std::size_t c = 0; c < 4; ++c) {
        row[i] |= static_cast<std::uint32_t>(sums[c]) << kShifts[c];
      }
    }
  };
}

[[nodiscard]] RowChange blurOf(double deviation) {
  constexpr double kAveraged = 2;
  constexpr double kVisible = 0.05;
  if (!(deviation > kVisible)) return nullptr;
  return deviation < kAveraged ? weights(deviation) : averages(deviation);
}

/// Takes the extremes of windows of 2·radius + 1 pixels: a window begins in one block of that
/// length and ends in the same or the next one, so that the extreme of a block's end and that of
/// the next block's beginning are enough (van Herk, 1992; Gil and Werman, 1993).
[[nodiscard]] RowChange extremes(double radius, bool dilates) {
  constexpr double kLargest = 1 << 20;
  if (!(radius > 0)) return nullptr;
  const auto margin = static_cast<std::size_t>(std::min(std::ceil(radius), kLargest));
  const auto extreme = [dilates](std::uint32_t a, std::uint32_t b) {
    std::uint32_t result = 0;
    for (const int shift : kShifts) {
      const auto [low, high] = std::minmax({channel(a, shift), channel(b, shift)});
      result |= (dilates ? high : low) << shift;
    }
    return result;
  };
  return [=, ends = std::vector<std::uint32_t>(),
          beginnings = std::vector<std::uint32_t>()](Row row) mutable {
    const std::size_t reach = std::min(margin, row.size());  // beyond, all is transparent
    const std::size_t window = 2 * reach + 1;
    beginnings.assign(row.size() + 2 * reach, 0);
    std::ranges::copy(row, beginnings.begin() + static_cast<std::ptrdiff_t>(reach));
    ends = beginnings;
    for (std::size_t i = 1; i < beginnings.size(); ++i) {
      if (i % window != 0) beginnings[i] = extreme(beginnings[i], beginnings[i - 1]);
    }
    for (std::size_t i = ends.size() - 1; i-- > 0;) {
      if ((i + 1) % window != 0) ends[i] = extreme(ends[i], ends[i + 1]);
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i] = extreme(ends[i], beginnings[i + 2 * reach]);
    }
  };
}

/// Calls `change` with alpha, red, green and blue of each pixel that it may change, within 0...255
/// and not premultiplied.
template <class Change>
void changeColors(cairo_surface_t* image, const Change& change) {
  for (std::uint32_t& pixel : pixelsOf(image)) {
    const double alpha = channel(pixel, 24);
    const double scale = alpha > 0 ? 255 / alpha : 0;
    std::array<double, 4> color{alpha, channel(pixel, 16) * scale, channel(pixel, 8) * scale,
                                channel(pixel, 0) * scale};
    change(color);
    const double newAlpha = std::clamp(color[0], 0.0, 255.0);
    pixel = rounded(newAlpha) << 24;
    for (std::size_t c = 1; c < 4; ++c) {
      pixel |= rounded(std::clamp(color[c], 0.0, 255.0) * newAlpha / 255) << (24 - 8 * c);
    }
  }
  cairo_surface_mark_dirty(image);
}

/// The other encoding of each value of a channel.
[[nodiscard]] std::array<double, 256> encodings(bool linear) {
  std::array<double, 256> table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double v = static_cast<double>(i) / 255;
    const double other = linear
                             ? (v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4))
                             : (v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055);
    table[i] = 255 * other;
  }
  return table;
}

}  // namespace

void blur(cairo_surface_t* image, tq::Size deviation) {
  changeLines(image, blurOf(deviation.width), blurOf(deviation.height));
}

void morph(cairo_surface_t* image, tq::Size radius, bool dilates) {
  changeLines(image, extremes(radius.width, dilates), extremes(radius.height, dilates));
}

void multiplyColors(cairo_surface_t* image, std::span<const double> m) {
  changeColors(image, [m](std::array<double, 4>& color) {
    const auto [a, r, g, b] = color;
    const auto row = [&, red = r, green = g, blue = b, alpha = a](std::size_t i) {
      return m[i] * red + m[i + 1] * green + m[i + 2] * blue + m[i + 3] * alpha + m[i + 4] * 255;
    };
    color = {row(15), row(0), row(5), row(10)};
  });
}

void combineArithmetically(cairo_surface_t* back, cairo_surface_t* front,
                           std::span<const double> k) {
  const Row backs = pixelsOf(back);
  const Row fronts = pixelsOf(front);
  for (std::size_t i = 0; i < backs.size(); ++i) {
    std::uint32_t most = 255;  // a colour is at most alpha, which comes first
    std::uint32_t pixel = 0;
    for (const int shift : {24, 16, 8, 0}) {
      const double a = channel(fronts[i], shift), b = channel(backs[i], shift);
      const double sum = k[0] * a * b / 255 + k[1] * a + k[2] * b + k[3] * 255;
      const std::uint32_t value = std::min(rounded(sum), most);
      if (shift == 24) most = value;
      pixel |= value << shift;
    }
    backs[i] = pixel;
  }
  cairo_surface_mark_dirty(back);
}

void blacken(cairo_surface_t* image) {
  for (std::uint32_t& pixel : pixelsOf(image)) pixel &= 0xff000000;
  cairo_surface_mark_dirty(image);
}

void setLinear(cairo_surface_t* image, bool linear) {
  static const std::array kTables{encodings(false), encodings(true)};
  const std::array<double, 256>& table = kTables[linear ? 1 : 0];
  changeColors(image, [&table](std::array<double, 4>& color) {
    for (std::size_t c = 1; c < 4; ++c) color[c] = table[rounded(color[c])];
  });
}

}  // namespace tqdoc
