#pragma once

/// @file TreeEdit.h
/// The difference of two versions of a drawing as edit scripts, which lead back and forth.

#include <cstddef>
#include <utility>
#include <vector>

#include "Model/Document.h"

namespace sketch {

/// Leads from one version of a group to another one. It holds the nodes that were removed and
/// inserted, and shares them with the versions.
///
/// A group is in both versions if its traits are the same; then the edit goes on inside. Nodes are
/// the same if they are one object, so it does not matter how long they are.
struct TreeEdit {
  tq::TQArrayChanges children;                           ///< removed and inserted children
  std::vector<std::pair<std::size_t, TreeEdit>> inside;  ///< by index in the new version

  [[nodiscard]] bool isEmpty() const noexcept { return children.empty() && inside.empty(); }
};

[[nodiscard]] TreeEdit treeEditTo(const tqdoc::Group& oldGroup, const tqdoc::Group& newGroup);

/// Return the new version of the old group, and the old version of the new one.
/// @throws tq::Exception if the edit belongs to another version
[[nodiscard]] tq::Ref<tqdoc::Group> applied(const TreeEdit& edit, const tqdoc::Group& oldGroup);
[[nodiscard]] tq::Ref<tqdoc::Group> reverted(const TreeEdit& edit, const tqdoc::Group& newGroup);

}  // namespace sketch
