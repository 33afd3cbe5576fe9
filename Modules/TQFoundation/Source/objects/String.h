#pragma once

/// @file String.h
/// Immutable text.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

namespace detail {
struct Construction;
}

/// A sequence of UTF-16 code units, held as UTF-8 in the object's own block.
///
/// A sequence with an unpaired surrogate has no UTF-8 form. It is kept all the same, each unpaired
/// surrogate as the three bytes that its value would take (ED A0 80 … ED BF BF), and isWellFormed()
/// says no. Equality and hash are by code units: nothing is normalised. U+0000 is a character like
/// any other; there is no terminator.
///
/// Threads: any; immutable.
class TQ_EXPORT String final : public Subclass<String> {
 public:
  static constexpr std::string_view className = "String";
  static constexpr std::string_view codingName = "NSString";

  /// The text of these bytes; none when they are not well-formed UTF-8 (overlong forms, surrogates,
  /// truncated sequences and values above U+10FFFF are not).
  [[nodiscard]] static Ref<String> stringWithUTF8(std::string_view bytes);

  /// The text of these bytes, each byte that is not well-formed UTF-8 read as U+FFFD. Never none.
  [[nodiscard]] static Ref<String> stringWithUTF8Repaired(std::string_view bytes);

  /// The text of bytes in the form of view(): UTF-8 in which unpaired surrogates may stand. None
  /// for anything else, a pair of surrogates written as two among it.
  [[nodiscard]] static Ref<String> stringWithGeneralisedUTF8(std::string_view bytes);

  /// The text of these code units, unpaired surrogates kept. Never none.
  [[nodiscard]] static Ref<String> stringWithUTF16(std::u16string_view units);

  /// For text that is known to be well-formed, such as a literal; stops the process otherwise.
  [[nodiscard]] static Ref<String> of(std::string_view text);

  /// The bytes: UTF-8 when isWellFormed(), else with surrogates as described above.
  [[nodiscard]] std::string_view view() const noexcept {
    return {reinterpret_cast<const char*>(this) + sizeof(String), byteCount_};
  }

  /// False when an unpaired surrogate is in it.
  [[nodiscard]] bool isWellFormed() const noexcept { return headerDetail() != kIllFormed; }

  /// UTF-16 code units. Cost: one pass.
  [[nodiscard]] std::size_t length() const noexcept;

  /// As UTF-16, unpaired surrogates as they are.
  [[nodiscard]] std::u16string utf16() const;

  /// The lenient readings of text as a number: white space is skipped, then a sign and as many
  /// characters as fit are taken; text that does not begin with a number is 0. ASCII digits only,
  /// never by locale, no hexadecimal, no "inf" or "nan".
  [[nodiscard]] std::int64_t integerValue() const noexcept;  ///< saturates
  [[nodiscard]] double doubleValue() const noexcept;         ///< overflow is ±infinity

  /// True for text that starts with t, T, y or Y, or with an optional sign, any zeros and then a
  /// digit 1 to 9.
  [[nodiscard]] bool boolValue() const noexcept;

  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return hashOf(view()); }

  /// The text itself (unpaired surrogates as U+FFFD).
  [[nodiscard]] std::string description() const override;

  /// The hash of a string of this text, without the string.
  [[nodiscard]] static std::size_t hashOf(std::string_view text) noexcept;

 private:
  friend struct detail::Construction;

  static constexpr std::uint8_t kWellFormed = 0;
  static constexpr std::uint8_t kIllFormed = 1;

  String(std::size_t byteCount, std::uint8_t form);
  [[nodiscard]] static Ref<String> make(std::string_view checkedBytes, std::uint8_t form);
  [[nodiscard]] char* bytes() noexcept { return reinterpret_cast<char*>(this) + sizeof(String); }

  std::uint32_t byteCount_;
};

/// The number that a text starts with, read leniently as described at String.
[[nodiscard]] TQ_EXPORT std::int64_t lenientInteger(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT double lenientDouble(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT bool lenientBool(std::string_view text) noexcept;

/// As lenientDouble(), and where the number's text ends. `end` is the start of `text` when there is
/// no number; white space before it is not skipped.
struct ScannedDouble {
  double value = 0;           ///< what the digits say
  const char* end = nullptr;  ///< behind the number, or the beginning when there is none
};
/// The number that the text from `begin` to `end` starts with. Never by locale.
[[nodiscard]] TQ_EXPORT ScannedDouble scanDouble(const char* begin, const char* end) noexcept;

}  // namespace tq
