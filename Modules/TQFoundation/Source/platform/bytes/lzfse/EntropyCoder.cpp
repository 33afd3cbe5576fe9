#include <TQFoundation/platform/bytes/lzfse/EntropyCoder.h>

namespace tq::lzfse {
namespace {

/// Subtracts `excess` from the weights: an eighth of each, then a quarter, a half, all but 1.
void shrink(std::span<std::uint16_t> weights, std::uint32_t excess) noexcept {
  for (int shift = 3; shift >= 0; --shift) {
    for (std::uint16_t& weight : weights) {
      if (weight <= 1) continue;
      const std::uint32_t taken = std::min((weight - 1u) >> shift, excess);
      weight = static_cast<std::uint16_t>(weight - taken);
      excess -= taken;
      if (excess == 0) return;
    }
  }
}

}  // namespace

void weightsFromCounts(std::span<const std::uint32_t> counts, unsigned stateBits,
                       std::span<std::uint16_t> weights) noexcept {
  std::uint64_t total = 0;
  for (const std::uint32_t count : counts) total += count;
  const std::uint64_t step = total > 0 ? (std::uint64_t{1} << 31) / total : 0;
  const unsigned shift = 30 - stateBits;

  // Rounded shares, each at least 1.
  std::int32_t rest = 1 << stateBits;
  std::size_t heaviest = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    auto weight = static_cast<std::uint16_t>(((counts[i] * step >> shift) + 1) >> 1);
    if (weight == 0 && counts[i] > 0) weight = 1;
    weights[i] = weight;
    rest -= weight;
    if (weight > weights[heaviest]) heaviest = i;
  }
  // The most frequent symbol takes a small difference; all share a large one.
  if (-rest < weights[heaviest] / 4 || rest >= 0) {
    weights[heaviest] = static_cast<std::uint16_t>(weights[heaviest] + rest);
  } else {
    shrink(weights, static_cast<std::uint32_t>(-rest));
  }
}

}  // namespace tq::lzfse
