#pragma once

/// @file JSONObjectBuilder.h
/// Parsed JSON to objects.

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/json/JSONDocument.h>
#include <TQFoundation/platform/json/JSONShape.h>

namespace tq::detail {

/// Makes objects of the nodes of one document after another. Dictionaries with the same keys share
/// them, arrays of numbers are packed.
class JSONObjectBuilder {
 public:
  /// The node as it is: containers of strings, numbers and nulls.
  [[nodiscard]] Ref<Object> objectOf(JSONNode node);

  /// A string, number or null.
  [[nodiscard]] static Ref<Object> scalarOf(JSONNode node);

  /// A packed array, or none when something else than numbers is in it or nothing at all.
  [[nodiscard]] static Ref<Array> numbersOf(JSONNode array);

  /// An array that takes over `elements`.
  [[nodiscard]] static Ref<Array> arrayOf(std::span<Ref<Object>> elements);

  /// A dictionary with a shape's distinct keys that takes over `values`, one for each. Those that
  /// are none are left out, with their keys.
  [[nodiscard]] static Ref<Dictionary> dictionaryOf(const JSONShape& shape,
                                                    std::span<Ref<Object>> values);

  /// The shape of an object, after its members' places have been put behind `members`.
  [[nodiscard]] Ref<JSONShape> shapeOf(JSONNode object, std::vector<const void*>& members);
  [[nodiscard]] Ref<JSONShape> shapeOf(std::span<const std::string_view> keys) {
    return shapes_.shapeOf(keys);
  }

 private:
  JSONShapes shapes_;
  std::vector<std::string_view> keys_;  // of the object being looked at
  std::vector<const void*> members_;    // of the objects being built, innermost last
  std::vector<Ref<Object>> values_;     // likewise
};

}  // namespace tq::detail
