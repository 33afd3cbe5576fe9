#pragma once

/// @file BlockEncoder.h
/// Encodes literals and matches as LZFSE blocks.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {

/// Collects triples and writes a block when the next ones might not fit into it: about 160 KB.
class BlockEncoder {
 public:
  explicit BlockEncoder(std::span<std::byte> room) noexcept : room_(room) {}

  /// Adds `literals`, then a match of `length` bytes from `distance` bytes back. Long runs and
  /// matches are split into triples; a match of 100 triples and about 3000 literals fit into any
  /// block.
  /// @return false if the output is full
  [[nodiscard]] bool add(std::span<const std::byte> literals, std::size_t length,
                         std::size_t distance) noexcept;

  /// Writes the remaining triples, if any, as a block. @return false if the output is full
  [[nodiscard]] bool finish() noexcept;

  /// Average number of bits for a literal of the latest block; 8 before the first block, or if
  /// there were too few literals.
  [[nodiscard]] double literalBits() const noexcept { return literalBits_; }

  /// Returns the unused output after the blocks written so far.
  [[nodiscard]] std::span<std::byte> room() const noexcept { return room_; }

 private:
  static constexpr double kAnyLiteralBits = 8;
  static constexpr std::size_t kTellingShare =
      20;  // at least one literal for each so many plain bytes

  struct Triple {
    std::uint16_t run;
    std::uint16_t length;
    std::uint32_t distance;
  };

  void push(std::size_t run, std::size_t length, std::size_t distance) noexcept;
  void useRepeatedDistances() noexcept;
  [[nodiscard]] bool writeBlock() noexcept;
  [[nodiscard]] bool writeLiterals(std::span<std::byte>& room, BlockHeader& header) const noexcept;
  [[nodiscard]] bool writeTriples(std::span<std::byte>& room, BlockHeader& header) const noexcept;
  [[nodiscard]] Weights weights() const noexcept;

  std::span<std::byte> room_;
  double literalBits_ = kAnyLiteralBits;
  std::size_t plainSize_ = 0;
  std::size_t literalCount_ = 0;
  std::size_t tripleCount_ = 0;
  std::array<std::byte, kMostLiterals> literals_;
  std::array<Triple, kMostTriples> triples_;
};

}  // namespace tq::lzfse
