#pragma once

/// @file SvgPath.h
/// The language of the d attribute.

#include <string_view>

#include "Model/PathBuilder.h"

namespace tqdoc {

/// Adds the outlines that path data describes (SVG 1.1, section 8.3), all commands, absolute and
/// relative. What stands before the first fault is kept.
/// @return the offset in `data` of the command that is at fault, or npos when there is none
std::size_t parsePath(std::string_view data, PathBuilder& path);

}  // namespace tqdoc
