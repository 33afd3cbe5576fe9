#pragma once

/// @file Figures.h
/// The figures of docs/, drawn from results of the library.

#include <string>

namespace figures {

/// Draws the nine points and four edges of a rect with their codes.
[[nodiscard]] std::string corners();

/// Draws cubics with inflections, a cusp and a loop.
[[nodiscard]] std::string cubics();

/// Draws the edit graph of two arrays with its shortest path.
[[nodiscard]] std::string editGraph();

/// Draws the nodes of a growing R-tree.
[[nodiscard]] std::string rtree();

}  // namespace figures
