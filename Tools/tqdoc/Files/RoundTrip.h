#pragma once

/// @file RoundTrip.h
/// A drawing saved, reopened and saved again.

#include <cstddef>
#include <string>
#include <vector>

#include "Files/Drawing.h"

namespace tqdoc {

struct RoundTrip {
  tq::Ref<Document> document;  ///< as imported; none when there was trouble
  tq::Ref<Document> reopened;
  Features leftOut;
  std::size_t archiveBytes = 0;
  std::vector<std::string> differences;  ///< what did not survive, for people
  std::string trouble;                   ///< why it could not be done; empty when it could
};

/// Opens the drawing, archives it, reopens the archive and archives that again. The two archives
/// must be the same to the byte, the two documents in every member; an archive that is opened must
/// also be the same to the byte as its own file. Any thread; nothing is shared.
[[nodiscard]] RoundTrip roundTrip(const std::string& path);

/// Draws both documents `side` pixels wide and high; true when every pixel is the same.
[[nodiscard]] bool looksTheSame(const Document& a, const Document& b, int side);

}  // namespace tqdoc
