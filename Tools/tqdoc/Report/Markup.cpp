#include "Report/Markup.h"

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

std::string escaped(std::string_view text) {
  const auto repaired = tq::String::stringWithUTF8Repaired(text);
  std::string result;
  for (const char c : repaired->view()) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        const bool isControl = static_cast<unsigned char>(c) < ' ' || c == '\x7f';
        result += isControl && c != '\n' && c != '\t' ? "\uFFFD" : std::string(1, c);
    }
  }
  return result;
}

std::string isolated(std::string_view text) { return "<bdi>" + escaped(text) + "</bdi>"; }

std::string filled(std::string_view page,
                   std::initializer_list<std::pair<std::string_view, std::string_view>> values) {
  std::string result;
  while (!page.empty()) {
    const std::size_t begin = std::min(page.find("{{"), page.size());
    result += page.substr(0, begin);
    page.remove_prefix(begin);
    if (page.empty()) break;
    const std::size_t end = page.find("}}");
    const std::string_view name = page.substr(2, end - 2);
    for (const auto& [key, value] : values) {
      if (key == name) result += value;
    }
    page.remove_prefix(end + 2);
  }
  return result;
}

}  // namespace tqdoc
