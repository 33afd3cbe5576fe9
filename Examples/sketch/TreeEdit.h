#pragma once

/// @file TreeEdit.h
/// The difference of two versions of a drawing as edit scripts, which lead back and forth.

#include <cstddef>
#include <vector>

#include "Model/Document.h"

namespace sketch {

/// Leads from one version of a group to another one. It holds the nodes that were removed and
/// inserted, and shares them with the versions.
///
/// Nodes are compared by identity, because versions share the nodes that are equal. A group is in
/// both versions if its traits are the same; then the edit goes on inside. Edits must not remove or
/// insert groups: undo makes the groups on its path anew, so a script that named one of them would
/// not fit any more.
struct TreeEdit {
  std::size_t index = 0;         ///< of the group among its parent's children, in the new version
  tq::TQArrayChanges children;   ///< removed and inserted children
  std::vector<TreeEdit> inside;  ///< of children that are groups in both versions

  [[nodiscard]] bool isEmpty() const noexcept { return children.empty() && inside.empty(); }
};

[[nodiscard]] TreeEdit treeEditTo(const tqdoc::Group& oldGroup, const tqdoc::Group& newGroup);

/// Return the new version of the old group, and the old version of the new one.
/// @throws tq::Exception if the edit belongs to another version
[[nodiscard]] tq::Ref<tqdoc::Group> applied(const TreeEdit& edit, const tqdoc::Group& oldGroup);
[[nodiscard]] tq::Ref<tqdoc::Group> reverted(const TreeEdit& edit, const tqdoc::Group& newGroup);

}  // namespace sketch
