#pragma once

/// @file SvgReader.h
/// SVG drawings to documents.

#include <cstddef>
#include <span>
#include <string_view>

#include "Model/Document.h"
#include "Svg/SvgContext.h"

namespace tqdoc {

/// A drawing read, and what of it was left out.
struct SvgDrawing {
  tq::Ref<Document> document;
  Features leftOut;
};

/// Reads a drawing: SVG 1.1 without text, filters, masks, patterns, markers and animation, which
/// are counted. References are followed and become copies. Any thread; nothing is shared.
///
/// Refused with an error that says where ("<fileName>:<line>:<column>: …"): what is no XML or no
/// SVG, elements nested more than SvgContext::kDepthLimit deep, references that lead to themselves,
/// and drawings that references blow up beyond SvgContext::kWorkAllowed.
///
/// @return a document of none on failure
[[nodiscard]] SvgDrawing readSvg(std::span<const std::byte> bytes, std::string_view fileName,
                                 tq::Ref<tq::Error>* error);

}  // namespace tqdoc
