#pragma once

/// @file SvgContext.h
/// The state that all parts of the reader share.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <pugixml.hpp>

#include "Model/Features.h"

namespace tqdoc {

/// An error in a drawing and its offset in the file.
class SvgFault : public std::runtime_error {
 public:
  SvgFault(const std::string& reason, std::ptrdiff_t offset)
      : std::runtime_error(reason), offset_(offset) {}
  [[nodiscard]] std::ptrdiff_t offset() const noexcept { return offset_; }

 private:
  std::ptrdiff_t offset_;
};

/// A drawing that is being read. Used by one reader on one thread.
class SvgContext {
 public:
  /// The maximum depth of nested elements and references.
  static constexpr int kDepthLimit = 100;
  /// The cost of an element; coordinates, stops and declarations cost 1 each. A drawing may cost
  /// kWorkAllowed plus kWorkPerByte for every byte of its file. Only references that are followed
  /// many times exceed this limit.
  static constexpr std::size_t kElementWork = 100;
  static constexpr std::size_t kWorkAllowed = 5'000'000;
  static constexpr std::size_t kWorkPerByte = 100;

  /// @param leftOut  features that were ignored before
  /// @throws SvgFault if the root element is not svg
  SvgContext(const pugi::xml_document& xml, std::size_t fileSize, Features leftOut = {});

  [[nodiscard]] pugi::xml_node root() const noexcept { return root_; }

  /// Returns the name of an element without a prefix of SVG's namespace; empty for other nodes and
  /// for elements of other namespaces.
  [[nodiscard]] std::string_view nameOf(pugi::xml_node node) const noexcept;

  /// Returns the node after `node` in the order of the file, or a null node at the end. Does not
  /// recurse.
  [[nodiscard]] pugi::xml_node following(pugi::xml_node node) const noexcept;

  /// Returns the element with this id, or a null node.
  [[nodiscard]] pugi::xml_node find(std::string_view id) const;

  /// Counts an ignored feature.
  void leaveOut(std::string_view feature);

  /// Counts the elements in an element that are neither descriptions nor definitions, nor have the
  /// name `read`.
  void leaveOutContent(pugi::xml_node node, std::string_view read = {});

  /// @throws SvgFault if the drawing is too large
  void charge(std::size_t work, pugi::xml_node where);

  /// Returns what is left of the work that the drawing may cost.
  [[nodiscard]] std::size_t workLeft() const noexcept { return workLeft_; }

  [[nodiscard]] const Features& features() const noexcept { return features_; }

 private:
  /// Finds the prefixes of SVG's namespace. Each declaration is taken to hold for the whole file.
  void findPrefixes();

  pugi::xml_node root_;
  std::vector<std::string> prefixes_;  // of SVG's namespace, with the colon; or empty
  std::unordered_map<std::string_view, pugi::xml_node> byId_;
  Features features_;
  std::size_t workLeft_;
};

/// Returns true for elements that are not drawn where they are: definitions and descriptions. Those
/// that are not supported wherever they are were counted before; see isForeignElement().
[[nodiscard]] bool isDefinition(std::string_view name) noexcept;

/// Returns the value of an attribute; empty if it is absent.
[[nodiscard]] inline std::string_view attributeOf(pugi::xml_node node, const char* name) noexcept {
  return node.attribute(name).value();
}

/// Returns the value of href, with or without the XLink prefix.
[[nodiscard]] std::string_view hrefOf(pugi::xml_node node) noexcept;

/// Returns the id of "#id"; empty for anything else.
[[nodiscard]] std::string_view localReference(std::string_view href) noexcept;

}  // namespace tqdoc
