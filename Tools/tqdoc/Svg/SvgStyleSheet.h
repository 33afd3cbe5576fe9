#pragma once

/// @file SvgStyleSheet.h
/// Style sheets, and the order in which declarations win over each other.

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <pugixml.hpp>

#include "Svg/SvgContext.h"
#include "Svg/SvgStyle.h"

namespace tqdoc {

struct Declaration {
  std::string_view name;
  std::string_view value;
  bool important = false;
};

/// The declarations of a style attribute or of a rule's braces. Those without a colon are left out.
[[nodiscard]] std::vector<Declaration> parseDeclarations(std::string_view text);

/// All <style> elements of a drawing. Selectors may name an element, classes and an id, or "*", and
/// stand in lists; others are counted as left out with their rule, and so are at-rules.
class SvgStyleSheet {
 public:
  explicit SvgStyleSheet(SvgContext& context);
  SvgStyleSheet(const SvgStyleSheet&) = delete;
  SvgStyleSheet& operator=(const SvgStyleSheet&) = delete;

  /// The style of an element whose parent has the style `parent`: attributes first, then rules by
  /// specificity and order, then the style attribute, then the same again for what is important.
  [[nodiscard]] Style styleOf(pugi::xml_node node, const Style& parent, Viewport viewport);

 private:
  struct Selector {
    std::string_view element;  ///< empty for any
    std::string_view id;
    std::vector<std::string_view> classes;
  };
  struct Rule {
    Selector selector;
    int specificity = 0;
    std::size_t block = 0;
  };

  void parse(std::string_view text, pugi::xml_node where);
  void addRule(std::string_view selector, std::size_t block, pugi::xml_node where);
  [[nodiscard]] bool matches(const Selector& selector, pugi::xml_node node) const;
  [[nodiscard]] std::vector<const Rule*> rulesFor(pugi::xml_node node) const;

  SvgContext& context_;
  std::string text_;  // what the views of all rules look into
  std::vector<Rule> rules_;
  std::vector<std::vector<Declaration>> blocks_;
  // Rules by the rarest thing that they ask for: "#id", ".class", the element, or "*".
  std::unordered_map<std::string, std::vector<std::size_t>> index_;
};

}  // namespace tqdoc
