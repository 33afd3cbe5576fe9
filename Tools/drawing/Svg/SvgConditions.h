#pragma once

/// @file SvgConditions.h
/// Conditions of elements: languages, features and extensions.

#include <pugixml.hpp>

namespace tqdoc {

/// Returns true if an element is meant for this reader: its systemLanguage has English, its
/// requiredFeatures are known features of SVG 1.1, and it has no requiredExtensions. English,
/// because a drawing must be read in the same way everywhere.
[[nodiscard]] bool meetsConditions(pugi::xml_node node) noexcept;

/// Returns true if an element has a systemLanguage without English.
[[nodiscard]] bool isForOtherLanguages(pugi::xml_node node) noexcept;

}  // namespace tqdoc
