#pragma once

/// @file RoundTrip.h
/// Saves, reopens and saves a drawing again.

#include <cstddef>
#include <string>
#include <vector>

#include "Files/Drawing.h"

namespace tqdoc {

struct RoundTrip {
  tq::Ref<Document> document;  ///< as imported; null on failure
  tq::Ref<Document> reopened;
  Features leftOut;
  std::size_t archiveBytes = 0;
  std::vector<std::string> differences;  ///< descriptions of what changed
  std::string failure;                   ///< the error message; empty on success
};

/// Opens a drawing, archives it, reopens the archive and archives the result. The two archives must
/// have the same bytes, and the two documents equal members. If the drawing is an archive, it must
/// also have the same bytes as its file. Any thread; no shared state.
[[nodiscard]] RoundTrip roundTrip(const std::string& path);

/// Renders both documents `side` pixels wide and high. Returns true if all pixels are equal.
/// @throws the exceptions of Canvas::draw()
[[nodiscard]] bool looksTheSame(const Document& a, const Document& b, int side);

}  // namespace tqdoc
