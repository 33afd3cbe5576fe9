#include "Svg/SvgSelector.h"

#include <algorithm>

namespace tqdoc {
namespace {

[[nodiscard]] bool hasWord(std::string_view text, std::string_view word) {
  while (!(text = trimmed(text)).empty()) {
    const auto end = std::ranges::find_if(text, isSpace);
    const auto length = static_cast<std::size_t>(end - text.begin());
    if (text.substr(0, length) == word) return true;
    text.remove_prefix(length);
  }
  return false;
}

[[nodiscard]] bool isElement(pugi::xml_node node) { return node.type() == pugi::node_element; }

[[nodiscard]] pugi::xml_node elementBefore(pugi::xml_node node) {
  do node = node.previous_sibling();
  while (node && !isElement(node));
  return node;
}

[[nodiscard]] pugi::xml_node elementAfter(pugi::xml_node node) {
  do node = node.next_sibling();
  while (node && !isElement(node));
  return node;
}

[[nodiscard]] pugi::xml_node parentElement(pugi::xml_node node) {
  return isElement(node.parent()) ? node.parent() : pugi::xml_node();
}

}  // namespace

std::optional<SvgSelector> SvgSelector::parse(std::string_view text) {
  constexpr std::size_t kMostCompounds = 32;
  SvgSelector selector;
  char combinator = '\0';
  for (Scanner scanner(trimmed(text));;) {
    auto compound = takeCompound(scanner);
    if (!compound || selector.compounds_.size() == kMostCompounds) return std::nullopt;
    compound->combinator = combinator;
    selector.compounds_.push_back(*std::move(compound));
    if (scanner.atEnd()) return selector;
    combinator = ' ';
    scanner.skipSpace();
    if (std::string_view(">+~").find(scanner.peek()) != text.npos) combinator = scanner.next();
    scanner.skipSpace();
  }
}

/// Takes the tests of one element, up to a combinator.
std::optional<SvgSelector::Compound> SvgSelector::takeCompound(Scanner& scanner) {
  constexpr struct {
    std::string_view name;
    Kind kind;
  } kPseudoClasses[] = {{"root", Kind::isRoot},       {"first-child", Kind::isFirst},
                        {"last-child", Kind::isLast}, {"only-child", Kind::isOnly},
                        {"link", Kind::never},        {"visited", Kind::never},
                        {"hover", Kind::never},       {"active", Kind::never},
                        {"focus", Kind::never},       {"target", Kind::never}};
  Compound compound;
  const bool isAny = scanner.take("*");
  const std::string_view element = isAny ? std::string_view() : scanner.takeName();
  if (!element.empty()) compound.tests.push_back({Kind::element, element, {}});
  while (std::string_view(".#[:").find(scanner.peek()) != std::string_view::npos) {
    if (scanner.take("[")) {
      const auto test = takeAttribute(scanner);
      if (!test) return std::nullopt;
      compound.tests.push_back(*test);
      continue;
    }
    const char mark = scanner.next();
    const std::string_view name = scanner.takeName();
    if (name.empty()) return std::nullopt;
    Kind kind = mark == '.' ? Kind::className : Kind::id;
    if (mark == ':') {
      const auto known =
          std::ranges::find_if(kPseudoClasses, [&](const auto& one) { return one.name == name; });
      if (known == std::end(kPseudoClasses)) return std::nullopt;
      kind = known->kind;
    }
    compound.tests.push_back({kind, name, {}});
  }
  if (compound.tests.empty() && !isAny) return std::nullopt;
  return compound;
}

/// Takes an attribute and its value, after "[".
std::optional<SvgSelector::Test> SvgSelector::takeAttribute(Scanner& scanner) {
  constexpr struct {
    std::string_view sign;
    Kind kind;
  } kSigns[] = {{"=", Kind::attributeEquals},   {"~=", Kind::attributeHasWord},
                {"|=", Kind::attributeHasPart}, {"^=", Kind::attributeBegins},
                {"$=", Kind::attributeEnds},    {"*=", Kind::attributeContains}};
  Test test{Kind::hasAttribute, {}, {}};
  scanner.skipSpace();
  test.name = scanner.takeName();
  scanner.skipSpace();
  if (test.name.empty()) return std::nullopt;
  if (scanner.take("]")) return test;
  const auto sign = std::ranges::find_if(
      kSigns, [&](const auto& one) { return scanner.rest().starts_with(one.sign); });
  if (sign == std::end(kSigns)) return std::nullopt;
  scanner.take(sign->sign);
  test.kind = sign->kind;
  scanner.skipSpace();
  if (const char quote = scanner.peek(); quote == '"' || quote == '\'') {
    scanner.next();
    test.value = scanner.takeUntil(quote);
  } else {
    test.value = scanner.takeName();
  }
  scanner.skipSpace();
  return scanner.take("]") ? std::optional(test) : std::nullopt;
}

bool SvgSelector::holds(const Test& test, const SvgContext& context, pugi::xml_node node) {
  const std::string name(test.kind == Kind::id          ? "id"
                         : test.kind == Kind::className ? "class"
                                                        : test.name);
  const std::string_view value = attributeOf(node, name.c_str());
  const bool partial = !test.value.empty();
  switch (test.kind) {
    case Kind::element:
      return context.nameOf(node) == test.name;
    case Kind::id:
      return value == test.name;
    case Kind::className:
      return hasWord(value, test.name);
    case Kind::hasAttribute:
      return !node.attribute(name.c_str()).empty();
    case Kind::attributeEquals:
      return !node.attribute(name.c_str()).empty() && value == test.value;
    case Kind::attributeHasWord:
      return partial && hasWord(value, test.value);
    case Kind::attributeHasPart:
      return !node.attribute(name.c_str()).empty() && value.starts_with(test.value) &&
             (value.size() == test.value.size() || value[test.value.size()] == '-');
    case Kind::attributeBegins:
      return partial && value.starts_with(test.value);
    case Kind::attributeEnds:
      return partial && value.ends_with(test.value);
    case Kind::attributeContains:
      return partial && value.find(test.value) != value.npos;
    case Kind::isRoot:
      return node == context.root();
    case Kind::isFirst:
      return !elementBefore(node);
    case Kind::isLast:
      return !elementAfter(node);
    case Kind::isOnly:
      return !elementBefore(node) && !elementAfter(node);
    case Kind::never:
      return false;
  }
  return false;
}

bool SvgSelector::matches(SvgContext& context, pugi::xml_node node, std::size_t last) const {
  const Compound& compound = compounds_[last];
  const auto hold = [&](const Test& test) { return holds(test, context, node); };
  if (!std::ranges::all_of(compound.tests, hold)) return false;
  if (last == 0) return true;
  const bool isAbove = compound.combinator == ' ' || compound.combinator == '>';
  const bool isNext = compound.combinator == '>' || compound.combinator == '+';
  const auto step = isAbove ? parentElement : elementBefore;
  for (pugi::xml_node other = step(node); other; other = step(other)) {
    context.charge(1, node);
    if (matches(context, other, last - 1)) return true;
    if (isNext) break;
  }
  return false;
}

int SvgSelector::specificity() const noexcept {
  constexpr int kIdWeight = 1'000'000, kClassWeight = 1'000;
  int sum = 0;
  for (const Compound& compound : compounds_) {
    for (const Test& test : compound.tests) {
      sum += test.kind == Kind::id ? kIdWeight : test.kind == Kind::element ? 1 : kClassWeight;
    }
  }
  return sum;
}

std::string SvgSelector::key() const {
  const auto& tests = compounds_.back().tests;
  for (const auto& [kind, mark] :
       {std::pair(Kind::id, "#"), std::pair(Kind::className, "."), std::pair(Kind::element, "")}) {
    const auto found = std::ranges::find(tests, kind, &Test::kind);
    if (found != tests.end()) return mark + std::string(found->name);
  }
  return "*";
}

}  // namespace tqdoc
