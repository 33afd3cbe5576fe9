#include <TQFoundation/environment/Preference.h>

#include <filesystem>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/loops/RunLoop.h>

#include "support/TemporaryDirectory.h"

namespace {

enum class Unit { millimetre, point, pixel };
enum class Theme { light, dark };

}  // namespace

template <>
struct tq::RawRepresentable<Unit> : RawCases<Unit::millimetre, Unit::point, Unit::pixel> {};

template <>
struct tq::RawRepresentable<Theme> {
  using RawValue = std::string;
  static std::optional<Theme> fromRawValue(const std::string& raw) {
    if (raw == "light") return Theme::light;
    return raw == "dark" ? std::optional(Theme::dark) : std::nullopt;
  }
  static std::string rawValue(Theme theme) { return theme == Theme::light ? "light" : "dark"; }
};

namespace {

constexpr auto kMost = std::numeric_limits<std::int64_t>::max();

struct PreferenceTest : testing::Test {
  test::TemporaryDirectory directory;
  Ref<UserDefaults> defaults = UserDefaults::initWithSuiteName("suite", directory.path("here"));
};

TEST_F(PreferenceTest, ReadsLenientlyByType) {
  const test::Rows<Ref<Object>, bool, std::int64_t, Unit, Theme> cases{
      {nullptr, true, 42, Unit::pixel, Theme::dark},
      {Number::numberWith(false), false, 0, Unit::millimetre, Theme::dark},
      {Number::numberWith(1), true, 1, Unit::point, Theme::dark},
      {Number::numberWith(0.5), true, 0, Unit::pixel, Theme::dark},
      {Number::numberWith(-7), true, -7, Unit::pixel, Theme::dark},
      {Number::numberWith(1e300), true, kMost, Unit::pixel, Theme::dark},
      {String::of("yes"), true, 0, Unit::pixel, Theme::dark},
      {String::of(" 12abc"), true, 12, Unit::pixel, Theme::dark},
      {String::of("0"), false, 0, Unit::pixel, Theme::dark},
      {String::of("light"), false, 0, Unit::pixel, Theme::light},
      {Array::array(), false, 0, Unit::pixel, Theme::dark},
  };
  for (const auto& [stored, flag, count, unit, theme] : cases) {
    SCOPED_TRACE(stored != nullptr ? stored->description() : "absent");
    defaults->setObject(stored, "key");
    EXPECT_EQ(Preference<bool>("key", true, defaults).value(), flag);
    EXPECT_EQ(Preference<std::int64_t>("key", 42, defaults).value(), count);
    EXPECT_EQ(Preference<Unit>("key", Unit::pixel, defaults).value(), unit);
    EXPECT_EQ(Preference<Theme>("key", Theme::dark, defaults).value(), theme);
  }
}

TEST_F(PreferenceTest, WritesItsTypeAndRemovesForNullopt) {
  const Preference<bool> flag("flag", false, defaults);
  flag.setValue(true);
  EXPECT_TRUE(objectCast<Number>(defaults->peekObjectForKey("flag"))->value().isBoolean());
  flag.set(std::nullopt);
  EXPECT_EQ(defaults->peekObjectForKey("flag"), nullptr);

  const Preference<Theme> theme("theme", Theme::light, defaults);
  theme.setValue(Theme::dark);
  EXPECT_EQ(theme.rawValue(), "dark");
  theme.setRawValue("neon");
  EXPECT_EQ(theme.value(), Theme::light);
  EXPECT_EQ(theme.rawValue(), "neon");
  static const std::optional<std::string> none;  // GCC 12 reports a temporary as uninitialised
  theme.setRawValue(none);
  EXPECT_EQ(theme.rawValue(), std::nullopt);

  const Ref<String> lone = String::stringWithUTF16(u"\xD800");
  defaults->setObject(lone, "theme");
  theme.setRawValue(theme.rawValue());
  EXPECT_TRUE(defaults->objectForKey("theme")->isEqual(*lone));
  EXPECT_THROW(theme.setRawValue("\xFF"), Exception);
  EXPECT_THROW(Preference<bool>("\xFF", true, defaults).setValue(true), Exception);
  EXPECT_THROW(Preference<bool>("\xFF", true, defaults).registerDefault(), Exception);
}

TEST_F(PreferenceTest, StoresPropertyListsUnchanged) {
  const Preference<Ref<Array>> list("list", nullptr, defaults);
  list.registerDefault();
  EXPECT_EQ(list.value(), nullptr);
  list.setValue(Array::arrayWithObjects({String::of("a")}));
  EXPECT_EQ(list.value()->count(), 1u);
  EXPECT_EQ(Preference<std::string>("list", "none", defaults).value(), "none");
  list.setValue(nullptr);
  EXPECT_EQ(defaults->peekObjectForKey("list"), nullptr);
  Preference<float>("real", 0, defaults).setValue(2.5f);
  EXPECT_EQ(Preference<long long>("real", 0, defaults).value(), 2);
}

TEST_F(PreferenceTest, StoresPathsAndListsOfValues) {
  using Path = std::filesystem::path;
  const std::vector<Path> paths{"/b", "/\xFF", ""};  // a file name need not be text
  const Preference<std::vector<Path>> files("files", {"/default"}, defaults);
  EXPECT_THAT(files.value(), testing::ElementsAre("/default"));
  files.setValue(paths);
  EXPECT_EQ(files.value(), paths);
  EXPECT_TRUE(objectCast<Data>(&(*files.rawValue())->objectAtIndex(1))->view() == "/\xFF");

  const Preference<std::vector<Theme>> themes("themes", {}, defaults);
  themes.setRawValue(Array::arrayWithObjects(
      {String::of("dark"), String::of("neon"), Number::numberWith(1), String::of("light")}));
  EXPECT_THAT(themes.value(), testing::ElementsAre(Theme::dark, Theme::light));
  const Preference<std::vector<Ref<String>>> texts("texts", {}, defaults);
  EXPECT_THROW(texts.setValue({nullptr}), Exception);
}

TEST_F(PreferenceTest, RegisteredDefaultsTakePrecedence) {
  const Preference<Unit> registering("registered", Unit::pixel, defaults);
  const Preference<Unit> other("registered", Unit::millimetre, defaults);
  EXPECT_EQ(other.value(), Unit::millimetre);
  registering.registerDefault();
  EXPECT_EQ(other.value(), Unit::pixel);
  other.setValue(Unit::point);
  EXPECT_EQ(registering.value(), Unit::point);
  other.set(std::nullopt);
  EXPECT_EQ(other.value(), Unit::pixel);
}

TEST_F(PreferenceTest, ObserversGetTheNewValue) {
  const Preference<Unit> unit("unit", Unit::pixel, defaults);
  const Preference<bool> flag("flag", true, defaults);
  std::vector<Unit> units;
  bool last = true;
  const auto observation = unit.observe([&](Unit value) { units.push_back(value); });
  const auto other = flag.observe([&](bool value) { last = value; });
  const auto run = [] { RunLoop::current().runFor(0.3); };
  unit.setValue(Unit::point);
  run();
  EXPECT_TRUE(last);
  flag.setValue(false);
  unit.removeValue();
  run();
  EXPECT_EQ(units, (std::vector{Unit::point, Unit::pixel}));
  EXPECT_FALSE(last);
}

TEST_F(PreferenceTest, NumbersConvertExactlyOrNotAtAll) {
  using Natural = std::optional<std::uint64_t>;
  const test::Rows<NumberValue, std::optional<std::int64_t>, Natural, std::optional<double>> cases{
      {(1LL << 53) + 1, (1LL << 53) + 1, (1ull << 53) + 1, {}},
      {1LL << 53, 1LL << 53, 1ull << 53, 0x1p53},
      {0x1p63, {}, 1ull << 63, 0x1p63},
      {1ull << 63, {}, 1ull << 63, 0x1p63},
      {-0x1p63, -kMost - 1, {}, -0x1p63},
      {1e19, {}, 10'000'000'000'000'000'000u, 1e19},
      {0x1p64, {}, {}, 0x1p64},
      {true, 1, 1, 1.0},
      {0.1, {}, {}, 0.1},
      {~0ull, {}, ~0ull, {}},
      {kMost, kMost, ~0ull >> 1, {}},
  };
  for (const auto& [stored, integer, natural, real] : cases) {
    const Ref<Number> number = Number::numberWith(stored);
    EXPECT_EQ(detail::RawObject<std::int64_t>::unbox(*number), integer) << stored.text();
    EXPECT_EQ(detail::RawObject<std::uint64_t>::unbox(*number), natural) << stored.text();
    EXPECT_EQ(detail::RawObject<double>::unbox(*number), real) << stored.text();
  }
}

TEST_F(PreferenceTest, UsesTheStandardStoreByDefault) {
  ::setenv("XDG_CONFIG_HOME", directory.path("config").c_str(), 1);
  ASSERT_TRUE(UserDefaults::setApplicationDomain("com.korvan.preference-test"));
  const Preference<bool> flag("flag");
  flag.setValue(true);
  EXPECT_EQ(&flag.userDefaults(), UserDefaults::standardUserDefaults().get());
  const auto again = UserDefaults::initWithSuiteName("com.korvan.preference-test",
                                                     directory.path("config/korvan"));
  EXPECT_TRUE(again->boolForKey("flag"));
  flag.removeValue();
}

}  // namespace
