#include "Svg/SvgContext.h"

#include <algorithm>
#include <utility>

#include "Svg/SvgForeign.h"

namespace tqdoc {

SvgContext::SvgContext(const pugi::xml_document& xml, std::size_t fileSize, Features leftOut)
    : root_(xml.document_element()),
      features_(std::move(leftOut)),
      workLeft_(kWorkAllowed + kWorkPerByte * fileSize) {
  const std::string_view name = root_.name();
  prefixes_.emplace_back(name.substr(0, name.find(':') + 1));  // npos + 1 is 0
  findPrefixes();
  if (nameOf(root_) != "svg") {
    const std::string what = root_ ? "the root element is <" + std::string(name) + ">, not <svg>"
                                   : std::string("there is no root element");
    throw SvgFault(what, root_ ? root_.offset_debug() : 0);
  }
  for (pugi::xml_node node = root_; node; node = following(node)) {
    const std::string_view id = attributeOf(node, "id");
    if (!id.empty()) byId_.try_emplace(id, node);
    const std::string_view element = nameOf(node);
    if (isForeignElement(element)) leaveOut("<" + std::string(element) + ">");
  }
}

std::string_view SvgContext::nameOf(pugi::xml_node node) const noexcept {
  const std::string_view name = node.name();
  const std::string_view prefix = name.substr(0, name.find(':') + 1);
  if (std::ranges::find(prefixes_, prefix) == prefixes_.end()) return {};
  return name.substr(prefix.size());
}

void SvgContext::findPrefixes() {
  constexpr std::string_view kNamespace = "http://www.w3.org/2000/svg";
  constexpr std::string_view kDeclaration = "xmlns";
  for (pugi::xml_node node = root_; node; node = following(node)) {
    for (const pugi::xml_attribute attribute : node.attributes()) {
      std::string_view name = attribute.name();
      if (!name.starts_with(kDeclaration) || attribute.value() != kNamespace) continue;
      name.remove_prefix(kDeclaration.size());
      const std::string prefix = name.empty() ? "" : std::string(name.substr(1)) + ":";
      if (std::ranges::find(prefixes_, prefix) == prefixes_.end()) prefixes_.push_back(prefix);
    }
  }
}

pugi::xml_node SvgContext::following(pugi::xml_node node) const noexcept {
  if (const pugi::xml_node child = node.first_child()) return child;
  while (node != root_) {
    if (const pugi::xml_node sibling = node.next_sibling()) return sibling;
    node = node.parent();
  }
  return {};
}

pugi::xml_node SvgContext::find(std::string_view id) const {
  const auto found = byId_.find(id);
  return found != byId_.end() ? found->second : pugi::xml_node();
}

void SvgContext::leaveOut(std::string_view feature) {
  auto found = features_.find(feature);
  if (found == features_.end()) {
    // Names come from the file, so the number of different names is limited.
    constexpr std::size_t kNamesKept = 200;
    constexpr std::size_t kNameLength = 60;
    const bool room = features_.size() < kNamesKept;
    const std::string name(room ? feature.substr(0, kNameLength) : std::string_view("(others)"));
    found = features_.try_emplace(name, 0).first;
  }
  ++found->second;
}

void SvgContext::leaveOutContent(pugi::xml_node node, std::string_view read) {
  for (const pugi::xml_node child : node.children()) {
    const std::string_view name = nameOf(child);
    if (!name.empty() && name != read && !isDefinition(name)) {
      leaveOut("<" + std::string(name) + ">");
    }
  }
}

void SvgContext::charge(std::size_t work, pugi::xml_node where) {
  if (work > workLeft_) {
    throw SvgFault("the drawing is too large after its references are expanded",
                   where.offset_debug());
  }
  workLeft_ -= work;
}

bool isDefinition(std::string_view name) noexcept {
  constexpr std::string_view kNames[] = {
      "defs",           "title",          "desc",   "metadata", "style",  "symbol",  "clipPath",
      "linearGradient", "radialGradient", "marker", "mask",     "filter", "pattern", "view"};
  return std::ranges::find(kNames, name) != std::end(kNames) || isForeignElement(name);
}

std::string_view hrefOf(pugi::xml_node node) noexcept {
  for (const pugi::xml_attribute attribute : node.attributes()) {
    const std::string_view name = attribute.name();
    if (name == "href" || name.ends_with(":href")) return attribute.value();
  }
  return {};
}

std::string_view localReference(std::string_view href) noexcept {
  return href.starts_with('#') ? href.substr(1) : std::string_view();
}

}  // namespace tqdoc
