#include <TQFoundation/objects/Object.h>

#include <gtest/gtest.h>

#include <stdexcept>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Null.h>

namespace tq {
namespace {

struct Counted : Subclass<Counted> {
  static constexpr std::string_view className = "Counted";
  explicit Counted(int& alive, Ref<Object> next = nullptr) : alive_(alive), next_(std::move(next)) {
    ++alive_;
  }
  ~Counted() override { --alive_; }

 private:
  int& alive_;
  Ref<Object> next_;
};

struct Throwing final : Subclass<Throwing> {
  static constexpr std::string_view className = "Throwing";
  explicit Throwing(Ref<Object> held) : held_(std::move(held)) { throw std::runtime_error("no"); }

 private:
  Ref<Object> held_;
};

TEST(Ref, CountsItsHolders) {
  int alive = 0;
  Ref<Counted> a = makeRef<Counted>(alive);
  const Ref<Object> b = a;
  EXPECT_EQ(a->referenceCount(), 2u);
  EXPECT_EQ(a, refCast<Counted>(b));
  auto& same = a;
  a = same;
  a = std::move(same);
  EXPECT_EQ(b->referenceCount(), 2u);
  Counted* leaked = a.leak();
  EXPECT_FALSE(a);
  a = Ref<Counted>::adopt(leaked);
  EXPECT_EQ(share(*leaked)->referenceCount(), 3u);
  a = nullptr;
  EXPECT_EQ(alive, 1);
  EXPECT_FALSE(refCast<Null>(b));
}

TEST(Ref, LeaksNothingWhenAConstructorThrows) {
  int alive = 0;
  EXPECT_THROW((void)makeRef<Throwing>(makeRef<Counted>(alive)), std::runtime_error);
  EXPECT_EQ(alive, 0);
}

TEST(Object, ReleasesAMillionInAChain) {
  int alive = 0;
  Ref<Object> chain;
  for (int i = 0; i < 1'000'000; ++i) chain = makeRef<Counted>(alive, std::move(chain));
  EXPECT_EQ(alive, 1'000'000);
  chain = nullptr;
  EXPECT_EQ(alive, 0);
}

// Destruction is deferred inside each kind of container, for one of several elements.
TEST(Object, ReleasesDeepNestsOfOneContainer) {
  int alive = 0;
  Ref<Object> arrays = makeRef<Counted>(alive);
  Ref<Object> growing = makeRef<Counted>(alive);
  Ref<Object> dictionaries = makeRef<Counted>(alive);
  for (int i = 0; i < 1000; ++i) {
    arrays = Array::arrayWithObjects({makeRef<Counted>(alive), std::move(arrays)});
    dictionaries = Dictionary::dictionaryWithEntries(
        {{"a", makeRef<Counted>(alive)}, {"k", std::move(dictionaries)}});
    const Ref<MutableArray> array = MutableArray::array();
    array->addObject(makeRef<Counted>(alive));
    array->addObject(std::move(growing));
    growing = array;
  }
  arrays = growing = dictionaries = nullptr;
  EXPECT_EQ(alive, 0);
}

TEST(Object, ReleasesAMillionNestedContainers) {
  int alive = 0;
  Ref<Object> nest = makeRef<Counted>(alive);
  for (int i = 0; i < 250'000; ++i) {
    nest = Array::arrayWithObjects({std::move(nest), makeRef<Counted>(alive)});
    nest = Dictionary::dictionaryWithEntries({{"k", std::move(nest)}});
    const Ref<MutableArray> growing = MutableArray::array();
    growing->addObject(std::move(nest));
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    dictionary->setObject(growing, "k");
    nest = dictionary;
  }
  EXPECT_FALSE(nest->description().empty());  // limited in depth
  nest = nullptr;
  EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace tq
