#include <TQFoundation/objects/detail/Equality.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/detail/ContainerForm.h>
#include <TQFoundation/objects/detail/ValueNumbers.h>

// Two graphs are equal if all pairs of corresponding objects are. The order in which the pairs are
// compared does not matter, so pairs that are too deep for the stack can wait in a list.
//
// Two arrays of 50 levels, each of which contains the next one twice, have 2^50 pairs. So a pair is
// remembered, and assumed to be equal when it is found again: if it is not, its first comparison
// makes the whole result false. As equality is transitive, it is enough to remember classes of
// equal objects: n objects are joined at most n - 1 times. Remembering costs more than comparing,
// so it starts when more elements were compared than most documents have.
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

class Comparison {
 public:
  bool run(const Object& a, const Object& b) {
    bool isEqual = containersAreEqual(a, b);
    while (isEqual && !waiting_.empty()) {
      const auto [first, second] = std::move(waiting_.back());
      waiting_.pop_back();
      isEqual = containersAreEqual(*first, *second);
    }
    return isEqual;
  }

 private:
  static constexpr int kDirectDepth = 64;
  static constexpr std::size_t kRemembersAfter = std::size_t{1} << 18;

  static bool areContainers(std::span<const Ref<Object>> objects) {
    return std::ranges::any_of(objects, [](const Ref<Object>& object) {
      return containerFormOf(*object) != ContainerForm::none;
    });
  }

  bool areEqual(const Object& a, const Object& b) {
    if (&a == &b) return true;
    const ContainerForm form = containerFormOf(a);
    if (form == ContainerForm::none || form != containerFormOf(b)) return a.isEqual(b);
    if (elements_ > kRemembersAfter && !equal_.join(a, b)) return true;
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
        if (!a.numberAtIndex(i).isEqual(b.numberAtIndex(i))) return false;
      }
      return true;
    }
    for (auto at = a.begin(), other = b.begin(); at != a.end(); ++at, ++other) {
      if (!areEqual(*at, *other)) return false;
    }
    return true;
  }

  bool dictionariesAreEqual(const Dictionary& a, const Dictionary& b) {
    if (!isSameCount(a.count(), b.count())) return false;
    const bool haveOneKey = a.count() == 1;
    if (!haveOneKey && areContainers(a.keys())) return haveEqualNumbers(a, b);
    for (const Dictionary::Entry entry : a) {
      const Object* other = nullptr;
      if (!haveOneKey) {
        other = b.objectForKey(entry.key);
      } else if (areEqual(entry.key, *b.keys()[0])) {
        other = b.values()[0].get();
      }
      if (other == nullptr || !areEqual(entry.value, *other)) return false;
    }
    return true;
  }

  bool setsAreEqual(const Set& a, const Set& b) {
    if (!isSameCount(a.count(), b.count())) return false;
    if (a.count() == 1) return areEqual(*a.begin(), *b.begin());
    if (areContainers(a.allObjects())) return haveEqualNumbers(a, b);
    for (const Object& member : a) {
      if (!b.containsObject(member)) return false;
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
  EqualObjects equal_;
  std::optional<ValueNumbers> numbers_;
  std::size_t elements_ = 0;  // of the containers that were compared
  int depth_ = 0;
};

}  // namespace

bool haveEqualContents(const Object& a, const Object& b) { return Comparison().run(a, b); }

}  // namespace tq::detail
