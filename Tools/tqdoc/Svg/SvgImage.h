#pragma once

/// @file SvgImage.h
/// Images that lie in the drawing itself.

#include <pugixml.hpp>

#include <TQFoundation/TQFoundation.h>

#include "Svg/SvgContext.h"

namespace tqdoc {

struct EmbeddedImage {
  tq::Ref<tq::String> mediaType;
  tq::Ref<tq::Data> bytes;  ///< none when there is no such image
};

/// The image behind a "data:" reference in base64. Images elsewhere, and bytes that cannot be read,
/// count as left out; so does an image that is kept but not drawn, which all but PNG are.
[[nodiscard]] EmbeddedImage readEmbeddedImage(SvgContext& context, pugi::xml_node node);

}  // namespace tqdoc
