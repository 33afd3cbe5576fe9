#include <TQFoundation/serialisation/TQJSONFormat.h>

#include <string>

#include <TQFoundation/platform/text/CharacterCategory.h>
#include <TQFoundation/serialisation/detail/JSONEscape.h>

namespace tq {

Ref<String> safeJSONValue(const String& string) {
  std::string_view rest = string.view();
  std::size_t plain = detail::unescapedPrefix(rest);
  if (plain == rest.size()) return Ref<String>(const_cast<String*>(&string));
  std::string escaped;
  for (;;) {
    escaped.append(rest.substr(0, plain));
    if (plain == rest.size()) break;
    char escape[detail::kLongestEscape];
    escaped.append(escape, detail::writeEscape(escape, static_cast<unsigned char>(rest[plain])));
    rest.remove_prefix(plain + 1);
    plain = detail::unescapedPrefix(rest);
  }
  return String::stringWithGeneralisedUTF8(escaped);
}

bool TQJSONAwkwardCharacters::contains(char32_t character) noexcept {
  return character == U'"' || character == U'\\' || character == U'/' ||
         isControlOrFormatCharacter(character);
}

}  // namespace tq
