#include "Svg/SvgEntities.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>

#include "Svg/Scanner.h"
#include "Svg/SvgContext.h"

namespace tqdoc {
namespace {

struct Entity {
  std::string value;  // as declared; expanded if it was used
  enum class State { declared, expanding, expanded } state = State::declared;
};
using Entities = std::map<std::string, Entity, std::less<>>;

[[nodiscard]] bool isPredefined(std::string_view name) noexcept {
  return name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos";
}

/// A name in XML also contains periods and colons.
[[nodiscard]] std::string_view takeXmlName(std::string_view text) noexcept {
  Scanner scanner(text);
  do {
    static_cast<void>(scanner.takeName());
  } while (scanner.take(".") || scanner.take(":"));
  return text.substr(0, text.size() - scanner.rest().size());
}

/// Consumes a text in quotes. Returns no value if there is none.
[[nodiscard]] std::optional<std::string_view> takeQuoted(Scanner& scanner) noexcept {
  const char quote = scanner.peek();
  if (quote != '"' && quote != '\'') return std::nullopt;
  scanner.next();
  return scanner.takeUntil(quote);
}

/// Consumes one item of a document type: a comment or a declaration, with the texts in its quotes.
/// Adds the entity that it declares. The first declaration of a name is valid.
void takeItem(Scanner& scanner, Entities& entities) {
  if (scanner.take("<!--")) {
    const std::size_t end = scanner.rest().find("-->");
    scanner = Scanner(end == std::string_view::npos ? std::string_view()
                                                    : scanner.rest().substr(end + 3));
    return;
  }
  if (scanner.take("%")) {  // a reference to a parameter entity, which is not read
    static_cast<void>(scanner.takeUntil(';'));
    return;
  }
  if (scanner.take("<!ENTITY")) {
    scanner.skipSpace();
    const std::string_view name = takeXmlName(scanner.rest());  // empty for "%"
    scanner.take(name);
    scanner.skipSpace();
    const auto value = takeQuoted(scanner);  // none after SYSTEM and PUBLIC
    if (value && !name.empty())
      entities.try_emplace(std::string(name), Entity{std::string(*value)});
  }
  while (!scanner.atEnd() && scanner.peek() != ']') {
    if (takeQuoted(scanner)) continue;
    if (scanner.next() == '>') return;
  }
}

/// Returns the entities of the internal subset, and where the content of the document begins.
[[nodiscard]] Entities declaredIn(std::string_view source, std::size_t& content) {
  Entities entities;
  const std::size_t start = source.find("<!DOCTYPE");
  if (start == source.npos) return entities;
  Scanner scanner(source.substr(start + std::string_view("<!DOCTYPE").size()));
  while (!scanner.atEnd() && scanner.peek() != '[' && scanner.peek() != '>') {
    if (!takeQuoted(scanner)) scanner.next();
  }
  if (!scanner.take("[")) return entities;
  while (scanner.skipSpace(), !scanner.atEnd() && !scanner.take("]")) takeItem(scanner, entities);
  content = source.size() - scanner.rest().size();
  return entities;
}

/// Copies text and replaces references. Each entity is expanded once. All expansions together have
/// one budget, so time and memory are proportional to it.
class Expansion {
 public:
  Expansion(Entities& entities, std::size_t budget, Features& leftOut)
      : entities_(entities), budget_(budget), leftOut_(leftOut) {}

  /// Appends the reference at the start of `source`, or else the text before the next character
  /// that may begin a reference or a section, and consumes it.
  void appendNext(std::string_view& source, std::string& to, std::ptrdiff_t offset) {
    const std::string_view name =
        source.front() == '&' ? takeXmlName(source.substr(1)) : std::string_view();
    const bool isReference = !name.empty() && source.size() > name.size() + 1 &&
                             source[name.size() + 1] == ';' && !isPredefined(name);
    const auto found = isReference ? entities_.find(name) : entities_.end();
    if (found == entities_.end()) {
      if (isReference) ++leftOut_["entity &" + std::string(name.substr(0, 40)) + ";"];
      const std::string_view plain = source.substr(0, source.find_first_of("&<", 1));
      to += plain;
      source.remove_prefix(plain.size());
      return;
    }
    source.remove_prefix(name.size() + 2);
    const std::string& value = expanded(found->second, name, offset);
    if (value.size() >= budget_) {
      throw SvgFault("the drawing is too large after its entities are expanded", offset);
    }
    budget_ -= value.size() + 1;
    to += value;
  }

 private:
  const std::string& expanded(Entity& entity, std::string_view name, std::ptrdiff_t offset) {
    if (entity.state == Entity::State::expanding || depth_ == SvgContext::kDepthLimit) {
      throw SvgFault("the entity &" + std::string(name) + "; contains itself", offset);
    }
    if (entity.state == Entity::State::declared) {
      entity.state = Entity::State::expanding;
      ++depth_;
      std::string value;
      for (std::string_view rest = entity.value; !rest.empty();) appendNext(rest, value, offset);
      --depth_;
      entity.value = std::move(value);
      entity.state = Entity::State::expanded;
    }
    return entity.value;
  }

  Entities& entities_;
  std::size_t budget_;
  Features& leftOut_;
  int depth_ = 0;
};

/// Returns the length of a comment or a CDATA section at the start of the text, or 0: references in
/// them are plain text.
[[nodiscard]] std::size_t verbatimLength(std::string_view text) noexcept {
  const struct {
    std::string_view begin, end;
  } kSections[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
  for (const auto& section : kSections) {
    if (!text.starts_with(section.begin)) continue;
    const std::size_t end = text.find(section.end, section.begin.size());
    return end == text.npos ? text.size() : end + section.end.size();
  }
  return 0;
}

}  // namespace

ExpandedText::ExpandedText(std::string_view source) : source_(source) {
  std::size_t content = 0;
  Entities entities = declaredIn(source, content);
  if (content == 0) return;  // there is no internal subset
  changed_ = true;
  Expansion expansion(entities, kGrowthAllowed + kGrowthPerByte * source.size(), leftOut_);
  text_ = source.substr(0, content);
  while (content < source.size()) {
    std::string_view rest = source.substr(content);
    const std::size_t verbatim = verbatimLength(rest);
    const std::size_t before = text_.size();
    if (verbatim > 0) {
      text_ += rest.substr(0, verbatim);
      rest.remove_prefix(verbatim);
    } else {
      expansion.appendNext(rest, text_, static_cast<std::ptrdiff_t>(content));
    }
    const std::size_t end = source.size() - rest.size();
    if (text_.size() - before != end - content) {
      references_.push_back({content, end, before, text_.size()});
    }
    content = end;
  }
}

std::ptrdiff_t ExpandedText::sourceOffset(std::ptrdiff_t offset) const noexcept {
  const auto at = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
  const auto after = std::ranges::upper_bound(references_, at, {}, &Reference::text);
  if (after == references_.begin()) return offset;
  const Reference& last = *std::prev(after);
  if (at < last.textEnd) return static_cast<std::ptrdiff_t>(last.source);
  return static_cast<std::ptrdiff_t>(last.sourceEnd + (at - last.textEnd));
}

}  // namespace tqdoc
