#include <TQFoundation/platform/text/CharacterCategory.h>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tq {
namespace {

bool isBlank(UChar32 character) noexcept {
  return character == '\t' || u_charType(character) == U_SPACE_SEPARATOR;
}

}  // namespace

bool isControlOrFormatCharacter(char32_t character) noexcept {
  constexpr unsigned kWanted = U_GC_CC_MASK | U_GC_CF_MASK;
  return (U_MASK(u_charType(static_cast<UChar32>(character))) & kWanted) != 0;
}

std::string_view withoutBlankEnds(std::string_view text) noexcept {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end) {
    std::size_t next = begin;
    UChar32 character = 0;
    U8_NEXT(bytes, next, end, character);
    if (!isBlank(character)) break;
    begin = next;
  }
  while (begin < end) {
    const auto window =
        static_cast<std::int32_t>(std::min<std::size_t>(end - begin, U8_MAX_LENGTH));
    std::int32_t previous = window;
    UChar32 character = 0;
    U8_PREV(bytes + (end - static_cast<std::size_t>(window)), 0, previous, character);
    if (!isBlank(character)) break;
    end -= static_cast<std::size_t>(window - previous);
  }
  return text.substr(begin, end - begin);
}

}  // namespace tq
