#pragma once

/// @file SvgGradient.h
/// Reads gradients and resolves the paint of fills and strokes.

#include <pugixml.hpp>

#include <TQFoundation/TQFoundation.h>

#include "Svg/SvgContext.h"
#include "Svg/SvgStyle.h"
#include "Svg/SvgStyleSheet.h"

namespace tqdoc {

/// Paint in the form of the model: a Gradient, or a colour's text with separate alpha. Null means
/// not painted.
struct ModelPaint {
  tq::Ref<tq::Object> object;
  double alpha = 1;
};

/// Resolves a paint for an outline with these bounds (without stroke, in its own coordinates).
/// Paint servers that are not gradients count as ignored features; their fallback colour is used.
[[nodiscard]] ModelPaint readPaint(SvgContext& context, SvgStyleSheet& sheet, const Paint& paint,
                                   const Style& style, const tq::Rect& bounds, Viewport viewport);

}  // namespace tqdoc
