#include "support/FailingAllocations.h"
#include "support/Objects.h"

namespace {

/// Calls `change`. If it fails, checks that the collection is unchanged and rethrows.
template <class Collection, class Change>
void allOrNothing(Collection& collection, Change change) {
  const Ref<Object> before = collection.copy();
  try {
    change();
  } catch (const std::bad_alloc&) {
    EXPECT_TRUE(collection.isEqual(*before));
    throw;
  }
}

TEST(CollectionsFault, ArraysChangeCompletelyOrNotAtAll) {
  test::failEachAllocation([] {
    const Ref<MutableArray> array = MutableArray::array();
    for (int i = 0; i < 6; ++i) {
      allOrNothing(*array, [&] { array->addObject(String::of(std::to_string(i))); });
      allOrNothing(*array, [&] { array->insertObject(String::of("front"), 0); });
    }
    allOrNothing(*array, [&] { array->reserve(100); });
    return array->count() == 12;
  });
}

// Enough entries for a hash index.
TEST(CollectionsFault, DictionariesChangeCompletelyOrNotAtAll) {
  test::failEachAllocation([] {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    const Ref<String> value = String::of("value");
    for (int i = 0; i < 20; ++i) {
      allOrNothing(*dictionary, [&] { dictionary->setObject(value, std::to_string(i)); });
    }
    for (const char* key : {"3", "19", "0"}) {
      allOrNothing(*dictionary, [&] { dictionary->removeObjectForKey(*String::of(key)); });
    }
    allOrNothing(*dictionary, [&] { dictionary->removeAllObjects(); });
    return dictionary->count() == 0;
  });
}

TEST(CollectionsFault, NewObjectsAreComplete) {
  const Ref<Array> words = Array::arrayWithObjects({String::of("ein"), String::of("zwei")});
  const double numbers[] = {1, 2, 3};
  test::failEachAllocation([&] {
    const Ref<Array> packed = Array::arrayWithNumbers(numbers);
    const Ref<Array> nested = Array::arrayWithObjects({words, Ref<Object>(packed)});
    return &packed->objectAtIndex(2) == &packed->objectAtIndex(2) &&
           Set::setWithObjects(words->objects())->containsObject(words->objectAtIndex(1)) &&
           nested->description() == "((ein, zwei), (1, 2, 3))";
  });
}

}  // namespace
