#pragma once

/// @file Figures.h
/// The pictures of docs/, each drawn from what the library answers.

#include <string>

namespace figures {

/// A rect's nine points and four edges with their codes.
[[nodiscard]] std::string corners();

/// What a cubic can do: inflections, a cusp, a loop.
[[nodiscard]] std::string cubics();

/// The edit graph of two arrays with the shortest way through it.
[[nodiscard]] std::string editGraph();

/// An R-tree's nodes as it grows.
[[nodiscard]] std::string rtree();

}  // namespace figures
