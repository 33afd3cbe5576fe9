#include <TQFoundation/objects/ArrayConveniences.h>

#include <algorithm>
#include <ranges>
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

/// Returns the elements for which `keep` returns true.
template <class Keep>
Ref<Array> elementsThat(const Array& array, const Keep& keep) {
  std::vector<Ref<Object>> kept;
  for (const Ref<Object>& object : array.objects()) {
    if (keep(object)) kept.push_back(object);
  }
  return arrayOf(std::move(kept));
}

}  // namespace

Ref<Array> map(const Array& array, const ArrayMapBlock& block) {
  std::vector<Ref<Object>> results;
  results.reserve(array.count());
  for (Object& object : array) results.push_back(block(object));
  return arrayOf(std::move(results));
}

Ref<Array> compactMap(const Array& array, const ArrayMapBlock& block) {
  std::vector<Ref<Object>> results;
  for (Object& object : array) {
    Ref<Object> result = block(object);
    if (!isNull(result)) results.push_back(std::move(result));
  }
  return arrayOf(std::move(results));
}

Ref<Array> flatMap(const Array& array, const std::function<Ref<Array>(Object&)>& block) {
  std::vector<Ref<Object>> results;
  for (Object& object : array) {
    if (const Ref<Array> some = block(object))
      std::ranges::copy(some->objects(), std::back_inserter(results));
  }
  return arrayOf(std::move(results));
}

Ref<Array> filter(const Array& array, const ArrayPredicate& predicate) {
  return elementsThat(array, [&](const Ref<Object>& object) { return predicate(*object); });
}

Object* firstObjectPassing(const Array& array, const ArrayPredicate& predicate) {
  for (Object& object : array) {
    if (predicate(object)) return &object;
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
  return std::ranges::any_of(array, [&](const Object& each) { return each.isEqual(object); });
}

}  // namespace tq
