#pragma once

/// @file ChangeRecords.h
/// Differences as JSON.

#include <vector>

#include "Model/Differences.h"

namespace tqdoc {

/// Returns a dictionary for each difference, in their order. patched() applies them. Members:
/// - "kind": "changed", "removed", "inserted" or "moved"; "path" and "what" as in Difference
/// - changed: "old" and "new", the values as text; "property"; "value", the new value as in an
///   archive, absent if the property is
/// - moved: "from", the path of the removal
/// - inserted: "value", the archive of the node
/// - "sha1" of the node as it was: of the whole node for a removal, else of its ownTree()
/// - inserted and moved: "group", the digest of the ownTree() of the receiving group as it was
[[nodiscard]] tq::Ref<tq::Array> changeRecords(const std::vector<Difference>& differences,
                                               const Document& oldDocument,
                                               const Document& newDocument);

/// Returns the word of a kind in these records.
[[nodiscard]] const char* wordFor(Difference::Kind kind) noexcept;

}  // namespace tqdoc
