#pragma once

/// @file Differences.h
/// Differences between two versions of a drawing.

#include <string>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// One difference. Keeps pointers to nodes: both documents must outlive it.
struct Difference {
  enum class Kind { changed, removed, inserted, moved };

  Kind kind = Kind::changed;
  /// The path by indexes of the new drawing. The last index of a removal is that of the old one.
  std::string path;
  std::string oldPath;             ///< for moves: the path of the removal
  std::string what;                ///< such as "shape (eye)"; "drawing" for the whole drawing
  std::string property;            ///< for changes: the name at the end of the path
  std::string oldValue, newValue;  ///< for changes: the values as text
  const Node* oldNode = nullptr;   ///< null for insertions and for the whole drawing
  const Node* newNode = nullptr;   ///< null for removals and for the whole drawing
  const Node* oldGroup = nullptr;  ///< for insertions and moves: the group that receives the node
};

/// Returns the differences in drawing order, moves between groups last. Empty if all members of the
/// drawings are equal.
[[nodiscard]] std::vector<Difference> differencesOf(const Document& oldDocument,
                                                    const Document& newDocument);

}  // namespace tqdoc
