#include "Svg/SvgStyleSheet.h"

#include <algorithm>
#include <ranges>

namespace tqdoc {
namespace {

/// Replaces each comment by a space. An unterminated comment extends to the end.
[[nodiscard]] std::string withoutComments(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t begin = text.find("/*");
    result += text.substr(0, begin);
    if (begin == text.npos) break;
    result += ' ';
    const std::size_t end = text.find("*/", begin + 2);
    text.remove_prefix(end == text.npos ? text.size() : end + 2);
  }
  return result;
}

/// Consumes everything up to and including the next `stop` outside quotes and parentheses.
[[nodiscard]] std::string_view takeOuter(std::string_view& text, char stop) {
  char quote = '\0';
  std::size_t open = 0;
  std::size_t i = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '(') {
      ++open;
    } else if (c == ')' && open > 0) {
      --open;
    } else if (c == stop && open == 0) {
      break;
    }
  }
  const std::string_view before = text.substr(0, i);
  text.remove_prefix(std::min(i + 1, text.size()));
  return before;
}

template <class Visit>
void forEachWord(std::string_view text, Visit&& visit) {
  while (!(text = trimmed(text)).empty()) {
    std::size_t end = 0;
    while (end < text.size() && !isSpace(text[end])) ++end;
    visit(text.substr(0, end));
    text.remove_prefix(end);
  }
}

/// Consumes an at-rule: up to its semicolon, or to the end of its block.
void skipAtRule(std::string_view& text) {
  std::size_t open = 0;
  std::size_t i = 0;
  for (; i < text.size(); ++i) {
    if (text[i] == '{') ++open;
    if (text[i] == '}' && open > 0 && --open == 0) break;
    if (text[i] == ';' && open == 0) break;
  }
  text.remove_prefix(std::min(i + 1, text.size()));
}

}  // namespace

std::vector<Declaration> parseDeclarations(std::string_view text) {
  std::vector<Declaration> declarations;
  while (!text.empty()) {
    const std::string_view one = takeOuter(text, ';');
    const std::size_t colon = one.find(':');
    if (colon == one.npos) continue;
    Declaration declaration{trimmed(one.substr(0, colon)), trimmed(one.substr(colon + 1))};
    const std::size_t mark = declaration.value.rfind('!');
    if (mark != one.npos && trimmed(declaration.value.substr(mark + 1)) == "important") {
      declaration.important = true;
      declaration.value = trimmed(declaration.value.substr(0, mark));
    }
    declarations.push_back(declaration);
  }
  return declarations;
}

SvgStyleSheet::SvgStyleSheet(SvgContext& context) : context_(context) {
  std::vector<std::size_t> ends;  // an error in one sheet must not reach the next
  for (pugi::xml_node node = context.root(); node; node = context.following(node)) {
    if (context.nameOf(node) != "style") continue;
    const std::string_view type = attributeOf(node, "type");
    const std::string_view media = trimmed(attributeOf(node, "media"));
    if (!type.empty() && type != "text/css") {
      context.leaveOut("style sheet of type " + std::string(type));
      continue;
    }
    if (!media.empty() && media != "all" && media != "screen") {
      context.leaveOut("style sheet for " + std::string(media));
      continue;
    }
    std::string content;
    for (const pugi::xml_node part : node.children()) content += part.value();
    text_ += withoutComments(content);
    ends.push_back(text_.size());
  }
  std::size_t begin = 0;
  for (const std::size_t end : ends) {
    parse(std::string_view(text_).substr(begin, end - begin));
    begin = end;
  }
}

void SvgStyleSheet::parse(std::string_view text) {
  while (!(text = trimmed(text)).empty()) {
    if (text.starts_with('@')) {
      Scanner scanner(text.substr(1));
      context_.leaveOut("@" + std::string(scanner.takeName()));
      skipAtRule(text);
      continue;
    }
    std::string_view selectors = takeOuter(text, '{');
    blocks_.push_back(parseDeclarations(takeOuter(text, '}')));
    while (!selectors.empty()) {
      addRule(trimmed(takeOuter(selectors, ',')), blocks_.size() - 1);
    }
  }
}

void SvgStyleSheet::addRule(std::string_view text, std::size_t block) {
  auto selector = SvgSelector::parse(text);
  if (!selector) return context_.leaveOut("selector " + std::string(text));
  index_[selector->key()].push_back(rules_.size());
  const int specificity = selector->specificity();
  rules_.push_back({*std::move(selector), specificity, block});
}

std::vector<const SvgStyleSheet::Rule*> SvgStyleSheet::rulesFor(pugi::xml_node node) {
  std::vector<const Rule*> rules;
  const auto addFrom = [&](const std::string& key) {
    const auto found = index_.find(key);
    if (found == index_.end()) return;
    for (const std::size_t i : found->second) {
      if (rules_[i].selector.matches(context_, node)) rules.push_back(&rules_[i]);
    }
  };
  if (index_.empty()) return rules;
  addFrom("*");
  addFrom(std::string(context_.nameOf(node)));
  addFrom("#" + std::string(attributeOf(node, "id")));
  forEachWord(attributeOf(node, "class"),
              [&](std::string_view name) { addFrom("." + std::string(name)); });
  // The order of rules in memory is their order in the style sheet.
  std::ranges::sort(rules, [](const Rule* a, const Rule* b) {
    return a->specificity != b->specificity ? a->specificity < b->specificity : a < b;
  });
  return rules;
}

template <class LeaveOut>
Style SvgStyleSheet::cascade(pugi::xml_node node, const Style& parent, Viewport viewport,
                             const LeaveOut& leaveOut) {
  std::vector<Declaration> declarations;  // the later one wins
  for (const pugi::xml_attribute attribute : node.attributes()) {
    if (isProperty(attribute.name())) {
      declarations.push_back({attribute.name(), trimmed(attribute.value())});
    }
  }
  for (const Rule* rule : rulesFor(node)) {
    const auto& block = blocks_[rule->block];
    context_.charge(block.size(), node);
    declarations.insert(declarations.end(), block.begin(), block.end());
  }
  const auto own = parseDeclarations(attributeOf(node, "style"));
  declarations.insert(declarations.end(), own.begin(), own.end());
  std::ranges::stable_partition(declarations, [](const auto& d) { return !d.important; });
  // First, because lengths of other properties may be relative to the font size.
  std::ranges::stable_partition(
      declarations, [](const auto& d) { return d.name == "font-size" || d.name == "font"; });
  context_.charge(declarations.size() + SvgContext::kElementWork, node);

  Style style = parent.inherited();
  for (const Declaration& one : declarations) {
    switch (setProperty(style, parent, one.name, one.value, viewport)) {
      case Understood::yes:
        break;
      case Understood::notTheProperty:
        leaveOut(std::string(one.name));
        break;
      case Understood::notTheValue:
        leaveOut(std::string(one.name) + ": " + std::string(one.value));
        break;
    }
  }
  return style;
}

Style SvgStyleSheet::styleOf(pugi::xml_node node, const Style& parent, Viewport viewport) {
  return cascade(node, parent, viewport,
                 [this](const std::string& feature) { context_.leaveOut(feature); });
}

Style SvgStyleSheet::styleAround(pugi::xml_node node, Viewport viewport) {
  std::vector<pugi::xml_node> ancestors;
  for (auto each = node.parent(); each.type() == pugi::node_element; each = each.parent()) {
    ancestors.push_back(each);
  }
  Style style;
  for (const pugi::xml_node each : std::views::reverse(ancestors)) {
    style = cascade(each, style, viewport, [](const std::string&) {});  // counted where it is drawn
  }
  return style;
}

}  // namespace tqdoc
