#pragma once

/// @file Differences.h
/// What differs between two versions of a drawing.

#include <string>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// One difference. Lends its nodes: both documents have to stay.
struct Difference {
  enum class Kind { changed, removed, inserted, moved };

  Kind kind = Kind::changed;
  /// Where: by the indexes of the new drawing, but for something removed by those of the old one.
  std::string path;
  std::string oldPath;  ///< where something moved came from
  std::string what;     ///< such as "shape (eye)"; for a change the whole drawing is "drawing"
  std::string oldValue, newValue;  ///< of what was changed, as text
  const Node* oldNode = nullptr;   ///< none for something inserted, or the whole drawing
  const Node* newNode = nullptr;   ///< none for something removed, or the whole drawing
};

/// In the order of the drawing, what moved between groups at the end; empty when the drawings are
/// the same in every member.
[[nodiscard]] std::vector<Difference> differencesOf(const Document& oldDocument,
                                                    const Document& newDocument);

}  // namespace tqdoc
