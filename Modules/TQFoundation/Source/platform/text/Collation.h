#pragma once

/// @file Collation.h
/// Natural, locale-aware order of names.

#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Compares two texts in natural order:
/// - letters matter before case and accents, and lower case comes before upper case;
/// - runs of digits are compared by value (file2 < file10; runs of more than 254 digits in pieces);
/// - punctuation comes before digits, digits before letters, and a prefix before the longer text
///   (not in Thai and Lao, where vowels are written before their consonants).
///
/// If all that is equal, shorter runs of digits come first (1 < 01); then code points decide.
///
/// The rules are those of the locale set by setCollationLocale(), initially the root locale. The
/// process locale has no effect. Texts are UTF-8; malformed bytes are read as U+FFFD. Any thread.
/// @return a number below, equal to or above 0; 0 only for identical texts
[[nodiscard]] TQ_EXPORT int localizedStandardCompare(std::string_view a, std::string_view b);

/// Sets the locale for later comparisons, such as "sv" or "de@collation=phonebook"; empty for the
/// root locale. Data that was sorted before must be sorted again. Any thread; best at start-up.
/// @return false for a locale without data; the previous locale stays
TQ_EXPORT bool setCollationLocale(std::string_view locale);

}  // namespace tq
