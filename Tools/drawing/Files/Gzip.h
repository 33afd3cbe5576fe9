#pragma once

/// @file Gzip.h
/// Decompresses gzip files that other programs wrote, such as .svgz drawings.

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// Returns the content of a gzip file with one member (RFC 1952). Names, comments and extra fields
/// are skipped.
/// @param error  receives the error if the content is longer than `limit`; other failures have none
/// @return null if the file is damaged or too long
[[nodiscard]] tq::Ref<tq::Data> contentOfGzip(const tq::Data& file, std::size_t limit,
                                              tq::Ref<tq::Error>* error);

}  // namespace tqdoc
