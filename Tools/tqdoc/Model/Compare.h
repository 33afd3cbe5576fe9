#pragma once

/// @file Compare.h
/// Whether two drawings are the same, and where they are not.

#include <optional>
#include <string>

#include "Model/Document.h"

namespace tqdoc {

/// The first place where two documents differ, such as "root/1/0 (eye): the paths differ"; none
/// when they are the same in every member. Numbers are compared exactly. Nodes are paired by their
/// order.
[[nodiscard]] std::optional<std::string> firstDifference(const Document& a, const Document& b);

}  // namespace tqdoc
