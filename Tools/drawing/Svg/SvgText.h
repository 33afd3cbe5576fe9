#pragma once

/// @file SvgText.h
/// Reads the characters of text elements.

#include <string>
#include <vector>

#include <pugixml.hpp>

#include "Model/Text.h"
#include "Svg/SvgContext.h"
#include "Svg/SvgStyleSheet.h"

namespace tqdoc {

/// Characters with one style, and positions of the first ones.
struct TextRun {
  pugi::xml_node element;
  Style style;
  std::string string;      ///< UTF-8
  std::size_t length = 0;  ///< in code points
  GlyphPositions positions;
};

/// Returns the visible characters of a text element and of the elements in it, after the treatment
/// of white space. A position holds for the first character of its element, also if that is in an
/// element inside. Other elements than tspan and a count as ignored features.
/// @param style  of the text element
/// @throws SvgFault if the elements are nested too deeply or the drawing is too large
[[nodiscard]] std::vector<TextRun> readTextRuns(SvgContext& context, SvgStyleSheet& sheet,
                                                pugi::xml_node text, const Style& style,
                                                Viewport viewport);

/// Returns a text of these runs, which must not be empty, with one style for each.
[[nodiscard]] tq::Ref<Text> textOf(const std::vector<TextRun>& runs,
                                   const std::vector<tq::Ref<tq::Dictionary>>& styles,
                                   Node::Traits traits);

}  // namespace tqdoc
