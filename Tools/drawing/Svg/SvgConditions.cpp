#include "Svg/SvgConditions.h"

#include <algorithm>
#include <string_view>

#include "Svg/Scanner.h"

namespace tqdoc {
namespace {

// Names behind the "#" of "http://www.w3.org/TR/SVG11/feature#Shape".
constexpr std::string_view kFeatures[] = {"SVG",
                                          "SVG-static",
                                          "CoreAttribute",
                                          "Structure",
                                          "BasicStructure",
                                          "ContainerAttribute",
                                          "ConditionalProcessing",
                                          "Image",
                                          "Style",
                                          "ViewportAttribute",
                                          "Shape",
                                          "Text",
                                          "BasicText",
                                          "PaintAttribute",
                                          "BasicPaintAttribute",
                                          "OpacityAttribute",
                                          "GraphicsAttribute",
                                          "BasicGraphicsAttribute",
                                          "Marker",
                                          "Gradient",
                                          "Pattern",
                                          "Clip",
                                          "BasicClip",
                                          "Mask",
                                          "Filter",
                                          "BasicFilter",
                                          "XlinkAttribute"};

[[nodiscard]] bool isKnownFeature(std::string_view url) noexcept {
  const std::size_t mark = url.find('#');
  return mark != url.npos && url.starts_with("http://www.w3.org/") &&
         std::ranges::find(kFeatures, url.substr(mark + 1)) != std::end(kFeatures);
}

[[nodiscard]] bool isEnglish(std::string_view language) noexcept {
  return language == "en" || language.starts_with("en-");
}

/// Returns the text before the next separator and consumes both.
[[nodiscard]] std::string_view takeItem(std::string_view& list, std::string_view separators) {
  const std::size_t end = std::min(list.find_first_of(separators), list.size());
  const std::string_view item = trimmed(list.substr(0, end));
  list.remove_prefix(std::min(end + 1, list.size()));
  return item;
}

}  // namespace

bool meetsConditions(pugi::xml_node node) noexcept {
  if (node.attribute("requiredExtensions")) return false;
  if (const auto features = node.attribute("requiredFeatures")) {
    for (std::string_view list = trimmed(features.value()); !list.empty();) {
      const std::string_view feature = takeItem(list, " \t\r\n");
      if (!feature.empty() && !isKnownFeature(feature)) return false;
    }
  }
  return !isForOtherLanguages(node);
}

bool isForOtherLanguages(pugi::xml_node node) noexcept {
  const auto languages = node.attribute("systemLanguage");
  if (!languages) return false;
  for (std::string_view list = languages.value(); !list.empty();) {
    if (isEnglish(takeItem(list, ","))) return false;
  }
  return true;
}

}  // namespace tqdoc
