#pragma once

/// @file Format.h
/// The LZFSE stream format: magic words, limits, alphabets.
///
/// A stream is a sequence of blocks, each preceded by its magic word, and the magic word of the
/// end. An LZFSE block describes its plain bytes as triples: L literals, then M bytes from D bytes
/// back. A match may refer to earlier blocks. All integers are little-endian.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::lzfse {

static_assert(std::endian::native == std::endian::little, "words are copied as they are");

template <class Integer>
[[nodiscard]] inline Integer load(const std::byte* at) noexcept {
  Integer value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <class Integer>
inline void store(std::byte* at, Integer value) noexcept {
  std::memcpy(at, &value, sizeof value);
}

inline constexpr std::uint32_t kStoredMagic = 0x2d787662;  // "bvx-"
inline constexpr std::uint32_t kPlainMagic = 0x31787662;   // "bvx1", header with plain weights
inline constexpr std::uint32_t kPackedMagic = 0x32787662;  // "bvx2", header with packed weights
inline constexpr std::uint32_t kLZVNMagic = 0x6e787662;    // "bvxn"
inline constexpr std::uint32_t kEndMagic = 0x24787662;     // "bvx$"
inline constexpr std::size_t kMagicSize = 4;
inline constexpr std::size_t kStoredHeaderSize = 8;
inline constexpr std::size_t kLZVNHeaderSize = 12;

/// Limits of one LZFSE block.
inline constexpr std::size_t kMostTriples = 10000;
inline constexpr std::size_t kMostLiterals = 40000;
inline constexpr std::uint32_t kMostLiteralRun = 315;
inline constexpr std::uint32_t kMostMatchLength = 2359;
inline constexpr std::uint32_t kMostDistance = 262139;

/// Size of a group of literals. Each literal of a group has its own coder state.
inline constexpr std::size_t kLiteralGroup = 4;

/// Zero bytes below the bits of the triples, for readers that load whole words.
inline constexpr std::size_t kTripleFiller = 8;

/// A value is coded as a symbol and its number of extra bits: base + extra.
template <std::size_t symbols>
struct Alphabet {
  std::array<std::uint8_t, symbols> extraBits{};
  std::array<std::uint32_t, symbols> base{};
};

inline constexpr std::size_t kLengthSymbols = 20;
inline constexpr std::size_t kDistanceSymbols = 64;
inline constexpr std::size_t kLiteralSymbols = 256;

inline constexpr Alphabet<kLengthSymbols> kLiteralRuns = {
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 5, 8},
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 20, 28, 60}};

inline constexpr Alphabet<kLengthSymbols> kMatchLengths = {
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 5, 8, 11},
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 24, 56, 312}};

/// Four symbols for each number of extra bits, so a symbol is the two leading digits of a distance:
/// base(4e + j) = 4 (2^e - 1) + j 2^e.
inline constexpr Alphabet<kDistanceSymbols> kDistances = [] {
  Alphabet<kDistanceSymbols> alphabet;
  for (std::uint32_t symbol = 0; symbol < kDistanceSymbols; ++symbol) {
    const std::uint32_t extra = symbol / 4;
    alphabet.extraBits[symbol] = static_cast<std::uint8_t>(extra);
    alphabet.base[symbol] = 4 * ((1u << extra) - 1) + ((symbol % 4) << extra);
  }
  return alphabet;
}();

/// Coder states of each alphabet, as powers of two.
inline constexpr unsigned kLengthStateBits = 6;
inline constexpr unsigned kDistanceStateBits = 8;
inline constexpr unsigned kLiteralStateBits = 10;

/// The number of coder states that each symbol owns. They add up to all states, or to 0 if no
/// symbol of the alphabet is coded.
struct Weights {
  std::array<std::uint16_t, kLengthSymbols> literalRun{};
  std::array<std::uint16_t, kLengthSymbols> matchLength{};
  std::array<std::uint16_t, kDistanceSymbols> distance{};
  std::array<std::uint16_t, kLiteralSymbols> literal{};
};
static_assert(sizeof(Weights) == 360 * sizeof(std::uint16_t), "one array after the other");

/// The header of an LZFSE block, in either form.
struct BlockHeader {
  std::uint32_t plainSize = 0;
  std::uint32_t literalCount = 0;  ///< rounded up to whole groups
  std::uint32_t tripleCount = 0;
  std::uint32_t literalBytes = 0;
  std::uint32_t tripleBytes = 0;
  unsigned literalUnusedBits = 0;  ///< 0...7, at the top of the payload's last byte
  unsigned tripleUnusedBits = 0;
  std::array<std::uint32_t, kLiteralGroup> literalStates{};
  std::uint32_t literalRunState = 0;
  std::uint32_t matchLengthState = 0;
  std::uint32_t distanceState = 0;
  Weights weights;
};

}  // namespace tq::lzfse
