#pragma once

/// @file Markup.h
/// HTML that is also well-formed XML.

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tqdoc {

/// Returns any text as the content of an element, or of an attribute in quotation marks. Control
/// characters and invalid UTF-8 become U+FFFD.
[[nodiscard]] std::string escaped(std::string_view text);

/// Returns `<bdi>text</bdi>`, escaped: its direction does not affect the text around it.
[[nodiscard]] std::string isolated(std::string_view text);

/// Returns the page with each name in double braces replaced by its value, which is inserted as it
/// is.
[[nodiscard]] std::string filled(
    std::string_view page,
    std::initializer_list<std::pair<std::string_view, std::string_view>> values);

}  // namespace tqdoc
