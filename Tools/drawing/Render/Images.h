#pragma once

/// @file Images.h
/// Decodes PNG and JPEG images.

#include <cstddef>

#include "Render/CairoSource.h"

namespace tqdoc {

/// The maximum number of pixels of an image. A small file may claim any size.
inline constexpr std::size_t kImagePixelLimit = 64'000'000;

/// Returns the pixels of a PNG or JPEG, or null if the bytes are neither, or of too many pixels.
/// The intact part of a damaged JPEG is drawn, on grey.
[[nodiscard]] CairoSurface decodeImage(const tq::Data& data);

}  // namespace tqdoc
