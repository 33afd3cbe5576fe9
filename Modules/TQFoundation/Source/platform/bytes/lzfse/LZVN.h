#pragma once

/// @file LZVN.h
/// LZVN, the code for short data: opcodes of whole bytes with literals, a match, or both.
///
/// An opcode's literals follow its own bytes and come out before its match.
///
///     LLMMMDDD d         L literals, M+3 bytes from 256·D+d back, D at most 5
///     LLMMM111 d d       L literals, M+3 bytes from d back
///     LLMMM110           L literals, M+3 bytes from the previous distance
///     101LLMMM mmdddddd  L literals, 4·M+m+3 bytes from d back (16 bits: d·4+m)
///     1110LLLL           L literals, 1...15; if LLLL is 0, a byte b follows, and L = b + 16
///     1111MMMM           M bytes from the previous distance, 1...15; likewise
///     00001110 00010110  no effect
///     00000110 0×7       the end
///
/// Bit patterns that would mean, for example, L = 3 with M > 1 are other opcodes or invalid.

#include <cstddef>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Output.h>

namespace tq::lzfse {

/// Decodes the opcodes of a block. The end opcode must be the last, after exactly `plainSize`
/// bytes.
/// @return false if the block is damaged; `output` then has a part of the data
[[nodiscard]] bool decodeLZVN(std::span<const std::byte> opcodes, std::size_t plainSize,
                              Output& output) noexcept;

/// Most bytes that encodeLZVN() accepts.
inline constexpr std::size_t kMostLZVNPlain = 4095;

/// Encodes at most kMostLZVNPlain bytes as opcodes with an end. @return their size in bytes; 0 if
/// they do not fit or memory is exhausted
[[nodiscard]] std::size_t encodeLZVN(std::span<const std::byte> plain,
                                     std::span<std::byte> opcodes);

}  // namespace tq::lzfse
