#pragma once

/// @file Comparison.h
/// Compares tqdoc's picture of a drawing with that of an independent renderer, rsvg-convert.
///
/// Differences that are known and intended (with its version 2.54): tqdoc takes the bounds of a
/// rotated curve in the shape's own coordinates, exactly, which gradients relative to the bounds
/// show. It clips clip paths that have a clip-path themselves, and what symbols draw outside their
/// frames. It leaves out elements whose conditions do not hold also outside of a switch, draws
/// strokes that do not scale, and lets the transform of a style sheet replace the attribute. The
/// colours of a filter's colour matrix are linear light also if its input is the alpha of the
/// source. A browser draws these as tqdoc does; see judge().

#include <optional>
#include <string>

#include "Compare/Image.h"

namespace tqdoc {

struct Comparison {
  double difference = 0;  ///< see differenceOf(); 255 if only one of the two draws the drawing
  /// What could explain a difference: the features that tqdoc ignored, as its commands print them,
  /// or the error of either program. Empty if there was neither.
  std::string explanation;
};

/// Both pictures of a drawing. No value for one that could not be drawn.
struct Pictures {
  std::optional<Image> theirs, ours;
  std::string explanation;
};

/// Draws a drawing with both programs, as large as fits a square of `side` pixels. Any thread.
[[nodiscard]] Pictures drawBoth(const std::string& file, int side);

[[nodiscard]] Comparison compare(const Pictures& pictures);

/// Explains a difference by a browser that draws the drawing as tqdoc does.
/// @param browser  the program; see drawnByBrowser()
/// @param bar      the largest difference from the browser's picture
/// @return empty if the browser draws something else, or nothing
[[nodiscard]] std::string judge(const std::string& file, int side, const std::string& browser,
                                double bar);

}  // namespace tqdoc
