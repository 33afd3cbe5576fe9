#pragma once

/// @file BlockHeader.h
/// The two written forms of an LZFSE block's header.

#include <cstddef>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {

/// No packed header is longer: 360 weights of 14 bits.
inline constexpr std::size_t kMostHeaderBytes = 32 + 630;

/// Reads the header that `bytes` begins with, of either form, and checks that everything in it is
/// within the format's limits. @return its size in bytes, magic word included; 0 when damaged
[[nodiscard]] std::size_t readHeader(std::span<const std::byte> bytes,
                                     BlockHeader& header) noexcept;

/// Writes the packed form, magic word included. @return its size; 0 when it does not fit
[[nodiscard]] std::size_t writeHeader(const BlockHeader& header,
                                      std::span<std::byte> room) noexcept;

}  // namespace tq::lzfse
