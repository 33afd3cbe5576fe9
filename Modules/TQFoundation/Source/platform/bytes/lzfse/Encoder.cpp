#include <TQFoundation/platform/bytes/lzfse/Encoder.h>

#include <algorithm>
#include <memory>
#include <new>

#include <TQFoundation/platform/bytes/lzfse/BlockEncoder.h>
#include <TQFoundation/platform/bytes/lzfse/MatchFinder.h>

namespace tq::lzfse {
namespace {

/// Matches of this length are used at once.
constexpr std::size_t kGoodLength = 40;

/// Longest match; it fits into one block.
constexpr std::size_t kMostLength = 100 * std::size_t{kMostMatchLength};

/// The maximum number of literals that may wait for a match that begins among them.
constexpr std::size_t kMostWaiting = 8 * std::size_t{kMostLiteralRun};

/// Scans the plain data. A match is held until the next one is known, because a longer match may
/// begin a little later:
///
///     next match is long enough        → use it, drop the held one
///     next match begins after it ends  → use the held one, hold the next
///     they overlap                     → use the longer; the held one if they are equal
class Parser {
 public:
  Parser(std::span<const std::byte> plain, BlockEncoder& blocks, MatchFinder& finder) noexcept
      : plain_(plain), blocks_(blocks), finder_(finder) {}

  /// @return false if the output is full
  [[nodiscard]] bool run() noexcept {
    for (std::size_t place = 0; place < finder_.end(); ++place) {
      const Match found = finder_.findAndRecord(place);
      if (!(found.length > 0 ? consider(found) : letGo(place))) return false;
      // After a match that was used.
      const std::size_t next = std::min(taken_, finder_.end());
      while (place + 1 < next) finder_.record(++place);
    }
    if (held_.length > 0 && !take(held_)) return false;
    return takeLiterals(plain_.size() - taken_) && blocks_.finish();
  }

 private:
  [[nodiscard]] bool consider(Match found) noexcept {
    found.length = std::min(found.length, kMostLength);
    found = extendedBackwards(found, plain_.data(), taken_);
    if (found.length >= kGoodLength) return take(found);
    if (held_.length == 0) {
      held_ = found;
      return true;
    }
    if (held_.end() <= found.start) {
      if (!take(held_)) return false;
      held_ = found;
      return true;
    }
    return take(held_.length >= found.length ? held_ : found);
  }

  /// Called if there is no match at `place`.
  [[nodiscard]] bool letGo(std::size_t place) noexcept {
    if (place - taken_ <= kMostWaiting) return true;
    return held_.length > 0 ? take(held_) : takeLiterals(kMostLiteralRun);
  }

  /// Writes the match with the literals before it. No match is held afterwards.
  [[nodiscard]] bool take(Match match) noexcept {
    held_ = {};
    const auto literals = plain_.subspan(taken_, match.start - taken_);
    taken_ = match.end();
    return add(literals, match.length, match.distance);
  }

  [[nodiscard]] bool takeLiterals(std::size_t count) noexcept {
    const auto literals = plain_.subspan(taken_, count);
    taken_ += count;
    return add(literals, 0, 0);
  }

  [[nodiscard]] bool add(std::span<const std::byte> literals, std::size_t length,
                         std::size_t distance) noexcept {
    const double bits = blocks_.literalBits();
    if (!blocks_.add(literals, length, distance)) return false;
    if (bits != blocks_.literalBits()) finder_.setLiteralBits(blocks_.literalBits());
    return true;
  }

  std::span<const std::byte> plain_;
  BlockEncoder& blocks_;
  MatchFinder& finder_;
  std::size_t taken_ = 0;  // bytes before are already written
  Match held_;
};

}  // namespace

std::size_t encodeBlocks(std::span<const std::byte> plain, std::span<std::byte> packed) {
  MatchFinder finder(plain);
  const std::unique_ptr<BlockEncoder> blocks(new (std::nothrow) BlockEncoder(packed));
  if (!finder.isReady() || blocks == nullptr) return 0;
  if (!Parser(plain, *blocks, finder).run()) return 0;
  return packed.size() - blocks->room().size();
}

}  // namespace tq::lzfse
