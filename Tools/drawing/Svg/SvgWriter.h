#pragma once

/// @file SvgWriter.h
/// Writes documents as SVG drawings.

#include <string>

#include "Model/Document.h"

namespace tqdoc {

/// Returns the drawing as SVG 1.1, in UTF-8. Read again, it looks the same. Nodes keep their names,
/// as the label that drawing programs show. What a reader ignored is not in the document and is
/// lost.
[[nodiscard]] std::string svgOf(const Document& document);

}  // namespace tqdoc
