#pragma once

#include "support/Objects.h"
#include "support/Test.h"

namespace tq::test {

/// Returns the numbers from 0 to `count - 1`.
inline Ref<Array> numbers(int count) {
  std::vector<Ref<Object>> all;
  for (int i = 0; i < count; ++i) all.push_back(Number::numberWith(i));
  return Array::arrayWithObjects(std::move(all));
}

inline std::int64_t valueOf(const Object& number) {
  return static_cast<const Number&>(number).integerValue();
}

}  // namespace tq::test
