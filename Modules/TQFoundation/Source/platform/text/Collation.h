#pragma once

/// @file Collation.h
/// The order in which people expect names.

#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Natural order: letters before case and accents, runs of digits by their value (file2 < file10;
/// those of more than 254 digits in pieces), punctuation before digits before letters, a prefix
/// first, lower case before upper. Where that makes no difference shorter runs of digits come first
/// (1 < 01), then code points decide.
///
/// By the rules of setCollationLocale(), at first the root locale's; never by the process locale.
/// Texts are UTF-8; what is not reads as U+FFFD. Any thread.
/// @return below, at or above 0; 0 for identical texts alone
[[nodiscard]] TQ_EXPORT int localizedStandardCompare(std::string_view a, std::string_view b);

/// Names the locale whose rules hold from now on, such as "sv" or "de@collation=phonebook"; empty
/// for the root. What was sorted before does not move. Any thread, though start-up is the time.
/// @return false for a locale without data; the one before stays
TQ_EXPORT bool setCollationLocale(std::string_view locale);

}  // namespace tq
