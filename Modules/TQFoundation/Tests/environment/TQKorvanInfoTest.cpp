#include <TQFoundation/environment/TQKorvanInfo.h>

#include <gtest/gtest.h>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>

namespace tq {
namespace {

TEST(KorvanInfo, AnswersWhatTheHostSaidUnlessOverridden) {
  EXPECT_EQ(TQKorvanInfo::name(), "");
  EXPECT_EQ(TQKorvanInfo::documentVersion(), 0);
  EXPECT_EQ(TQKorvanInfo::variant(), LRVariant::final());
  TQKorvanInfo::setInfoDictionary(
      *Dictionary::dictionaryWithEntries({{TQKorvanInfoNameKey, String::of("Korvan")},
                                          {TQKorvanInfoBuildKey, Number::numberWith(2175)},
                                          {TQKorvanInfoVersionKey, Array::array()},
                                          {TQKorvanInfoDocumentVersionKey, String::of("41")},
                                          {TQKorvanInfoPasteboardVersionKey, Number::numberWith(3)},
                                          {TQKorvanInfoVariantKey, String::of("PrivateBeta")}}));
  EXPECT_EQ(TQKorvanInfo::name(), "Korvan");
  EXPECT_EQ(TQKorvanInfo::build(), "2175");
  EXPECT_EQ(TQKorvanInfo::version(), "");
  EXPECT_EQ(TQKorvanInfo::documentVersion(), 41);
  EXPECT_EQ(TQKorvanInfo::pasteboardVersion(), 3);
  EXPECT_EQ(TQKorvanInfo::variant(), LRVariant::privateBeta());
  {
    const TQKorvanInfo::Override newer(TQKorvanInfoDocumentVersionKey, Number::numberWith(42));
    const TQKorvanInfo::Override unnamed(TQKorvanInfoNameKey, nullptr);
    EXPECT_EQ(TQKorvanInfo::name(), "");
    EXPECT_EQ(TQKorvanInfo::documentVersion(), 42);
  }
  EXPECT_EQ(TQKorvanInfo::documentVersion(), 41);

  TQKorvanInfo::installVariantDelegate();
  EXPECT_EQ(LRVariant::current(), LRVariant::privateBeta());
  const TQKorvanInfo::Override variant(TQKorvanInfoVariantKey, String::of("Nonsense"));
  EXPECT_EQ(LRVariant::current(), LRVariant::final());
  LRVariant::setDelegate(nullptr);
  TQKorvanInfo::setInfoDictionary(*Dictionary::dictionary());
}

TEST(KorvanInfo, NamesEveryVariant) {
  const std::pair<const char*, std::int64_t> cases[] = {{"none", 0},     {"Final", 1},
                                                        {"XCODE", 2},    {"beta", 4},
                                                        {"internal", 8}, {"experimental", 16},
                                                        {"private", 32}, {"testing", 64},
                                                        {"all", 255},    {"featurepreview", 128},
                                                        {"inHouse", 90}, {"privateBeta", 122}};
  for (const auto& [name, rawValue] : cases) {
    const Ref<LRVariant> variant = TQKorvanInfo::variantNamed(name);
    EXPECT_EQ(variant->rawValue(), rawValue) << name;
    EXPECT_EQ(TQKorvanInfo::variantNamed(name), variant);  // members are single objects
  }
  EXPECT_EQ(TQKorvanInfo::variantNamed("betas"), nullptr);
}

}  // namespace
}  // namespace tq
