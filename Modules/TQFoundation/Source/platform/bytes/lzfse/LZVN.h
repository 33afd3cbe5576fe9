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
///     1110LLLL           L literals, 1...15;  with LLLL 0, a byte follows: that many and 16
///     1111MMMM           M bytes from the previous distance, 1...15; likewise
///     00001110 00010110  nothing
///     00000110 0×7       the end
///
/// What would be L = 3 with M > 1 and the like is other opcodes, or none at all.

#include <cstddef>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Output.h>

namespace tq::lzfse {

/// Unpacks the opcodes of a block, the end opcode included, which must come out at `plainSize`
/// bytes with the last opcode byte. @return false when damaged; `output` then holds some of it
[[nodiscard]] bool decodeLZVN(std::span<const std::byte> opcodes, std::size_t plainSize,
                              Output& output) noexcept;

/// Longest plain that encodeLZVN() takes.
inline constexpr std::size_t kMostLZVNPlain = 4095;

/// Packs at most kMostLZVNPlain bytes into opcodes with an end. @return their bytes; 0 when they do
/// not fit or there is no memory
[[nodiscard]] std::size_t encodeLZVN(std::span<const std::byte> plain,
                                     std::span<std::byte> opcodes);

}  // namespace tq::lzfse
