#pragma once

/// @file SvgReader.h
/// Reads SVG drawings into documents.

#include <cstddef>
#include <span>
#include <string_view>

#include "Model/Document.h"
#include "Svg/SvgContext.h"

namespace tqdoc {

/// A document and the features that were ignored.
struct SvgDrawing {
  tq::Ref<Document> document;
  Features leftOut;
};

/// Reads SVG 1.1 without animation, text on paths and some primitives of filters; what is not read
/// is counted. References become copies of their targets. Any thread; no shared state.
///
/// Errors give the position ("<fileName>:<line>:<column>: …"): invalid XML, a root other than svg,
/// elements nested deeper than SvgContext::kDepthLimit, circular references, and drawings that grow
/// beyond SvgContext::kWorkAllowed through references.
///
/// @return a null document on failure
[[nodiscard]] SvgDrawing readSvg(std::span<const std::byte> bytes, std::string_view fileName,
                                 tq::Ref<tq::Error>* error);

}  // namespace tqdoc
