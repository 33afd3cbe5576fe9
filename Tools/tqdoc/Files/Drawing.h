#pragma once

/// @file Drawing.h
/// Drawings in files, whatever their kind.

#include <cstddef>
#include <span>
#include <string>

#include "Model/Document.h"
#include "Svg/SvgReader.h"

namespace tqdoc {

/// Files above this size are refused.
inline constexpr std::size_t kFileLimit = std::size_t{256} << 20;

/// Opens an SVG file or, by its extension ".tqdoc", an archive. Errors name the file.
/// @return a document of none on failure
[[nodiscard]] SvgDrawing openDrawing(const std::string& path, tq::Ref<tq::Error>* error);

/// The document in an archive's bytes, packed or not. An archive that is read only in part is an
/// error too, and so is one that unpacks to more than kFileLimit.
[[nodiscard]] tq::Ref<Document> openArchive(const tq::Data& bytes, const std::string& path,
                                            tq::Ref<tq::Error>* error);

/// How an archive lies in its file: as its text, or in a gzip file.
enum class Packing { none, gzip };

/// Archives `document` at `path`, as saveFile() does.
bool saveArchive(const Document& document, const std::string& path, Packing packing,
                 tq::Ref<tq::Error>* error);

/// Makes `bytes` the content of the file: written beside it under another name and then put in its
/// place, so that what was there before stays whole on failure. Devices and pipes are written to.
bool saveFile(const std::string& path, std::span<const std::byte> bytes, tq::Ref<tq::Error>* error);

/// The text of an archive in a file's bytes: unpacked when they are a container, else as they are.
[[nodiscard]] tq::Ref<const tq::Data> archiveText(tq::Ref<const tq::Data> bytes,
                                                  const std::string& path,
                                                  tq::Ref<tq::Error>* error);

/// True for paths that end in ".tqdoc".
[[nodiscard]] bool isArchive(const std::string& path);

/// An error of this program's own with this text; bytes that are not UTF-8 are replaced.
[[nodiscard]] tq::Ref<tq::Error> errorWith(const std::string& text);

}  // namespace tqdoc
