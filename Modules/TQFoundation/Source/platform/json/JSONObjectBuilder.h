#pragma once

/// @file JSONObjectBuilder.h
/// Makes objects of parsed JSON.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Construction.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/json/JSONDocument.h>
#include <TQFoundation/platform/json/JSONShape.h>

namespace tq::detail {

/// Makes objects of the nodes of any number of documents. Dictionaries with equal keys share the
/// keys. Arrays of numbers are packed.
class JSONObjectBuilder {
 public:
  /// Returns the node as a tree of arrays, dictionaries, strings, numbers and nulls.
  [[nodiscard]] Ref<Object> objectOf(JSONNode node);

  /// Returns a string, number or null. Not for containers.
  [[nodiscard]] static Ref<Object> scalarOf(JSONNode node);

  /// Returns a packed array, or null if the array is empty or holds something other than numbers.
  [[nodiscard]] static Ref<Array> numbersOf(JSONNode array);

  /// Returns an array of what `objectOf` returns for each element; null is left out. Not for
  /// numbersOf().
  template <class ObjectOf>
  [[nodiscard]] static Ref<Array> arrayOf(JSONNode array, const ObjectOf& objectOf) {
    const std::size_t count = array.count();
    if (count == 0) return Array::array();
    Ref<Array> objects = Construction::unfilledArray(count);
    const std::span<Ref<Object>> slots = Construction::slots(*objects);
    std::size_t filled = 0;
    for (JSONNode element = array.first(); !(element == array.end()); element = element.next()) {
      if (Ref<Object> object = objectOf(element)) slots[filled++] = std::move(object);
    }
    return filled == count ? objects : arrayOf(slots.first(filled));
  }

  /// Returns an array of `elements`, which are moved out.
  [[nodiscard]] static Ref<Array> arrayOf(std::span<Ref<Object>> elements);

  /// Returns a dictionary of the distinct keys of `shape` and `values`, one for each key, which are
  /// moved out. Null values are left out together with their keys.
  [[nodiscard]] static Ref<Dictionary> dictionaryOf(const JSONShape& shape,
                                                    std::span<Ref<Object>> values);

  /// Returns the shape of `object`, and appends the word of each of its values to `members`.
  [[nodiscard]] Ref<JSONShape> shapeOf(JSONNode object, std::vector<const std::uint64_t*>& members);

 private:
  JSONShapes shapes_;
  std::vector<std::string_view> keys_;         // of the last object; reused
  std::vector<const std::uint64_t*> members_;  // of the objects being built, innermost last
  std::vector<Ref<Object>> values_;            // likewise
};

}  // namespace tq::detail
