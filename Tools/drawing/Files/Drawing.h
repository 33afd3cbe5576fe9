#pragma once

/// @file Drawing.h
/// Opens and saves drawings.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "Model/Document.h"
#include "Svg/SvgReader.h"

namespace tqdoc {

/// Larger files are an error.
inline constexpr std::size_t kFileLimit = std::size_t{256} << 20;

/// The name of standard input and of standard output.
inline constexpr std::string_view kStandardStream = "-";

/// Opens an SVG file or, by its extension ".tqdoc", an archive. Either may be compressed with gzip.
/// On standard input, an archive is recognised by its first character. Errors name the file.
/// @return a null document on failure; for an archive, what was left out when it was imported
[[nodiscard]] SvgDrawing openDrawing(const std::string& path, tq::Ref<tq::Error>* error);

/// The same for bytes that were read from `path`. Only the name of the file is used.
[[nodiscard]] SvgDrawing openDrawing(tq::Ref<const tq::Data> bytes, const std::string& path,
                                     tq::Ref<tq::Error>* error);

/// Returns the bytes of a file or of standard input, or null. Errors name the file.
[[nodiscard]] tq::Ref<tq::Data> readFile(const std::string& path, tq::Ref<tq::Error>* error);

/// Reads the document from an archive's bytes, compressed or not. It is an error if it decompresses
/// to more than kFileLimit, or if a part of it cannot be read: archives of newer programs may have
/// classes and members that are unknown here, and saving the document would lose them.
[[nodiscard]] tq::Ref<Document> openArchive(const tq::Data& bytes, const std::string& path,
                                            tq::Ref<tq::Error>* error);

/// The form of an archive in its file: plain text, or gzip.
enum class Packing { none, gzip };

/// Archives `document` at `path`, as saveFile() does.
bool saveArchive(const Document& document, const std::string& path, Packing packing,
                 tq::Ref<tq::Error>* error);

/// Replaces the content of the file by `bytes`. They are written to a temporary file that then
/// replaces the old one, so a failure leaves the old file intact. Devices, pipes and standard
/// output are written directly.
bool saveFile(const std::string& path, std::span<const std::byte> bytes, tq::Ref<tq::Error>* error);

/// Returns the text of an archive: the bytes decompressed if they are a container, else as they
/// are.
[[nodiscard]] tq::Ref<const tq::Data> archiveText(tq::Ref<const tq::Data> bytes,
                                                  const std::string& path,
                                                  tq::Ref<tq::Error>* error);

/// True for paths that end in ".tqdoc".
[[nodiscard]] bool isArchive(const std::string& path);

/// Returns an error with this text in the domain of this program. Invalid UTF-8 is replaced.
[[nodiscard]] tq::Ref<tq::Error> errorWith(const std::string& text);

/// Returns the reason of the exception that is handled; call it in a catch clause.
[[nodiscard]] std::string exceptionText();

/// Returns the error "<path>: <exceptionText()>".
[[nodiscard]] tq::Ref<tq::Error> errorOfException(const std::string& path);

}  // namespace tqdoc
