#pragma once

/// @file SvgStyleSheet.h
/// Style sheets and the cascade.

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <pugixml.hpp>

#include "Svg/SvgContext.h"
#include "Svg/SvgSelector.h"
#include "Svg/SvgStyle.h"

namespace tqdoc {

struct Declaration {
  std::string_view name;
  std::string_view value;
  bool important = false;
};

/// Returns the declarations of a style attribute or of a rule. Text without a colon is skipped.
[[nodiscard]] std::vector<Declaration> parseDeclarations(std::string_view text);

/// All <style> elements of a drawing. Rules with unsupported selectors (see SvgSelector), and
/// at-rules, count as ignored features.
class SvgStyleSheet {
 public:
  explicit SvgStyleSheet(SvgContext& context);
  SvgStyleSheet(const SvgStyleSheet&) = delete;
  SvgStyleSheet& operator=(const SvgStyleSheet&) = delete;

  /// Returns the style of an element whose parent has the style `parent`. Later sources win:
  /// attributes, rules by specificity and order, the style attribute, then `!important` in that
  /// order.
  [[nodiscard]] Style styleOf(pugi::xml_node node, const Style& parent, Viewport viewport);

  /// Returns the style of the parent of an element that is drawn elsewhere, such as a clip path.
  [[nodiscard]] Style styleAround(pugi::xml_node node, Viewport viewport);

 private:
  struct Rule {
    SvgSelector selector;
    int specificity = 0;
    std::size_t block = 0;
  };

  template <class LeaveOut>
  [[nodiscard]] Style cascade(pugi::xml_node node, const Style& parent, Viewport viewport,
                              const LeaveOut& leaveOut);
  void parse(std::string_view text);
  void addRule(std::string_view selector, std::size_t block);
  [[nodiscard]] std::vector<const Rule*> rulesFor(pugi::xml_node node);

  SvgContext& context_;
  std::string text_;  // the memory of all string views
  std::vector<Rule> rules_;
  std::vector<std::vector<Declaration>> blocks_;
  // Rules by the most specific part of their selector: "#id", ".class", the element, or "*".
  std::unordered_map<std::string, std::vector<std::size_t>> index_;
};

}  // namespace tqdoc
