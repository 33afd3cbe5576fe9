#pragma once

/// @file PixelSteps.h
/// The operations of filters on pixels. All images are ARGB32, premultiplied, of the same size.

#include <cairo.h>

#include <span>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// Blurs with a Gaussian; beyond the edges, the image is transparent. A standard deviation of at
/// least 2 is approximated by three averages.
/// @param deviation  in pixels; values of at most 0 do not blur in their direction
void blur(cairo_surface_t* image, tq::Size deviation);

/// Erodes or dilates each channel within a rect of 2·radius + 1 pixels. Fractions of a radius count
/// as a whole pixel, and radii of at most 0 change nothing.
void morph(cairo_surface_t* image, tq::Size radius, bool dilates);

/// Multiplies the colours, not premultiplied, by a matrix of 4 rows and 5 columns.
/// @param matrix  20 numbers; the last column is added
void multiplyColors(cairo_surface_t* image, std::span<const double> matrix);

/// Replaces each channel of `back` by k1·front·back + k2·front + k3·back + k4, within 0...1.
void combineArithmetically(cairo_surface_t* back, cairo_surface_t* front,
                           std::span<const double> k);

/// Removes the colours and keeps alpha.
void blacken(cairo_surface_t* image);

/// Converts colours from sRGB to linear light, or back.
void setLinear(cairo_surface_t* image, bool linear);

}  // namespace tqdoc
