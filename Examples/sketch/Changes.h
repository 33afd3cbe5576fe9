#pragma once

/// @file Changes.h
/// Describes what an edit changed.

#include <string>

#include "Model/Document.h"

namespace sketch {

/// Returns a line for each difference, such as "~ root.children[2].transform", with the path in the
/// new version, or in the old one for what was removed (-). Inserted nodes have a +, and nodes that
/// moved between groups a >. At most 20 lines.
[[nodiscard]] std::string describeChanges(const tqdoc::Document& before,
                                          const tqdoc::Document& after);

}  // namespace sketch
