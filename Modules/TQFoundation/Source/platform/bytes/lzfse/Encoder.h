#pragma once

/// @file Encoder.h
/// Chooses the literals and matches of LZFSE blocks.

#include <cstddef>
#include <span>

namespace tq::lzfse {

/// Shorter data is encoded as LZVN, because the header of an LZFSE block would cost too much.
inline constexpr std::size_t kFewestBlockPlain = 4096;

/// Compresses `plain` into LZFSE blocks, without the end mark. @return their size in bytes; 0 if
/// they do not fit or memory is exhausted
[[nodiscard]] std::size_t encodeBlocks(std::span<const std::byte> plain,
                                       std::span<std::byte> packed);

}  // namespace tq::lzfse
