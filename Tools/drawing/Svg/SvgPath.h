#pragma once

/// @file SvgPath.h
/// Parses path data, the d attribute.

#include <string_view>

#include "Model/PathBuilder.h"

namespace tqdoc {

/// Adds the outlines of path data (SVG 1.1, section 8.3), with all commands, absolute and relative.
/// Everything before the first error is added.
/// @return the offset in `data` of the command with the error, or npos
std::size_t parsePath(std::string_view data, PathBuilder& path);

}  // namespace tqdoc
