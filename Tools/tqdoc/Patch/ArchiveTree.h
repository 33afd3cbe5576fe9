#pragma once

/// @file ArchiveTree.h
/// Drawings as parsed archives: dictionaries, arrays, strings and numbers. The paths of differences
/// lead through these trees: "root.children[4].style.fill".

#include <string>

#include "Model/Document.h"

namespace tqdoc {

/// Returns the parsed archive of a drawing or of a node.
/// @throws std::runtime_error if the archive would be too long
[[nodiscard]] tq::Ref<tq::Dictionary> archiveTree(const tq::Object& object);

/// Returns the tree of a drawing or of a node by itself. Of the nodes inside it contains only the
/// class and the name of each child, as "TQDocShape eye".
[[nodiscard]] tq::Ref<tq::Dictionary> ownTree(const Document& document);
[[nodiscard]] tq::Ref<tq::Dictionary> ownTree(const Node& node);
[[nodiscard]] tq::Ref<tq::Dictionary> ownTree(const tq::Dictionary& tree);

/// Returns the SHA-1 digest of a tree.
[[nodiscard]] std::string digestOf(const tq::Dictionary& tree);

}  // namespace tqdoc
