#pragma once

/// @file Image.h
/// Pixels to compare.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Render/Canvas.h"

namespace tqdoc {

/// Rows of pixels from the top: blue, green, red and alpha, premultiplied.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;

  Image() = default;
  /// Transparent pixels.
  Image(int width, int height);
  explicit Image(const Canvas& canvas);

  /// Copies the pixels of `image` to this place, on white. Those outside are cut off.
  void put(const Image& image, int left, int top);

  /// Returns a part of an image that is at least as large.
  [[nodiscard]] Image topLeft(int width, int height) const;
};

/// Returns the pixels of a PNG file, or no value for other bytes.
[[nodiscard]] std::optional<Image> decodedImage(const tq::Data& png);

/// Writes a PNG file.
bool writeImage(const Image& image, const std::string& path);

/// Returns the mean absolute difference of red, green and blue, 0 to 255: on white or on black,
/// whichever is larger. 255 for images of different sizes.
[[nodiscard]] double differenceOf(const Image& a, const Image& b);

/// Returns the differences on white as a picture: black where the images are equal. The images must
/// have the same size.
[[nodiscard]] Image differencePicture(const Image& a, const Image& b);

}  // namespace tqdoc
