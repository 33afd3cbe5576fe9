#include <TQFoundation/environment/Preference.h>

#include <gtest/gtest.h>

#include <support/TemporaryDirectory.h>

#include <cstdlib>
#include <limits>

#include <TQFoundation/objects/Exception.h>

namespace tq {
namespace {

enum class Unit { millimetre, point, pixel };
enum class Theme { light, dark };

}  // namespace

template <>
struct RawRepresentable<Unit> : RawCases<Unit::millimetre, Unit::point, Unit::pixel> {};

template <>
struct RawRepresentable<Theme> {
  using RawValue = std::string;
  static std::optional<Theme> fromRawValue(const std::string& raw) {
    if (raw == "light") return Theme::light;
    return raw == "dark" ? std::optional(Theme::dark) : std::nullopt;
  }
  static std::string rawValue(Theme theme) { return theme == Theme::light ? "light" : "dark"; }
};

namespace {

struct PreferenceTest : testing::Test {
  test::TemporaryDirectory directory;
  Ref<UserDefaults> defaults = UserDefaults::initWithSuiteName("suite", directory.path("here"));
};

TEST_F(PreferenceTest, ReadsLenientlyByType) {
  constexpr auto max = std::numeric_limits<std::int64_t>::max();
  const Preference<bool> flag("key", true, defaults);
  const Preference<std::int64_t> count("key", 42, defaults);
  const Preference<Unit> unit("key", Unit::pixel, defaults);
  const Preference<Theme> theme("key", Theme::dark, defaults);
  const struct {
    Ref<Object> stored;
    bool flag;
    std::int64_t count;
    Unit unit;
    Theme theme;
  } cases[] = {
      {nullptr, true, 42, Unit::pixel, Theme::dark},
      {Number::numberWith(false), false, 0, Unit::millimetre, Theme::dark},
      {Number::numberWith(1), true, 1, Unit::point, Theme::dark},
      {Number::numberWith(0.5), true, 0, Unit::pixel, Theme::dark},
      {Number::numberWith(-7), true, -7, Unit::pixel, Theme::dark},
      {Number::numberWith(1e300), true, max, Unit::pixel, Theme::dark},
      {String::of("yes"), true, 0, Unit::pixel, Theme::dark},
      {String::of(" 12abc"), true, 12, Unit::pixel, Theme::dark},
      {String::of("0"), false, 0, Unit::pixel, Theme::dark},
      {String::of("light"), false, 0, Unit::pixel, Theme::light},
      {Array::array(), false, 0, Unit::pixel, Theme::dark},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.stored != nullptr ? c.stored->description() : "absent");
    defaults->setObject(c.stored, "key");
    EXPECT_EQ(flag.value(), c.flag);
    EXPECT_EQ(count.value(), c.count);
    EXPECT_EQ(unit.value(), c.unit);
    EXPECT_EQ(theme.value(), c.theme);
  }
}

TEST_F(PreferenceTest, WritesItsTypeAndRemovesForNullopt) {
  const Preference<bool> flag("flag", false, defaults);
  flag.setValue(true);
  EXPECT_TRUE(objectCast<Number>(defaults->peekObjectForKey("flag"))->value().isBoolean());
  flag.set(std::nullopt);
  EXPECT_EQ(defaults->peekObjectForKey("flag"), nullptr);
  Preference<std::int64_t>("count", 1, defaults).set(1LL << 40);
  EXPECT_EQ(Preference<std::int64_t>("count", 1, defaults).value(), 1LL << 40);

  const Preference<Theme> theme("theme", Theme::light, defaults);
  theme.setValue(Theme::dark);
  EXPECT_EQ(theme.rawValue(), "dark");
  theme.setRawValue("neon");
  EXPECT_EQ(theme.value(), Theme::light);
  EXPECT_EQ(theme.rawValue(), "neon");
  static const std::optional<std::string>
      none;  // as a temporary, GCC 12 reports it as uninitialised
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

TEST_F(PreferenceTest, NumbersConvertExactlyOrNotAtAll) {
  const struct {
    NumberValue stored;
    std::optional<std::int64_t> integer;
    std::optional<std::uint64_t> natural;
    std::optional<double> real;
  } cases[] = {
      {(1LL << 53) + 1, (1LL << 53) + 1, (1ull << 53) + 1, {}},
      {1LL << 53, 1LL << 53, 1ull << 53, 0x1p53},
      {0x1p63, {}, 1ull << 63, 0x1p63},
      {1ull << 63, {}, 1ull << 63, 0x1p63},
      {-0x1p63, std::numeric_limits<std::int64_t>::min(), {}, -0x1p63},
      {1e19, {}, 10'000'000'000'000'000'000u, 1e19},
      {0x1p64, {}, {}, 0x1p64},
      {true, 1, 1, 1.0},
      {0.1, {}, {}, 0.1},
      {~0ull, {}, ~0ull, {}},
      {std::numeric_limits<std::int64_t>::max(),
       std::numeric_limits<std::int64_t>::max(),
       ~0ull >> 1,
       {}},
  };
  for (const auto& c : cases) {
    const Ref<Number> number = Number::numberWith(c.stored);
    EXPECT_EQ(detail::RawObject<std::int64_t>::unbox(*number), c.integer) << c.stored.text();
    EXPECT_EQ(detail::RawObject<std::uint64_t>::unbox(*number), c.natural) << c.stored.text();
    EXPECT_EQ(detail::RawObject<double>::unbox(*number), c.real) << c.stored.text();
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
}  // namespace tq
