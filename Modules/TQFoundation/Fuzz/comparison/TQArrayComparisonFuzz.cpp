#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/objects/Number.h>

#include "../support/Bytes.h"

// Reads the input as two arrays of small numbers, separated by the first byte 0xFF. Checks that the
// changes, applied in order, turn the first array into the second; that moves link equal elements;
// and that an inconsistent comparator, whose results come from the rest of the input, only gets
// valid indexes.

namespace {

using namespace tq;
using fuzz::require;

Ref<Array> arrayOf(const std::vector<Ref<Object>>& elements) {
  return Array::arrayWithObjects(elements);
}

void checkApplied(const Array& olds, const Array& news, const TQArrayChanges& changes) {
  for (const auto& change : changes) {
    const Array& array = change->isRemoval() ? olds : news;
    require(&array.objectAtIndex(change->index()) == change->object());
    if (const auto partner = change->associatedChange()) {
      require(partner->associatedChange() == change);
      require(partner->isInsertion() != change->isInsertion());
      require(partner->object()->isEqual(*change->object()));
    }
  }
  const Ref<MutableArray> array = MutableArray::arrayWithArray(olds);
  applyEditSequence(*array, changes);
  require(array->isEqual(news));
  revertEditSequence(*array, changes);
  require(std::ranges::equal(array->objects(), olds.objects()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<Ref<Object>> halves[2];
  bool isSecond = false;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0xFF && !isSecond) {
      isSecond = true;
    } else {
      halves[isSecond ? 1 : 0].push_back(
          Number::numberWith(NumberValue(std::int64_t{data[i]} % 8)));
    }
  }
  const Ref<Array> olds = arrayOf(halves[0]);
  const Ref<Array> news = arrayOf(halves[1]);
  const auto changes = editSequenceTo(*olds, *news, true);
  require(changes.has_value() != olds->isEqual(*news));
  if (changes) checkApplied(*olds, *news, *changes);

  std::size_t calls = 0;
  (void)editSequenceTo(*olds, *news, true, [&](Object& a, std::size_t x, Object& b, std::size_t y) {
    require(&olds->objectAtIndex(x) == &a && &news->objectAtIndex(y) == &b);
    return data[calls++ % size] % 3 == 0;
  });
  return 0;
}
