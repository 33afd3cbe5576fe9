#pragma once

/// @file BlockDecoder.h
/// Decodes LZFSE blocks.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/EntropyCoder.h>
#include <TQFoundation/platform/bytes/lzfse/Format.h>
#include <TQFoundation/platform/bytes/lzfse/Output.h>

namespace tq::lzfse {

/// The tables and the literals of one block: about 46 KB, reused for the next block.
class BlockDecoder {
 public:
  /// Decodes the block at the front of `bytes`. @return its size in bytes; 0 if it is damaged or
  /// has more plain bytes than fit
  [[nodiscard]] std::size_t decode(std::span<const std::byte> bytes, Output& output) noexcept;

 private:
  struct LiteralState {
    std::uint8_t symbol;
    std::uint8_t bits;
    std::uint16_t base;
  };
  /// The bits of a state's transition and the extra bits of its value are read together.
  struct ValueState {
    std::uint8_t bits;
    std::uint8_t extraBits;
    std::uint16_t base;
    std::uint32_t value;
  };
  template <unsigned stateBits>
  using ValueTable = std::array<ValueState, std::size_t{1} << stateBits>;

  template <unsigned stateBits, std::size_t symbols>
  static void fillTable(ValueTable<stateBits>& table,
                        const std::array<std::uint16_t, symbols>& weights,
                        const Alphabet<symbols>& alphabet) noexcept;
  template <std::size_t states>
  static std::uint32_t popValue(const std::array<ValueState, states>& table, std::uint32_t& state,
                                BitReader& bits) noexcept;

  [[nodiscard]] bool readLiterals(const BlockHeader& header,
                                  std::span<const std::byte> payload) noexcept;
  [[nodiscard]] bool runTriples(const BlockHeader& header, std::span<const std::byte> payload,
                                Output& output) noexcept;

  ValueTable<kLengthStateBits> literalRuns_;
  ValueTable<kLengthStateBits> matchLengths_;
  ValueTable<kDistanceStateBits> distances_;
  std::array<LiteralState, std::size_t{1} << kLiteralStateBits> literalStates_;
  std::array<std::byte, kMostLiterals + Output::kStride> literals_;
};

}  // namespace tq::lzfse
