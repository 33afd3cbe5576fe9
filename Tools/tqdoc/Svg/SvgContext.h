#pragma once

/// @file SvgContext.h
/// What every part of the reader needs to know of the drawing being read.

#include <cstddef>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

#include <pugixml.hpp>

namespace tqdoc {

/// Features of a drawing that the reader left out.
struct LeftOut {
  std::size_t count = 0;
  std::ptrdiff_t firstOffset = 0;  ///< where in the file the first one is
};
using Features = std::map<std::string, LeftOut, std::less<>>;

/// Why a drawing is refused, and where in the file.
class SvgFault : public std::runtime_error {
 public:
  SvgFault(const std::string& reason, std::ptrdiff_t offset)
      : std::runtime_error(reason), offset_(offset) {}
  [[nodiscard]] std::ptrdiff_t offset() const noexcept { return offset_; }

 private:
  std::ptrdiff_t offset_;
};

/// One drawing while it is read. Belongs to one reader on one thread.
class SvgContext {
 public:
  /// Elements, references among them, nest this deep at the most.
  static constexpr int kDepthLimit = 100;
  /// Coordinates, stops and declarations cost 1 each, an element this much; a drawing may come to
  /// kWorkAllowed and kWorkPerByte more for every byte of its file. Only references followed many
  /// times exceed that.
  static constexpr std::size_t kElementWork = 100;
  static constexpr std::size_t kWorkAllowed = 5'000'000;
  static constexpr std::size_t kWorkPerByte = 100;

  /// @throws SvgFault when the root element is not svg
  SvgContext(const pugi::xml_document& xml, std::size_t fileSize);

  [[nodiscard]] pugi::xml_node root() const noexcept { return root_; }

  /// The element's name without the prefix of SVG's namespace; empty for elements of other
  /// namespaces and for what is no element.
  [[nodiscard]] std::string_view nameOf(pugi::xml_node node) const noexcept;

  /// The node after `node` in the order of the file; a null node at the end. No recursion, whatever
  /// the nesting.
  [[nodiscard]] pugi::xml_node following(pugi::xml_node node) const noexcept;

  /// The element with this id; a null node when there is none.
  [[nodiscard]] pugi::xml_node find(std::string_view id) const;

  /// Counts a feature that is left out.
  void leaveOut(std::string_view feature, pugi::xml_node where);

  /// @throws SvgFault when the drawing has become too large
  void charge(std::size_t work, pugi::xml_node where);

  [[nodiscard]] const Features& features() const noexcept { return features_; }

 private:
  pugi::xml_node root_;
  std::string prefix_;
  std::unordered_map<std::string_view, pugi::xml_node> byId_;
  Features features_;
  std::size_t workLeft_;
};

/// The attribute's text; empty when it is absent.
[[nodiscard]] inline std::string_view attributeOf(pugi::xml_node node, const char* name) noexcept {
  return node.attribute(name).value();
}

/// The text of href, with or without the prefix of links.
[[nodiscard]] std::string_view hrefOf(pugi::xml_node node) noexcept;

/// The id that "#id" leads to; empty for anything else.
[[nodiscard]] std::string_view localReference(std::string_view href) noexcept;

}  // namespace tqdoc
