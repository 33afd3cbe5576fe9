#include <TQFoundation/objects/ArrayConveniences.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <unordered_set>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Null.h>

namespace tq {
namespace {

bool isNull(const Ref<Object>& object) { return !object || object->kind() == ObjectKind::null; }

struct HashOfObject {
  std::size_t operator()(const Object* object) const { return object->hash(); }
};
struct EqualObjects {
  bool operator()(const Object* a, const Object* b) const { return a->isEqual(*b); }
};

Ref<Array> arrayOf(std::vector<Ref<Object>>&& objects) {
  return Array::arrayWithObjects(std::move(objects));
}

/// Returns the elements of an array, which stay what they are while functions of the host run. A
/// fixed array is its own copy.
Ref<Array> elementsOf(const Array& array) { return refCast<Array>(array.copy()); }

/// Returns the elements for which `keep` returns true.
template <class Keep>
Ref<Array> elementsThat(const Array& array, const Keep& keep) {
  const Ref<Array> elements = elementsOf(array);
  std::vector<Ref<Object>> kept;
  std::ranges::copy_if(elements->objects(), std::back_inserter(kept), keep);
  return arrayOf(std::move(kept));
}

}  // namespace

Ref<Array> Array::map(const ArrayMapBlock& block) const {
  const Ref<Array> elements = elementsOf(*this);
  std::vector<Ref<Object>> results;
  results.reserve(elements->count());
  for (Object& object : *elements) results.push_back(block(object));
  return arrayOf(std::move(results));
}

Ref<Array> Array::compactMap(const ArrayMapBlock& block) const {
  const Ref<Array> elements = elementsOf(*this);
  std::vector<Ref<Object>> results;
  for (Object& object : *elements) {
    Ref<Object> result = block(object);
    if (!isNull(result)) results.push_back(std::move(result));
  }
  return arrayOf(std::move(results));
}

Ref<Array> Array::flatMap(const std::function<Ref<Array>(Object&)>& block) const {
  const Ref<Array> elements = elementsOf(*this);
  std::vector<Ref<Object>> results;
  for (Object& object : *elements) {
    if (const Ref<Array> some = block(object))
      std::ranges::copy(some->objects(), std::back_inserter(results));
  }
  return arrayOf(std::move(results));
}

Ref<Array> Array::filter(const ArrayPredicate& predicate) const {
  return elementsThat(*this, [&](const Ref<Object>& object) { return predicate(*object); });
}

Ref<Object> firstObjectPassing(const Array& array, const ArrayPredicate& predicate) {
  const Ref<Array> elements = elementsOf(array);
  for (Object& object : *elements) {
    if (predicate(object)) return share(object);
  }
  return nullptr;
}

Ref<Array> arrayByRemovingNull(const Array& array) {
  return elementsThat(array, [](const Ref<Object>& object) { return !isNull(object); });
}

Ref<Array> arrayByRemovingObject(const Array& array, const Object& object) {
  return elementsThat(array, [&](const Ref<Object>& each) { return !each->isEqual(object); });
}

Ref<Array> arrayByRemovingDuplicates(const Array& array) {
  std::unordered_set<const Object*, HashOfObject, EqualObjects> seen;
  return elementsThat(array,
                      [&](const Ref<Object>& object) { return seen.insert(object.get()).second; });
}

Ref<Array> reversedArray(const Array& array) {
  const std::span<const Ref<Object>> objects = array.objects();
  return arrayOf(std::vector<Ref<Object>>(objects.rbegin(), objects.rend()));
}

bool containsObject(const Array& array, const Object& object) {
  return bool(firstObjectPassing(array, [&](const Object& each) { return each.isEqual(object); }));
}

}  // namespace tq
