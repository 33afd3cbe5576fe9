#pragma once

/// @file NumberText.h
/// Decimal text of numbers: independent of the locale, without allocation.

#include <cstddef>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Size of the buffer that every function here needs. The texts are shorter; the rest is scratch
/// space.
inline constexpr std::size_t kNumberTextCapacity = 48;

/// Writes `value` as printf's "%.16g" does in the C locale, digit for digit: at most 16 significant
/// digits rounded half to even, no trailing zeros, an exponent of at least two digits below 1e-04
/// and from 1e+16 on. "-0" keeps its sign; infinities are "inf" and "-inf", NaN of either sign is
/// "nan".
/// @param to  buffer of kNumberTextCapacity characters; no terminator is written
/// @return the end of the text
TQ_EXPORT char* writeDouble16(char* to, double value) noexcept;

/// The same with 17 digits, "%.17g". Reading the text returns exactly the same double.
TQ_EXPORT char* writeDouble17(char* to, double value) noexcept;

/// The same with 7 digits, "%.7g".
TQ_EXPORT char* writeFloat7(char* to, float value) noexcept;

/// Writes all digits of an integer, with a minus sign if it is negative.
/// @param to buffer as above
/// @return the end of the text
TQ_EXPORT char* writeInteger(char* to, std::int64_t value) noexcept;
TQ_EXPORT char* writeUnsigned(char* to, std::uint64_t value) noexcept;

}  // namespace tq
