#include <TQFoundation/platform/bytes/lzfse/LZVN.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/platform/bytes/lzfse/MatchFinder.h>

namespace tq::lzfse {
namespace {

constexpr std::size_t kShortestMatch = 3;
constexpr std::size_t kShortCount = 15;  // within the opcode
constexpr std::size_t kMostCount = 271;  // with another byte
constexpr std::size_t kMostWaiting = 400;
constexpr std::size_t kTail = 8;

constexpr unsigned kLiteralForm = 0xe0;
constexpr unsigned kMatchForm = 0xf0;
constexpr unsigned kMediumForm = 0xa0;
constexpr unsigned kPreviousForm = 6;
constexpr unsigned kLargeForm = 7;
constexpr std::size_t kSmallDistances = 1536;
constexpr std::size_t kMostMediumLength = 34;
constexpr std::array<std::byte, 8> kEnd = {std::byte{6}};

/// Writes opcodes. Those that do not fit are dropped, and finish() returns 0.
class OpcodeWriter {
 public:
  explicit OpcodeWriter(std::span<std::byte> room) noexcept : room_(room), size_(room.size()) {}

  /// Literals alone.
  void literals(std::span<const std::byte> run) noexcept {
    while (!run.empty()) {
      const std::size_t part = std::min(run.size(), kMostCount);
      count(kLiteralForm, part);
      bytes(run.first(part));
      run = run.subspan(part);
    }
  }

  /// At most three of the literals are written into the opcode of the match.
  void match(std::span<const std::byte> run, std::size_t length, std::size_t distance) noexcept {
    if (run.size() > 3) {
      const std::size_t alone = run.size() <= kShortCount ? run.size() : aloneOf(run.size());
      literals(run.first(alone));
      run = run.subspan(alone);
    }
    if (distance != previous_ || !run.empty()) length -= opener(run, length, distance);
    previous_ = distance;
    for (; length > 0; length -= std::min(length, kMostCount)) {
      count(kMatchForm, std::min(length, kMostCount));
    }
  }

  /// @return the number of bytes written; 0 if they did not fit
  [[nodiscard]] std::size_t finish() noexcept {
    bytes(kEnd);
    return overflowed_ ? 0 : size_ - room_.size();
  }

  [[nodiscard]] std::size_t previousDistance() const noexcept { return previous_; }

 private:
  /// Splits a long run so that the rest fits into the opcode of the match, or takes another.
  static std::size_t aloneOf(std::size_t run) noexcept {
    const std::size_t rest = run % kMostCount;
    return rest <= 3 ? run - rest : run;
  }

  /// Writes the literals and the first bytes of the match. @return how many bytes of the match
  std::size_t opener(std::span<const std::byte> run, std::size_t length,
                     std::size_t distance) noexcept {
    const std::size_t part = std::min(length, 10 - 2 * run.size());
    const auto form = static_cast<unsigned>(run.size() << 6 | (part - kShortestMatch) << 3);
    const auto d = static_cast<unsigned>(distance);
    std::size_t covered = part;
    if (distance == previous_) {
      byte(form | kPreviousForm);
    } else if (distance < kSmallDistances) {
      byte(form | d >> 8);
      byte(d);
    } else if (part == length || length > kMostMediumLength) {
      byte(form | kLargeForm);
      byte(d);
      byte(d >> 8);
    } else {
      static_assert(kMostLZVNPlain < 16384);  // this form holds shorter distances only
      const auto more = static_cast<unsigned>(length - kShortestMatch);
      byte(kMediumForm | static_cast<unsigned>(run.size()) << 3 | more >> 2);
      byte(d << 2 | (more & 3));
      byte(d >> 6);
      covered = length;
    }
    bytes(run);
    return covered;
  }

  void count(unsigned form, std::size_t number) noexcept {
    if (number <= kShortCount) return byte(form | static_cast<unsigned>(number));
    byte(form);
    byte(static_cast<unsigned>(number - kShortCount - 1));
  }

  void byte(unsigned value) noexcept {
    const std::byte one[] = {static_cast<std::byte>(value & 0xff)};
    bytes(one);
  }

  void bytes(std::span<const std::byte> values) noexcept {
    if (values.size() > room_.size()) {
      overflowed_ = true;
      room_ = {};
      return;
    }
    std::copy(values.begin(), values.end(), room_.begin());
    room_ = room_.subspan(values.size());
  }

  std::span<std::byte> room_;
  std::size_t size_;
  std::size_t previous_ = 0;
  bool overflowed_ = false;
};

/// A hash table of positions by their three bytes. An empty entry is position 0, which is harmless.
class ShortFinder {
 public:
  explicit ShortFinder(std::span<const std::byte> plain) noexcept : plain_(plain) {}

  /// Returns the match at `place` that saves most bytes. It may begin as early as `earliest`.
  [[nodiscard]] Match find(std::size_t place, std::size_t earliest, std::size_t previous) const {
    Match best;
    if (previous != 0) improve(best, place, previous, earliest, previous);
    for (const std::uint16_t earlier : setOf(place)) {
      if (earlier < place) improve(best, place, place - earlier, earliest, previous);
    }
    return best;
  }

  void record(std::size_t place) noexcept {
    auto& set = sets_[hash(place)];
    std::copy_backward(set.begin(), set.end() - 1, set.end());
    set.front() = static_cast<std::uint16_t>(place);
  }

  /// Returns the bytes that a match saves: its length minus that of its opcode.
  static std::size_t gain(const Match& match, std::size_t previous) noexcept {
    if (match.length == 0) return 0;
    if (match.distance == previous) return match.length - 1;
    return match.length - (match.distance < kSmallDistances ? 2 : 3);
  }

 private:
  static constexpr unsigned kSetBits = 11;
  using Set = std::array<std::uint16_t, 4>;

  [[nodiscard]] std::size_t hash(std::size_t place) const noexcept {
    const std::uint32_t three = load<std::uint32_t>(plain_.data() + place) << 8;
    return three * 2654435761u >> (32 - kSetBits);
  }
  [[nodiscard]] const Set& setOf(std::size_t place) const noexcept { return sets_[hash(place)]; }

  void improve(Match& best, std::size_t place, std::size_t distance, std::size_t earliest,
               std::size_t previous) const noexcept {
    const std::byte* const here = plain_.data() + place;
    const std::size_t length = commonLength(here, here - distance, plain_.size() - place);
    if (length < kShortestMatch) return;
    const Match found = extendedBackwards({place, length, distance}, plain_.data(), earliest);
    const std::size_t saved = gain(found, previous);
    const std::size_t bestSaved = gain(best, previous);
    if (saved > bestSaved || (saved == bestSaved && found.end() > best.end() + 1)) best = found;
  }

  std::span<const std::byte> plain_;
  std::array<Set, std::size_t{1} << kSetBits> sets_{};
};

}  // namespace

// As in the encoder of LZFSE blocks, a match is held until the next one is known. The better one is
// the one that saves more bytes, since opcodes differ in length.
std::size_t encodeLZVN(std::span<const std::byte> plain, std::span<std::byte> opcodes) {
  TQ_ASSERT(plain.size() <= kMostLZVNPlain);
  const std::unique_ptr<ShortFinder> finder(new (std::nothrow) ShortFinder(plain));
  if (finder == nullptr) return 0;
  OpcodeWriter writer(opcodes);
  std::size_t taken = 0;
  Match held;
  const auto take = [&](const Match& match) {
    writer.match(plain.subspan(taken, match.start - taken), match.length, match.distance);
    taken = match.end();
  };
  for (std::size_t place = 0; place + kTail < plain.size(); ++place) {
    if (place >= taken) {
      const std::size_t previous = writer.previousDistance();
      const Match found = finder->find(place, taken, previous);
      if (found.length == 0) {
        if (place - taken >= kMostWaiting && held.length > 0) take(std::exchange(held, {}));
      } else if (held.length == 0) {
        held = found;
      } else if (held.end() <= found.start) {
        take(std::exchange(held, found));
      } else {
        const bool later = ShortFinder::gain(found, previous) > ShortFinder::gain(held, previous);
        take(later ? found : held);
        held = {};
      }
    }
    finder->record(place);
  }
  if (held.length > 0) take(held);
  writer.literals(plain.subspan(taken));
  return writer.finish();
}

}  // namespace tq::lzfse
