#pragma once

/// @file Drawing.h
/// Drawings in files, whatever their kind.

#include <string>

#include "Model/Document.h"
#include "Svg/SvgReader.h"

namespace tqdoc {

/// Files above this size are refused.
inline constexpr std::size_t kFileLimit = std::size_t{256} << 20;

/// Opens an SVG file or, by its extension ".tqdoc", an archive. Errors name the file.
/// @return a document of none on failure
[[nodiscard]] SvgDrawing openDrawing(const std::string& path, tq::Ref<tq::Error>* error);

/// The document in an archive's bytes. An archive that is read only in part is an error too.
[[nodiscard]] tq::Ref<Document> openArchive(const tq::Data& bytes, const std::string& path,
                                            tq::Ref<tq::Error>* error);

/// Archives `document` at `path`: written beside it under another name and then put in its place,
/// so that what was there before stays whole on failure.
bool saveArchive(const Document& document, const std::string& path, tq::Ref<tq::Error>* error);

/// True for paths that end in ".tqdoc".
[[nodiscard]] bool isArchive(const std::string& path);

/// An error of this program's own with this text; bytes that are not UTF-8 are replaced.
[[nodiscard]] tq::Ref<tq::Error> errorWith(const std::string& text);

}  // namespace tqdoc
