#include <TQFoundation/objects/detail/Equality.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Construction.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/detail/ContainerForm.h>
#include <TQFoundation/objects/detail/ValueNumbers.h>

// Two graphs are equal if all pairs of corresponding objects are. The order in which the pairs are
// compared does not matter, so pairs that are too deep for the stack can wait in a list.
//
// Two arrays of 50 levels, each of which contains the next one twice, have 2^50 pairs. So a pair is
// remembered, and assumed to be equal when it is found again: if it is not, its first comparison
// makes the whole result false. Remembering costs more than comparing, so it starts when more
// elements were compared than most documents have.
//
// While equality is transitive, it is enough to remember classes of equal objects: n objects are
// joined at most n - 1 times. Only numbers that are equal by rounding are an exception. If there
// are some, the comparison starts again and remembers pairs, of which there may be n^2.
//
// The members of two sets correspond to each other only after a search, whose comparisons may fail.
// If members or keys are containers themselves, the sets or dictionaries are numbered by value
// instead.

namespace tq::detail {
namespace {

/// Disjoint sets of objects, as trees of links to a representative.
class EqualObjects {
 public:
  /// Puts both objects into one set. Returns false if they are in one already.
  bool join(const Object& a, const Object& b) {
    const Object* const first = representative(&a);
    const Object* const second = representative(&b);
    if (first == second) return false;
    parents_[first] = second;
    return true;
  }

  [[nodiscard]] bool isEmpty() const noexcept { return parents_.empty(); }

 private:
  const Object* representative(const Object* object) {
    for (;;) {
      const auto found = parents_.find(object);
      if (found == parents_.end()) return object;
      const auto next = parents_.find(found->second);
      if (next == parents_.end()) return found->second;
      object = found->second = next->second;  // halves the path
    }
  }

  std::unordered_map<const Object*, const Object*> parents_;
};

/// Pairs of objects that correspond to each other.
class EqualPairs {
 public:
  /// Returns false if the pair is known already.
  bool add(const Object& a, const Object& b) { return pairs_.emplace(&a, &b).second; }

 private:
  using Pair = std::pair<const Object*, const Object*>;
  struct HashOfPair {
    std::size_t operator()(const Pair& pair) const noexcept {
      const std::hash<const Object*> hash;
      return hashJoined(hash(pair.first), hash(pair.second));
    }
  };

  std::unordered_set<Pair, HashOfPair> pairs_;
};

class Comparison {
 public:
  enum class Remembers : bool { classes, pairs };

  explicit Comparison(Remembers remembers) noexcept : remembers_(remembers) {}

  /// The result has no meaning if hasRounded().
  bool run(const Object& a, const Object& b) {
    bool isEqual = containersAreEqual(a, b);
    while (isEqual && !waiting_.empty()) {
      const auto [first, second] = std::move(waiting_.back());
      waiting_.pop_back();
      isEqual = containersAreEqual(*first, *second);
    }
    return isEqual;
  }

  /// Returns whether the comparison was given up, because classes of equal objects do not suffice.
  [[nodiscard]] bool hasRounded() const noexcept { return hasRounded_; }

 private:
  static constexpr int kDirectDepth = 64;
  static constexpr std::size_t kRemembersAfter = std::size_t{1} << 18;

  static bool areContainers(std::span<const Ref<Object>> objects) {
    return std::ranges::any_of(objects, [](const Ref<Object>& object) {
      return containerFormOf(*object) != ContainerForm::none;
    });
  }

  bool numbersAreEqual(NumberValue a, NumberValue b) {
    return a.isEqual(b) && (classes_.isEmpty() || !isRounding(a, b));
  }

  bool leavesAreEqual(const Object& a, const Object& b) {
    if (classes_.isEmpty() || a.kind() != ObjectKind::number) return a.isEqual(b);
    return a.isEqual(b) && !isRounding(static_cast<const Number&>(a).value(),
                                       static_cast<const Number&>(b).value());
  }

  bool isRounding(NumberValue a, NumberValue b) {
    if (areEqualByRounding(a, b)) hasRounded_ = true;
    return hasRounded_;
  }

  /// Returns false if the pair is remembered already.
  bool remember(const Object& a, const Object& b) {
    if (elements_ <= kRemembersAfter) return true;
    return remembers_ == Remembers::classes ? classes_.join(a, b) : pairs_.add(a, b);
  }

  bool areEqual(const Object& a, const Object& b) {
    if (&a == &b) return true;
    const ContainerForm form = containerFormOf(a);
    if (form == ContainerForm::none || form != containerFormOf(b)) return leavesAreEqual(a, b);
    if (!remember(a, b)) return true;
    if (depth_ == kDirectDepth) {
      waiting_.emplace_back(&a, &b);
      return true;
    }
    ++depth_;
    const bool isEqual = containersAreEqual(a, b);
    --depth_;
    return isEqual;
  }

  bool containersAreEqual(const Object& a, const Object& b) {
    switch (containerFormOf(a)) {
      case ContainerForm::array:
        return arraysAreEqual(static_cast<const Array&>(a), static_cast<const Array&>(b));
      case ContainerForm::dictionary:
        return dictionariesAreEqual(static_cast<const Dictionary&>(a),
                                    static_cast<const Dictionary&>(b));
      case ContainerForm::set:
        return setsAreEqual(static_cast<const Set&>(a), static_cast<const Set&>(b));
      default:
        return errorsAreEqual(static_cast<const Error&>(a), static_cast<const Error&>(b));
    }
  }

  bool isSameCount(std::size_t a, std::size_t b) {
    elements_ += 1 + a;
    return a == b;
  }

  bool arraysAreEqual(const Array& a, const Array& b) {
    if (!isSameCount(a.count(), b.count())) return false;
    if (a.isPacked() && b.isPacked()) {
      for (std::size_t i = 0; i < a.count(); ++i) {
        if (!numbersAreEqual(a.numberAtIndex(i), b.numberAtIndex(i))) return false;
      }
      return true;
    }
    for (auto at = a.begin(), other = b.begin(); at != a.end(); ++at, ++other) {
      if (!areEqual(*at, *other)) return false;
    }
    return true;
  }

  /// Returns whether `match`, which equals the key at `index`, equals no other key.
  bool isOnlyMatch(const DictionaryKeys& keys, std::size_t index, const Object& match) {
    const Object& key = *keys.keys()[index];
    if (key.kind() != ObjectKind::number) return true;
    return keys.find(match) == index && leavesAreEqual(key, match);
  }

  bool dictionariesAreEqual(const Dictionary& a, const Dictionary& b) {
    if (!isSameCount(a.count(), b.count())) return false;
    if (a.count() == 1) {
      return areEqual(*a.keys()[0], *b.keys()[0]) && areEqual(*a.values()[0], *b.values()[0]);
    }
    if (areContainers(a.keys())) return haveEqualNumbers(a, b);
    const DictionaryKeys& keys = Construction::keys(a);
    const DictionaryKeys& others = Construction::keys(b);
    const auto values = a.values();
    const auto otherValues = b.values();
    for (std::size_t i = 0; i < values.size(); ++i) {
      const auto found = others.find(*keys.keys()[i]);
      if (!found || !isOnlyMatch(keys, i, *others.keys()[*found])) return false;
      if (!areEqual(*values[i], *otherValues[*found])) return false;
    }
    return true;
  }

  bool setsAreEqual(const Set& a, const Set& b) {
    if (!isSameCount(a.count(), b.count())) return false;
    if (a.count() == 1) return areEqual(*a.begin(), *b.begin());
    if (areContainers(a.allObjects())) return haveEqualNumbers(a, b);
    const DictionaryKeys& members = Construction::keys(a);
    const DictionaryKeys& others = Construction::keys(b);
    for (std::size_t i = 0; i < members.count(); ++i) {
      const auto found = others.find(*members.keys()[i]);
      if (!found || !isOnlyMatch(members, i, *others.keys()[*found])) return false;
    }
    return true;
  }

  bool haveEqualNumbers(const Object& a, const Object& b) {
    if (!numbers_) numbers_.emplace();
    return numbers_->of(a) == numbers_->of(b);
  }

  bool errorsAreEqual(const Error& a, const Error& b) {
    ++elements_;
    return a.code() == b.code() && a.domain() == b.domain() && areEqual(a.userInfo(), b.userInfo());
  }

  std::vector<std::pair<Ref<const Object>, Ref<const Object>>> waiting_;
  const Remembers remembers_;
  EqualObjects classes_;
  EqualPairs pairs_;
  std::optional<ValueNumbers> numbers_;
  std::size_t elements_ = 0;  // of the containers that were compared
  int depth_ = 0;
  bool hasRounded_ = false;
};

}  // namespace

bool haveEqualContents(const Object& a, const Object& b) {
  Comparison comparison(Comparison::Remembers::classes);
  const bool areEqual = comparison.run(a, b);
  if (!comparison.hasRounded()) return areEqual;
  return Comparison(Comparison::Remembers::pairs).run(a, b);
}

bool areEqualByRounding(NumberValue a, NumberValue b) noexcept {
  if (a.isFloating() == b.isFloating()) return false;
  const NumberValue integer = a.isFloating() ? b : a;
  const double rounded = integer.doubleValue();
  if (integer.kind() == NumberKind::uint64) {
    return rounded >= 0x1p64 || static_cast<std::uint64_t>(rounded) != integer.bits();
  }
  return rounded >= 0x1p63 || static_cast<std::int64_t>(rounded) != integer.integerValue();
}

}  // namespace tq::detail
