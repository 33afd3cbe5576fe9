#pragma once

/// @file Encoder.h
/// Chooses the literals and matches of LZFSE blocks.

#include <cstddef>
#include <span>

namespace tq::lzfse {

/// Shortest plain that LZFSE blocks are worth their headers for; shorter ones go to LZVN.
inline constexpr std::size_t kFewestBlockPlain = 4096;

/// Packs `plain` into LZFSE blocks, without an end. @return their bytes; 0 when they do not fit or
/// there is no memory
[[nodiscard]] std::size_t encodeBlocks(std::span<const std::byte> plain,
                                       std::span<std::byte> packed);

}  // namespace tq::lzfse
