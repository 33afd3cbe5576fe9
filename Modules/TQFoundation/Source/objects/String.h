#pragma once

/// @file String.h
/// Immutable Unicode strings, and lenient reading of numbers.

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

/// An immutable string, stored as UTF-8 in the object's own memory block.
///
/// A string may contain unpaired surrogates, which have no UTF-8 form. Each is stored in three
/// bytes (ED A0 80 … ED BF BF), and isWellFormed() is false. Equality and hash compare code units,
/// without normalisation. U+0000 is an ordinary character; there is no terminator.
///
/// Threads: any; immutable.
class TQ_EXPORT String final : public Subclass<String> {
 public:
  static constexpr std::string_view className = "String";
  static constexpr std::string_view codingName = "NSString";

  /// Creates a string of UTF-8. Returns null if the bytes are not well-formed (overlong forms,
  /// surrogates, truncated sequences, values above U+10FFFF).
  [[nodiscard]] static Ref<String> stringWithUTF8(std::string_view bytes);

  /// Creates a string of UTF-8. Each byte that is not well-formed becomes U+FFFD. Never null.
  [[nodiscard]] static Ref<String> stringWithUTF8Repaired(std::string_view bytes);

  /// Creates a string of bytes in the form of view(): UTF-8 that may contain unpaired surrogates.
  /// Returns null for anything else, also for a surrogate pair encoded as two surrogates.
  [[nodiscard]] static Ref<String> stringWithGeneralisedUTF8(std::string_view bytes);

  /// Creates a string of UTF-16. Unpaired surrogates are kept. Never null.
  [[nodiscard]] static Ref<String> stringWithUTF16(std::u16string_view units);

  /// Creates a string of well-formed UTF-8, such as a literal. Stops the process if it is
  /// malformed.
  [[nodiscard]] static Ref<String> of(std::string_view text);

  /// The bytes: UTF-8 if isWellFormed(), else with surrogates as described above.
  [[nodiscard]] std::string_view view() const noexcept {
    return {reinterpret_cast<const char*>(this) + sizeof(String), byteCount_};
  }

  /// False if the string contains an unpaired surrogate.
  [[nodiscard]] bool isWellFormed() const noexcept { return headerDetail() != kIllFormed; }

  /// The number of UTF-16 code units. Cost: linear.
  [[nodiscard]] std::size_t length() const noexcept;

  /// Returns UTF-16, with unpaired surrogates.
  [[nodiscard]] std::u16string utf16() const;

  /// Reads the number at the start of the text, after white space and with an optional sign. The
  /// rest is ignored; without a number the result is 0. ASCII digits only, independent of the
  /// locale; no hexadecimal, no "inf" or "nan".
  [[nodiscard]] std::int64_t integerValue() const noexcept;  ///< saturates
  [[nodiscard]] double doubleValue() const noexcept;         ///< overflow is ±infinity

  /// True if the text starts with t, T, y or Y, or with an optional sign, any zeros and then a
  /// digit 1 to 9. White space before it is skipped.
  [[nodiscard]] bool boolValue() const noexcept;

  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return hashOf(view()); }

  /// Returns the text, with U+FFFD for each unpaired surrogate.
  [[nodiscard]] std::string description() const override;

  /// Returns the hash of a String of this text without creating it.
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

/// Reads the number at the start of a text, as described at String.
[[nodiscard]] TQ_EXPORT std::int64_t lenientInteger(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT double lenientDouble(std::string_view text) noexcept;
[[nodiscard]] TQ_EXPORT bool lenientBool(std::string_view text) noexcept;

/// A number and the end of its text.
struct ScannedDouble {
  double value = 0;           ///< the number; 0 if there is none
  const char* end = nullptr;  ///< after the number, or the start of the text if there is none
};
/// Reads the number at the start of the text from `begin` to `end`, like lenientDouble(), but white
/// space is not skipped. Independent of the locale.
[[nodiscard]] TQ_EXPORT ScannedDouble scanDouble(const char* begin, const char* end) noexcept;

}  // namespace tq
