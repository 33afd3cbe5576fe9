#pragma once

/// @file SvgSelector.h
/// Selectors of style sheets.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "Svg/Scanner.h"
#include "Svg/SvgContext.h"

namespace tqdoc {

/// A selector, such as "g.a > path[fill='red']:first-child". Supported: elements, "*", ids,
/// classes, attributes, :root, :first-child, :last-child, :only-child, and all four combinators.
/// :link, :visited, :hover, :active, :focus and :target match nothing, because nothing happens in a
/// picture. The text must outlive the selector.
class SvgSelector {
 public:
  /// Returns no value for an unsupported or invalid selector, or one of more than 32 compounds.
  [[nodiscard]] static std::optional<SvgSelector> parse(std::string_view text);

  /// Returns true if it selects `node`. Each ancestor and sibling that is tried costs 1.
  /// @throws SvgFault if the drawing is too large
  [[nodiscard]] bool matches(SvgContext& context, pugi::xml_node node) const {
    return matches(context, node, compounds_.size() - 1);
  }

  /// Returns 1'000'000 for each id, 1'000 for each class, attribute and pseudo-class, and 1 for
  /// each element.
  [[nodiscard]] int specificity() const noexcept;

  /// Returns the most specific of "#id", ".class", the element, and "*" that each selected element
  /// has.
  [[nodiscard]] std::string key() const;

 private:
  enum class Kind {
    element,
    id,
    className,
    hasAttribute,
    attributeEquals,
    attributeHasWord,
    attributeHasPart,  // before a hyphen
    attributeBegins,
    attributeEnds,
    attributeContains,
    isRoot,
    isFirst,
    isLast,
    isOnly,
    never,
  };
  struct Test {
    Kind kind;
    std::string_view name;
    std::string_view value;
  };
  struct Compound {
    std::vector<Test> tests;
    char combinator = '\0';  // between the compound before and this one
  };

  [[nodiscard]] static std::optional<Compound> takeCompound(Scanner& scanner);
  [[nodiscard]] static std::optional<Test> takeAttribute(Scanner& scanner);
  [[nodiscard]] static bool holds(const Test& test, const SvgContext& context, pugi::xml_node node);
  [[nodiscard]] bool matches(SvgContext& context, pugi::xml_node node, std::size_t last) const;

  std::vector<Compound> compounds_;  // at least one
};

}  // namespace tqdoc
