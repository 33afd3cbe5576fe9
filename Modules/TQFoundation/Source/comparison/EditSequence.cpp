#include <TQFoundation/comparison/EditSequence.h>

#include <algorithm>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Exception.h>

namespace tq {
namespace {

using Elements = std::vector<Ref<Object>>;
using Edits = std::vector<Ref<const TQComparisonArrayChange>>;  // isEqual() may release others

/// The two kinds of changes, both in ascending order of index.
struct SortedEdits {
  Edits removals;
  Edits insertions;
};

[[noreturn]] void raise(const std::string& reason) {
  throw Exception(InvalidArgumentException, "The edit sequence does not fit: " + reason);
}

SortedEdits sortedEdits(std::span<const Ref<TQComparisonArrayChange>> changes) {
  SortedEdits edits;
  for (const Ref<TQComparisonArrayChange>& change : changes) {
    if (!change || change->object() == nullptr) raise("a change or its object is null.");
    if (change->isRemoval() && !edits.insertions.empty()) raise("a removal follows an insertion.");
    (change->isRemoval() ? edits.removals : edits.insertions).push_back(change);
  }
  std::ranges::reverse(edits.removals);
  return edits;
}

/// Returns `before` without `removed` and with `added`. An edit is used when its index is reached,
/// so edits that are out of range or out of order are left over.
Elements edited(const Elements& before, const Edits& removed, const Edits& added) {
  Elements after;
  after.reserve(before.size() + added.size());
  auto toRemove = removed.begin();
  auto toAdd = added.begin();
  for (auto element = before.begin();;) {
    const auto index = static_cast<std::size_t>(element - before.begin());
    if (toAdd != added.end() && (*toAdd)->index() == after.size()) {
      after.emplace_back((*toAdd++)->object());
    } else if (element == before.end()) {
      break;
    } else if (toRemove == removed.end() || (*toRemove)->index() != index) {
      after.push_back(*element++);
    } else {
      const Object* const expected = (*toRemove++)->object();
      if (element->get() != expected && !(*element)->isEqual(*expected)) {
        raise("the element at index " + std::to_string(index) + " is another one.");
      }
      ++element;
    }
  }
  if (toRemove != removed.end() || toAdd != added.end()) {
    const auto& left = toRemove != removed.end() ? *toRemove : *toAdd;
    raise("the index " + std::to_string(left->index()) + " is out of range or out of order.");
  }
  return after;
}

void edit(MutableArray& array, const Edits& removed, const Edits& added) {
  if (removed.empty() && added.empty()) return;
  const auto held = share(array);  // isEqual() may release it
  // Holds the removed elements until the array is complete: their destructors may look at it.
  const Elements before(array.objects().begin(), array.objects().end());
  Elements after = edited(before, removed, added);
  if (!std::ranges::equal(array.objects(), before)) raise("isEqual() has changed the array.");
  array.reserve(after.size());  // from here on, nothing fails
  const std::size_t kept = std::min(before.size(), after.size());
  for (std::size_t i = 0; i < kept; ++i) array.replaceObjectAtIndex(i, std::move(after[i]));
  for (std::size_t i = kept; i < after.size(); ++i) array.addObject(std::move(after[i]));
  for (std::size_t i = before.size(); i > kept; --i) array.removeObjectAtIndex(i - 1);
}

}  // namespace

void applyEditSequence(MutableArray& array, std::span<const Ref<TQComparisonArrayChange>> changes) {
  const SortedEdits edits = sortedEdits(changes);
  edit(array, edits.removals, edits.insertions);
}

void revertEditSequence(MutableArray& array,
                        std::span<const Ref<TQComparisonArrayChange>> changes) {
  const SortedEdits edits = sortedEdits(changes);
  edit(array, edits.insertions, edits.removals);
}

}  // namespace tq
