#pragma once

/// @file Layer.h
/// Images of a part of a picture, which are drawn or computed before they are put into it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include <TQFoundation/TQFoundation.h>

#include "Render/CairoSource.h"

namespace tqdoc {

/// A rect of whole pixels of a picture. Never empty.
struct PixelArea {
  int x, y, width, height;

  [[nodiscard]] std::size_t count() const noexcept {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  }
};

/// Returns the pixels of the context's clip that `rect` touches; no value if there are none.
/// @param rect  in pixels
[[nodiscard]] std::optional<PixelArea> visiblePixels(cairo_t* context, const tq::Rect& rect);

/// Returns a transparent image, premultiplied, for an area of a picture. Contexts that draw into it
/// use the coordinates of the picture. @throws std::bad_alloc
[[nodiscard]] CairoSurface layerFor(const PixelArea& area);

/// Returns the pixels of an image with 32 bits a pixel, in rows without gaps. Call
/// cairo_surface_mark_dirty() after a change.
[[nodiscard]] std::span<std::uint32_t> pixelsOf(cairo_surface_t* image);

/// Replaces the alpha of each pixel by its luminance times its alpha, for a mask.
void setAlphaToLuminance(cairo_surface_t* image);

}  // namespace tqdoc
