#include <TQFoundation/platform/CharacterCategory.h>

#include <unicode/uchar.h>

namespace tq {

bool isControlOrFormatCharacter(char32_t character) noexcept {
  constexpr unsigned kWanted = U_GC_CC_MASK | U_GC_CF_MASK;
  return (U_MASK(u_charType(static_cast<UChar32>(character))) & kWanted) != 0;
}

}  // namespace tq
