#pragma once

#include "support/Objects.h"
#include "support/Test.h"

namespace tq::test {

/// Returns an array of strings of one character each. Each is a separate object.
inline Ref<Array> letters(std::string_view text) {
  std::vector<Ref<Object>> elements;
  for (const char& c : text) elements.push_back(String::of({&c, 1}));
  return Array::arrayWithObjects(std::move(elements));
}

/// Returns the joined descriptions of the elements.
inline std::string textOf(const Array& array) {
  std::string text;
  for (const Object& element : array) text += element.description();
  return text;
}

/// A comparison block.
inline bool areEqual(const Object& a, std::size_t, const Object& b, std::size_t) {
  return a.isEqual(b);
}

}  // namespace tq::test
