#pragma once

/// @file BlockEncoder.h
/// Writes LZFSE blocks from literals and matches.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {

/// Collects triples and writes a block whenever the next ones might not go into it: some 160 KB.
class BlockEncoder {
 public:
  explicit BlockEncoder(std::span<std::byte> room) noexcept : room_(room) {}

  /// `literals`, then `length` bytes from `distance` bytes back. Runs and lengths beyond what a
  /// triple holds are split; a match of 100 triples and some 3000 literals go into any block.
  /// @return false when there is no room left
  [[nodiscard]] bool add(std::span<const std::byte> literals, std::size_t length,
                         std::size_t distance) noexcept;

  /// Writes the last block, if anything is left for one. @return false when there is no room
  [[nodiscard]] bool finish() noexcept;

  /// Bits that a literal of the latest block took on average; 8 before the first block, and where
  /// literals were too few to tell.
  [[nodiscard]] double literalBits() const noexcept { return literalBits_; }

  /// What is left of the room behind the blocks written so far.
  [[nodiscard]] std::span<std::byte> room() const noexcept { return room_; }

 private:
  static constexpr double kAnyLiteralBits = 8;
  static constexpr std::size_t kTellingShare = 20;  // one literal in so many plain bytes

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
