#include <TQFoundation/environment/LRVariant.h>

#include <gtest/gtest.h>

#include <set>

#include <TQFoundation/objects/Number.h>

namespace tq {
namespace {

class FixedVariant final : public Subclass<FixedVariant>, public CurrentVariantDelegate {
 public:
  static constexpr std::string_view className = "FixedVariant";
  explicit FixedVariant(std::int64_t rawValue) : rawValue_(rawValue) {}
  Ref<LRVariant> currentVariant() override { return LRVariant::initWithRawValue(rawValue_); }

 private:
  std::int64_t rawValue_;
};

struct Variant : testing::Test {
  ~Variant() override { LRVariant::setDelegate(nullptr); }
};

TEST_F(Variant, MembersAreSingleObjectsOfTheirBits) {
  const struct {
    const Ref<LRVariant>& (*member)();
    std::int64_t rawValue;
  } cases[] = {
      {LRVariant::none, 0},      {LRVariant::final, 1},         {LRVariant::xcode, 2},
      {LRVariant::beta, 4},      {LRVariant::internal, 8},      {LRVariant::experimental, 16},
      {LRVariant::private_, 32}, {LRVariant::testing, 64},      {LRVariant::featurepreview, 128},
      {LRVariant::inHouse, 90},  {LRVariant::privateBeta, 122}, {LRVariant::all, 255},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.member()->rawValue(), c.rawValue);
    EXPECT_EQ(c.member(), c.member());
  }
}

TEST_F(Variant, CurrentDecidesWhatMatches) {
  EXPECT_EQ(LRVariant::current(), LRVariant::final());
  const struct {
    std::int64_t current;  // -1: no delegate
    std::set<std::int64_t> matching;
    bool debugs;
  } cases[] = {
      {-1, {1, 255}, false},
      {8, {8, 90, 122, 255}, true},
      {32, {32, 122, 255}, false},
      {6, {255}, false},
      {0, {0, 1, 4, 8, 32, 90, 122, 255}, true},
      {90, {90, 122, 255}, true},
      {256, {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.current);
    LRVariant::setDelegate(nullptr);
    if (c.current >= 0) LRVariant::setDelegate(makeRef<FixedVariant>(c.current));
    for (const std::int64_t set : {0, 1, 4, 8, 32, 90, 122, 255}) {
      const Ref<LRVariant> variant = LRVariant::initWithRawValue(set);
      EXPECT_EQ(variant->matchesCurrentVariant(), c.matching.contains(set)) << set;
      EXPECT_EQ(variant->isDebugUIEnabled(), c.debugs);
    }
  }
}

TEST_F(Variant, IsASetLikeOneOfNumbers) {
  const auto flags = [](const Ref<LRVariant>& variant) {
    std::set<int> numbers;
    for (int bit = 0; bit < 64; ++bit) {
      if ((variant->rawValue() >> bit & 1) != 0) numbers.insert(bit);
    }
    return numbers;
  };
  const auto combined = [](const std::set<int>& a, const std::set<int>& b, bool onlyA, bool both,
                           bool onlyB) {
    std::set<int> result;
    for (int bit = 0; bit < 64; ++bit) {
      const bool inA = a.contains(bit);
      const bool inB = b.contains(bit);
      if ((inA && inB && both) || (inA && !inB && onlyA) || (!inA && inB && onlyB)) {
        result.insert(bit);
      }
    }
    return result;
  };
  const std::int64_t values[] = {0, 1, 3, 6, 90, 122, 255, 1LL << 40, -1};
  for (const std::int64_t x : values) {
    for (const std::int64_t y : values) {
      SCOPED_TRACE(testing::Message() << x << " and " << y);
      const Ref<LRVariant> a = LRVariant::initWithRawValue(x);
      const Ref<LRVariant> b = LRVariant::initWithRawValue(y);
      const auto setA = flags(a);
      const auto setB = flags(b);
      const auto both = combined(setA, setB, false, true, false);
      const auto either = combined(setA, setB, true, true, true);
      const auto onlyA = combined(setA, setB, true, false, false);
      EXPECT_EQ(flags(a->union_(*b)), either);
      EXPECT_EQ(flags(LRVariant::initWithVariants({a, b})), either);
      EXPECT_EQ(flags(a->intersection(*b)), both);
      EXPECT_EQ(flags(a->symmetricDifference(*b)), combined(setA, setB, true, false, true));
      EXPECT_EQ(flags(a->subtracting(*b)), onlyA);
      EXPECT_EQ(a->contains(*b), both == setB);
      EXPECT_EQ(a->isSuperset(*b), both == setB);
      EXPECT_EQ(a->isSubset(*b), both == setA);
      EXPECT_EQ(a->isDisjoint(*b), both.empty());
      EXPECT_EQ(a->isEmpty(), setA.empty());
      EXPECT_EQ(a->isEqual(*b), setA == setB);
      if (setA == setB) {
        EXPECT_EQ(a->hash(), b->hash());
      }

      Ref<LRVariant> changed = a;
      const auto [inserted, member] = LRVariant::insert(changed, b);
      EXPECT_EQ(flags(changed), either);
      EXPECT_EQ(inserted, both != setB);
      EXPECT_EQ(flags(member), setB);
      changed = a;
      const Ref<LRVariant> removed = LRVariant::remove(changed, *b);
      EXPECT_EQ(flags(changed), onlyA);
      EXPECT_EQ(removed ? flags(removed) : std::set<int>(), both);
      EXPECT_EQ(removed == nullptr, both.empty());
      changed = a;
      const Ref<LRVariant> before = LRVariant::update(changed, *b);
      EXPECT_EQ(flags(changed), either);
      EXPECT_EQ(before == nullptr, both.empty());
      LRVariant::formIntersection(changed, *b);
      EXPECT_EQ(flags(changed), setB);
      LRVariant::formSymmetricDifference(changed, *a);
      EXPECT_EQ(flags(changed), combined(setA, setB, true, false, true));
      EXPECT_EQ(flags(a), setA);  // the object itself never changes
    }
  }
}

TEST_F(Variant, IsNoNumberAndTellsItsValue) {
  const Ref<LRVariant> six = LRVariant::initWithVariants({LRVariant::xcode(), LRVariant::beta()});
  EXPECT_FALSE(six->isEqual(*Number::numberWith(6)));
  EXPECT_TRUE(six->description().starts_with("<LRVariant: 0x"));
  EXPECT_TRUE(six->description().ends_with("> rawValue: 6"));
}

}  // namespace
}  // namespace tq
