#include <bitset>

#include <TQFoundation/environment/LRVariant.h>
#include <TQFoundation/environment/TQKorvanInfo.h>

#include "support/Objects.h"

namespace {

/// A delegate that may remove itself during its call.
struct FixedVariant final : Subclass<FixedVariant>, CurrentVariantDelegate {
  static constexpr std::string_view className = "FixedVariant";
  explicit FixedVariant(std::int64_t value, bool leaves = false) : value_(value), leaves_(leaves) {}
  ~FixedVariant() override { EXPECT_FALSE(isInCall_); }
  Ref<LRVariant> currentVariant() override {
    isInCall_ = true;
    if (leaves_) LRVariant::setDelegate(nullptr);
    isInCall_ = false;
    return LRVariant::initWithRawValue(value_);
  }
  const std::int64_t value_;
  const bool leaves_;
  bool isInCall_ = false;
};

struct Variant : testing::Test {
  ~Variant() override { LRVariant::setDelegate(nullptr); }
};

TEST_F(Variant, MatchesTheCurrentVariant) {
  EXPECT_EQ(LRVariant::current(), LRVariant::final());
  const test::Rows<std::int64_t, std::set<std::int64_t>, bool> cases{
      {-1, {1, 255}, false},
      {8, {8, 90, 122, 255}, true},
      {32, {32, 122, 255}, false},
      {6, {255}, false},
      {0, {0, 1, 4, 8, 32, 90, 122, 255}, true},
      {90, {90, 122, 255}, true},
      {256, {}, false},
  };
  for (const auto& [current, matching, debugs] : cases) {
    SCOPED_TRACE(current);
    LRVariant::setDelegate(nullptr);
    if (current >= 0) LRVariant::setDelegate(makeRef<FixedVariant>(current));
    for (const std::int64_t set : {0, 1, 4, 8, 32, 90, 122, 255}) {
      const Ref<LRVariant> variant = LRVariant::initWithRawValue(set);
      EXPECT_EQ(variant->matchesCurrentVariant(), matching.contains(set)) << set;
      EXPECT_EQ(variant->isDebugUIEnabled(), debugs);
    }
  }
}

TEST_F(Variant, DelegatesMayRemoveThemselves) {
  LRVariant::setDelegate(makeRef<FixedVariant>(4, true));
  EXPECT_NE(LRVariant::delegate(), nullptr);
  EXPECT_EQ(LRVariant::current()->rawValue(), 4);
  EXPECT_EQ(LRVariant::delegate(), nullptr);
  EXPECT_EQ(LRVariant::current(), LRVariant::final());
}

// Compares with std::bitset.
TEST_F(Variant, IsASet) {
  const auto bits = [](const Ref<LRVariant>& variant) {
    return std::bitset<64>(static_cast<std::uint64_t>(variant->rawValue()));
  };
  const auto bitsOrZero = [&](const Ref<LRVariant>& v) { return v ? bits(v) : std::bitset<64>(); };
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
      EXPECT_TRUE(x != y || a->hash() == b->hash());

      Ref<LRVariant> set = a;
      const auto [inserted, member] = LRVariant::insert(set, b);
      EXPECT_EQ(bits(set), either);
      EXPECT_EQ(inserted, both != bits(b));
      EXPECT_EQ(bits(member), bits(b));
      EXPECT_EQ(bitsOrZero(LRVariant::remove(set, *b)), bits(b));
      EXPECT_EQ(LRVariant::remove(set, *b), nullptr);
      EXPECT_EQ(bitsOrZero(LRVariant::update(set = a, *b)), both);
      EXPECT_EQ(bits(set), either);
      LRVariant::formIntersection(set, *b);
      EXPECT_EQ(bits(set), bits(b));
      LRVariant::formSymmetricDifference(set, *a);
      EXPECT_EQ(bits(set), either ^ both);
      EXPECT_EQ(a->rawValue(), x);  // objects never change
    }
  }
}

TEST_F(Variant, RefusesNull) {
  EXPECT_DEATH(static_cast<void>(LRVariant::initWithVariants({nullptr})), "variant != nullptr");
  using Change = void (*)(Ref<LRVariant>&, const LRVariant&);
  const Change changes[] = {
      &LRVariant::formUnion,
      &LRVariant::formIntersection,
      &LRVariant::formSymmetricDifference,
      &LRVariant::subtract,
      [](Ref<LRVariant>& set, const LRVariant&) { LRVariant::insert(set, LRVariant::beta()); },
      [](Ref<LRVariant>& set, const LRVariant& other) { LRVariant::remove(set, other); },
      [](Ref<LRVariant>& set, const LRVariant& other) { LRVariant::update(set, other); },
  };
  Ref<LRVariant> set;
  for (const Change change : changes) {
    EXPECT_DEATH(change(set, *LRVariant::beta()), "set != nullptr");
  }
  set = LRVariant::beta();
  EXPECT_DEATH(LRVariant::insert(set, nullptr), "newMember != nullptr");
}

TEST_F(Variant, DiffersFromNumbersAndHasADescription) {
  const Ref<LRVariant> six = LRVariant::initWithVariants({LRVariant::xcode(), LRVariant::beta()});
  EXPECT_FALSE(six->isEqual(*Number::numberWith(6)));
  EXPECT_TRUE(six->description().starts_with("<LRVariant: 0x"));
  EXPECT_TRUE(six->description().ends_with("> rawValue: 6"));
}

TEST(KorvanInfo, ReturnsTheEntriesOfTheHostUnlessOverridden) {
  const auto all = [] {
    return std::tuple(TQKorvanInfo::name(), TQKorvanInfo::build(), TQKorvanInfo::version(),
                      TQKorvanInfo::documentVersion(), TQKorvanInfo::pasteboardVersion(),
                      TQKorvanInfo::variant()->rawValue());
  };
  EXPECT_EQ(all(), std::tuple("", "", "", 0, 0, 1));
  TQKorvanInfo::setInfoDictionary(
      *Dictionary::dictionaryWithEntries({{TQKorvanInfoNameKey, String::of("Korvan")},
                                          {TQKorvanInfoBuildKey, Number::numberWith(2175)},
                                          {TQKorvanInfoVersionKey, Array::array()},
                                          {TQKorvanInfoDocumentVersionKey, String::of("41")},
                                          {TQKorvanInfoPasteboardVersionKey, Number::numberWith(3)},
                                          {TQKorvanInfoVariantKey, String::of("PrivateBeta")}}));
  const std::tuple entries("Korvan", "2175", "", 41, 3, 122);
  EXPECT_EQ(all(), entries);
  {
    const TQKorvanInfo::Override newer(TQKorvanInfoDocumentVersionKey, Number::numberWith(42));
    const TQKorvanInfo::Override unnamed(TQKorvanInfoNameKey, nullptr);
    EXPECT_EQ(all(), std::tuple("", "2175", "", 42, 3, 122));
  }
  EXPECT_EQ(all(), entries);

  TQKorvanInfo::installVariantDelegate();
  EXPECT_EQ(LRVariant::current(), LRVariant::privateBeta());
  const TQKorvanInfo::Override variant(TQKorvanInfoVariantKey, String::of("Nonsense"));
  EXPECT_EQ(LRVariant::current(), LRVariant::final());
  LRVariant::setDelegate(nullptr);
  TQKorvanInfo::setInfoDictionary(*Dictionary::dictionary());
}

TEST(KorvanInfo, FindsVariantsByNameIgnoringCase) {
  const test::Rows<const char*, std::int64_t> cases{
      {"none", 0},          {"Final", 1},         {"XCODE", 2},
      {"beta", 4},          {"internal", 8},      {"private", 32},
      {"experimental", 16}, {"testing", 64},      {"featurePreview", 128},
      {"inHouse", 90},      {"PrivateBeta", 122}, {"ALL", 255},
      {"betas", -1},        {"[eta", -1},         {"", -1}};
  for (const auto& [name, flags] : cases) {
    const Ref<LRVariant> found = TQKorvanInfo::variantNamed(name);
    EXPECT_EQ(found != nullptr ? found->rawValue() : -1, flags) << name;
    EXPECT_EQ(found, TQKorvanInfo::variantNamed(name)) << "the same object";
  }
}

}  // namespace
