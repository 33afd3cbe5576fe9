#pragma once

/// @file CairoSource.h
/// Converts transforms and paints of the model for cairo.

#include <cairo.h>

#include <memory>
#include <string_view>

#include <TQFoundation/TQFoundation.h>

#include "Model/Gradient.h"

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

/// Makes `pattern` the source. Returns false if cairo cannot draw it: it converts the matrix
/// to 16.16 fixed-point numbers, so an image or a gradient cannot be much smaller than a pixel.
/// Drawing it would put the context into an error state.
[[nodiscard]] bool setSource(cairo_t* context, cairo_pattern_t* pattern);

/// Makes a colour's text the source. Returns false if `color` is not one.
[[nodiscard]] bool setSource(cairo_t* context, std::string_view color, double opacity);

/// Returns a gradient as cairo has it. Its transform must be usable.
[[nodiscard]] CairoPattern patternOf(const Gradient& gradient, double opacity);

/// @throws std::bad_alloc, or an exception with the reason, if a call has failed. Cairo ignores all
/// calls after the first failure.
void requireIntact(cairo_t* context);

}  // namespace tqdoc
