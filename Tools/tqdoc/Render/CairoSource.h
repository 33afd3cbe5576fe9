#pragma once

/// @file CairoSource.h
/// The model's transforms, paints and images as cairo wants them.

#include <cairo.h>

#include <memory>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

struct CairoRelease {
  void operator()(cairo_pattern_t* pattern) const noexcept { cairo_pattern_destroy(pattern); }
  void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoRelease>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoRelease>;

/// Whether cairo can draw through it: a context stops for good at a matrix without an inverse.
[[nodiscard]] bool isUsable(const tq::AffineTransform& transform) noexcept;

/// From the coordinates that follow to pixels.
void setTransform(cairo_t* context, const tq::AffineTransform& transform);

/// Sets the source to a colour's text or a Gradient; false when `paint` is neither, or none.
[[nodiscard]] bool setSource(cairo_t* context, const tq::Object* paint, double opacity);

/// A PNG's pixels; none when the bytes are no PNG or it has more than 64 million pixels.
[[nodiscard]] CairoSurface decodePNG(const tq::Data& data);

}  // namespace tqdoc
