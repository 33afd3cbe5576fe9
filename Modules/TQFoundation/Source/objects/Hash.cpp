#include <TQFoundation/objects/Hash.h>

#include <bit>
#include <cmath>
#include <random>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/TextWords.h>

namespace tq::detail {
namespace {

/// Created once per process.
std::uint64_t secret() noexcept {
  static const std::uint64_t drawn = [] {
    std::random_device random;
    return std::uint64_t{random()} << 32 | random() | 1;
  }();
  return drawn;
}

constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15u;

__extension__ using Wide = unsigned __int128;

/// Combines both halves of the 128-bit product.
std::uint64_t folded(std::uint64_t a, std::uint64_t b) noexcept {
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace

std::size_t hashOfBytes(std::string_view bytes) noexcept {
  const std::uint64_t key = secret();
  std::uint64_t hash = key ^ (bytes.size() * kGolden);
  const auto take = [&](std::uint64_t word) { hash = folded(hash ^ word, key) + word; };
  for (; bytes.size() > 8; bytes.remove_prefix(8)) {
    take(loadedWord<std::uint64_t>(bytes.data()));
  }
  if (!bytes.empty()) take(packedWord(bytes));
  return folded(hash, kGolden);
}

std::size_t hashOfWord(std::uint64_t word) noexcept {
  const std::uint64_t key = secret();
  return folded(folded(word ^ key, key) + word, kGolden);
}

std::size_t hashOfDouble(double value) noexcept {
  if (std::isnan(value)) return hashOfWord(0x7FF8);
  return hashOfWord(std::bit_cast<std::uint64_t>(value + 0.0));  // -0 + 0 is 0
}

std::size_t hashOfElement(const Object& element) {
  const auto ofContainer = [&](std::size_t count) {
    return hashJoined(static_cast<std::size_t>(element.kind()), hashOfWord(count));
  };
  if (element.kind() == ObjectKind::array) {
    return ofContainer(static_cast<const Array&>(element).count());
  }
  if (element.kind() == ObjectKind::dictionary) {
    return ofContainer(static_cast<const Dictionary&>(element).count());
  }
  const auto* set = objectCast<Set>(&element);
  return set != nullptr ? ofContainer(set->count()) : element.hash();
}

}  // namespace tq::detail
