#include <TQFoundation/environment/LRVariant.h>

#include <gtest/gtest.h>

#include <bitset>
#include <set>

#include <TQFoundation/objects/Number.h>

namespace tq {
namespace {

struct FixedVariant final : Subclass<FixedVariant>, CurrentVariantDelegate {
  static constexpr std::string_view className = "FixedVariant";
  explicit FixedVariant(std::int64_t rawValue, bool leaves = false)
      : rawValue_(rawValue), leaves_(leaves) {}
  ~FixedVariant() override { EXPECT_FALSE(isAnswering_); }
  Ref<LRVariant> currentVariant() override {
    isAnswering_ = true;
    if (leaves_) LRVariant::setDelegate(nullptr);
    isAnswering_ = false;
    return LRVariant::initWithRawValue(rawValue_);
  }

 private:
  const std::int64_t rawValue_;
  const bool leaves_;
  bool isAnswering_ = false;
};

struct Variant : testing::Test {
  ~Variant() override { LRVariant::setDelegate(nullptr); }
};

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

TEST_F(Variant, DelegateMayTakeItselfAway) {
  LRVariant::setDelegate(makeRef<FixedVariant>(4, true));
  EXPECT_EQ(LRVariant::current()->rawValue(), 4);
  EXPECT_EQ(LRVariant::current(), LRVariant::final());
}

// Beside bit sets, and beside what the operations promise of each other.
TEST_F(Variant, IsASet) {
  const auto bits = [](const Ref<LRVariant>& variant) {
    return std::bitset<64>(static_cast<std::uint64_t>(variant->rawValue()));
  };
  const auto bitsOrNone = [&](const Ref<LRVariant>& v) { return v ? bits(v) : std::bitset<64>(); };
  const std::int64_t values[] = {0, 1, 3, 6, 90, 122, 255, 1LL << 40, -1};
  for (const std::int64_t x : values) {
    for (const std::int64_t y : values) {
      SCOPED_TRACE(testing::Message() << x << " and " << y);
      const Ref<LRVariant> a = LRVariant::initWithRawValue(x);
      const Ref<LRVariant> b = LRVariant::initWithRawValue(y);
      const auto both = bits(a) & bits(b);
      const auto either = bits(a) | bits(b);
      EXPECT_EQ(bits(a->union_(*b)), either);
      EXPECT_EQ(bits(a->intersection(*b)), both);
      EXPECT_EQ(bits(a->symmetricDifference(*b)), either ^ both);
      EXPECT_EQ(bits(a->subtracting(*b)), bits(a) ^ both);
      EXPECT_EQ(a->contains(*b), both == bits(b));
      EXPECT_EQ(a->isSuperset(*b), both == bits(b));
      EXPECT_EQ(a->isSubset(*b), both == bits(a));
      EXPECT_EQ(a->isDisjoint(*b), both.none());
      EXPECT_EQ(a->isEmpty(), x == 0);
      EXPECT_EQ(a->isEqual(*b), x == y);

      Ref<LRVariant> set = a;
      const auto [inserted, member] = LRVariant::insert(set, b);
      EXPECT_EQ(bits(set), either);
      EXPECT_EQ(inserted, both != bits(b));
      EXPECT_EQ(bits(member), bits(b));
      EXPECT_EQ(bitsOrNone(LRVariant::remove(set, *b)), bits(b));
      EXPECT_EQ(LRVariant::remove(set, *b), nullptr);
      EXPECT_EQ(bitsOrNone(LRVariant::update(set = a, *b)), both);
      EXPECT_EQ(bits(set), either);
      LRVariant::formIntersection(set, *b);
      EXPECT_EQ(bits(set), bits(b));
      LRVariant::formSymmetricDifference(set, *a);
      EXPECT_EQ(bits(set), either ^ both);
      EXPECT_EQ(a->rawValue(), x);  // the object itself never changes
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
