#include <TQFoundation/comparison/detail/SnakeLevels.h>

namespace tq::detail {

SnakeLevels::Snake SnakeLevels::snake(std::size_t edits, std::int64_t diagonal) const noexcept {
  constexpr std::uint64_t kAllFollowed = 0xAAAAAAAAAAAAAAAA;  // bit 1 of every code
  const Level& level = levels_[edits - 1];
  const auto at = static_cast<std::size_t>((diagonal - level.lowest) / 2);
  const std::uint64_t* const word = &codes_[level.firstWord + at / kSnakesPerWord];
  const auto shift = 2 * (at % kSnakesPerWord);
  const std::uint64_t code = *word >> shift;
  if ((code & kFollowed) == 0) return {(code & kDown) != 0, 0};

  std::size_t before = level.firstLength;
  for (const std::uint64_t* w = &codes_[level.firstWord]; w != word; ++w) {
    before += static_cast<std::size_t>(std::popcount(*w & kAllFollowed));
  }
  const std::uint64_t lower = *word & ((std::uint64_t{1} << shift) - 1) & kAllFollowed;
  before += static_cast<std::size_t>(std::popcount(lower));
  return {(code & kDown) != 0, lengths_[before]};
}

}  // namespace tq::detail
