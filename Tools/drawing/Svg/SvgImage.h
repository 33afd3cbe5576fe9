#pragma once

/// @file SvgImage.h
/// Reads embedded images.

#include <pugixml.hpp>

#include <TQFoundation/TQFoundation.h>

#include "Svg/SvgContext.h"

namespace tqdoc {

struct EmbeddedImage {
  tq::Ref<tq::String> mediaType;
  tq::Ref<tq::Data> bytes;  ///< null if there is no such image
};

/// Reads the image of a "data:" URL in base64. External images and invalid data count as ignored
/// features. So do images whose bytes are neither PNG nor JPEG: they are kept but not drawn. The
/// media type is "image/png" or "image/jpeg" for those, whatever the URL says.
[[nodiscard]] EmbeddedImage readEmbeddedImage(SvgContext& context, pugi::xml_node node);

}  // namespace tqdoc
