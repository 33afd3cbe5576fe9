#pragma once

/// @file SvgGradient.h
/// Gradients, and what becomes of a fill or a stroke that names one.

#include <pugixml.hpp>

#include <TQFoundation/TQFoundation.h>

#include "Svg/SvgContext.h"
#include "Svg/SvgStyle.h"
#include "Svg/SvgStyleSheet.h"

namespace tqdoc {

/// Paint as the model keeps it: a Gradient, or a colour's text with its alpha apart. No object
/// means not painted.
struct ModelPaint {
  tq::Ref<tq::Object> object;
  double alpha = 1;
};

/// What a paint comes to on an outline with these bounds (of the outline alone, in its own
/// coordinates). Servers that are no gradients count as left out and give way to the colour behind
/// them.
[[nodiscard]] ModelPaint readPaint(SvgContext& context, SvgStyleSheet& sheet, const Paint& paint,
                                   const Style& style, pugi::xml_node user, const tq::Rect& bounds,
                                   Viewport viewport);

}  // namespace tqdoc
