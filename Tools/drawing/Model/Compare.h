#pragma once

/// @file Compare.h
/// Compares two drawings.

#include <optional>
#include <string>

#include "Model/Document.h"

namespace tqdoc {

/// Returns the first difference of two documents, such as "root/1/0 (eye): the paths differ", or no
/// value if all members are equal. Numbers are compared exactly. Nodes are paired by their index.
[[nodiscard]] std::optional<std::string> firstDifference(const Document& a, const Document& b);

/// Returns the first difference of two nodes. Their place is given by `path`.
[[nodiscard]] std::optional<std::string> firstDifference(const Node& a, const Node& b,
                                                         const std::string& path);

}  // namespace tqdoc
