#pragma once

/// @file BlockHeader.h
/// The packed and the plain form of an LZFSE block's header.

#include <cstddef>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {

/// Largest size of a packed header: 360 weights of 14 bits.
inline constexpr std::size_t kMostHeaderBytes = 32 + 630;

/// Reads the header at the front of `bytes`, in either form, and checks it against the format's
/// limits. @return its size in bytes, magic word included; 0 if it is damaged
[[nodiscard]] std::size_t readHeader(std::span<const std::byte> bytes,
                                     BlockHeader& header) noexcept;

/// Writes the packed form, magic word included. @return its size; 0 if it does not fit
[[nodiscard]] std::size_t writeHeader(const BlockHeader& header,
                                      std::span<std::byte> room) noexcept;

}  // namespace tq::lzfse
