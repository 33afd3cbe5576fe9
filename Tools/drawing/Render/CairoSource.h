#pragma once

/// @file CairoSource.h
/// Converts transforms and paints of the model for cairo.

#include <cairo.h>

#include <memory>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

struct CairoRelease {
  void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
  void operator()(cairo_pattern_t* pattern) const noexcept { cairo_pattern_destroy(pattern); }
  void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};
using CairoContext = std::unique_ptr<cairo_t, CairoRelease>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoRelease>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoRelease>;

/// Returns true if cairo accepts the matrix. A singular matrix puts a context into an error state.
[[nodiscard]] bool isUsable(const tq::AffineTransform& transform) noexcept;

/// Sets the transform from the coordinates of later calls to pixels.
void setTransform(cairo_t* context, const tq::AffineTransform& transform);

/// Returns the transform as cairo has it.
[[nodiscard]] cairo_matrix_t matrixOf(const tq::AffineTransform& transform) noexcept;

/// Sets the source to a colour's text or a Gradient. Returns false if `paint` is neither, or null.
[[nodiscard]] bool setSource(cairo_t* context, const tq::Object* paint, double opacity);

}  // namespace tqdoc
