#pragma once

/// @file Browser.h
/// Draws with a browser: a third renderer, which judges where the other two differ.

#include <optional>
#include <string>

#include "Compare/Image.h"

namespace tqdoc {

/// Draws a drawing with a headless Chromium. Any thread. Blocks for about a second.
/// @param program  its name or path
/// @param page     the size of the page in pixels, which may have fractions
/// @return the smallest picture that contains the page; no value if the browser cannot be started
///         or draws nothing
[[nodiscard]] std::optional<Image> drawnByBrowser(const std::string& program,
                                                  const std::string& file, tq::Size page);

}  // namespace tqdoc
