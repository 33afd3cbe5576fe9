#include "platform/preferences/Suite.h"

#include <errno.h>
#include <pwd.h>

#include <TQFoundation/platform/log/LogChannel.h>

#include "support/FailingSystemCalls.h"
#include "support/Objects.h"
#include "support/Threads.h"

static const char* homeInUserDatabase = nullptr;  // null: there is no such user

// Replaces the C library's, also for the library.
extern "C" __attribute__((visibility("default"))) int getpwuid_r(uid_t, passwd* entry, char*,
                                                                 size_t size, passwd** user) {
  entry->pw_dir = const_cast<char*>(homeInUserDatabase);
  *user = size > 5000 && homeInUserDatabase != nullptr ? entry : nullptr;
  return size > 5000 ? 0 : ERANGE;
}

namespace {

struct UserDefaultsTest : SuiteTest {
  /// The entries of the suite alone.
  [[nodiscard]] std::size_t count() const {
    return open()->dictionaryRepresentation()->count() -
           open("none")->dictionaryRepresentation()->count();
  }
};
using UserDefaultsThreadStress = UserDefaultsTest;
using UserDefaultsLockStress = UserDefaultsTest;

Ref<Object> nest(int depth) {
  Ref<Object> object = Number::numberWith(1);
  while (depth-- > 0) object = Array::arrayWithObjects({object});
  return object;
}

TEST_F(UserDefaultsTest, KeepsEveryKindOfValueAcrossRuns) {
  const auto mixed = MutableDictionary::dictionary();
  mixed->setObject(Array::arrayWithNumbers(std::vector{1, 2.5}), "packed");
  mixed->setObject(nest(3), "ключ");
  mixed->setObject(Dictionary::dictionary(), "");
  const auto inner = MutableArray::array();
  mixed->setObject(inner, "inner");
  const Ref<Object> values[] = {Number::numberWith(true),
                                Number::numberWith(std::numeric_limits<std::int64_t>::min()),
                                Number::numberWith(~0ull),
                                Number::numberWith(1.0),
                                Number::numberWith(std::nan("")),
                                Number::numberWith(0.1f),
                                String::stringWithUTF16(u"\xD800 lone"),
                                String::of("a\0b"),
                                Date::dateWithTimeIntervalSinceReferenceDate(-1.5),
                                Data::dataWithBytes(std::string(3'000'000, 'x')),
                                nest(512),
                                mixed};
  const std::string keys[] = {"",     std::string("\0\0", 2),    "'; DROP TABLE preference; --",
                              "🙂", std::string(100'000, 'k'), "\xED\xA0\x80"};
  std::map<std::string, Ref<Object>> expected;
  {
    const Ref<UserDefaults> defaults = open();
    for (std::size_t i = 0; i < std::size(values); ++i) {
      const std::string key = i < std::size(keys) ? keys[i] : "key " + std::to_string(i);
      defaults->setObject(expected[key] = values[i], key);
    }
    mixed->removeAllObjects();  // the store has a deep copy
    inner->addObject(mixed);
    const auto stored = refCast<Dictionary>(defaults->objectForKey("key 11"));
    EXPECT_EQ(stored->count(), 4u);
    EXPECT_TRUE(stored->objectForKey("inner")->isEqual(*Array::array()));
    inner->removeAllObjects();
    expected["key 11"] = defaults->objectForKey("key 11");
  }
  const Ref<UserDefaults> again = open();
  for (const auto& [key, value] : expected) {
    const Ref<Object> found = again->objectForKey(key);
    ASSERT_NE(found, nullptr) << key.substr(0, 30);
    EXPECT_TRUE(found->isEqual(*value)) << found->description();
    const auto* number = objectCast<Number>(value.get());
    if (number == nullptr) continue;
    const NumberValue back = objectCast<Number>(found.get())->value();
    EXPECT_EQ(back.isBoolean(), number->value().isBoolean());
    EXPECT_EQ(back.isFloating(), number->value().isFloating());
  }
  EXPECT_EQ(count(), expected.size());
  for (const auto& [key, value] : expected) again->removeObjectForKey(key);
  EXPECT_EQ(count(), 0u);
  EXPECT_THAT(log.messages(), ElementsAre());
}

TEST_F(UserDefaultsTest, FilesAreInTheUsersFolderAndNamedLikeTheApplication) {
  const std::string home = directory.path("home?%41#b");
  const std::string xdg = home + "/xdg";
  // XDG_CONFIG_HOME, HOME, the home in the user database, the program's name, the domain, and the
  // file that has both.
  const Rows<const char*, const char*, const char*, const char*, std::string, std::string> cases{
      {xdg.c_str(), "/nowhere", "/nowhere", "tool", "own", "/xdg/korvan/own.sqlite"},
      {"relative", home.c_str(), "/nowhere", "tool", "", "/.config/korvan/tool.sqlite"},
      {nullptr, home.c_str(), "", ".hidden", "", "/.config/korvan/application.sqlite"},
      {nullptr, "relative", home.c_str(), "tool", "a/b", "/.config/korvan/tool.sqlite"},
      {nullptr, nullptr, home.c_str(), "tool", "", "/.config/korvan/tool.sqlite"},
      {nullptr, "", "relative", "tool", "", ""},
  };
  for (const auto& [config, user, known, program, domain, file] : cases) {
    Child child([&] {
      homeInUserDatabase = known;
      config != nullptr ? ::setenv("XDG_CONFIG_HOME", config, 1) : ::unsetenv("XDG_CONFIG_HOME");
      user != nullptr ? ::setenv("HOME", user, 1) : ::unsetenv("HOME");
      program_invocation_short_name = const_cast<char*>(program);
      EXPECT_EQ(UserDefaults::setApplicationDomain(domain), domain == "own");
      const Ref<UserDefaults> defaults = UserDefaults::standardUserDefaults();
      UserDefaults::initWithSuiteName("suite")->setInteger(1, "key");
      defaults->setInteger(1, "key");
      EXPECT_EQ(defaults->integerForKey("key"), 1);
      EXPECT_EQ(fs::exists(home + file), !file.empty()) << file;
      Ref<Error> error;
      EXPECT_EQ(defaults->synchronize(&error), !file.empty());
      EXPECT_THAT(error != nullptr ? error->localizedDescription() : "",
                  HasSubstr(file.empty() ? "there is no folder for them." : ""));
      EXPECT_EQ(log.messages().size(), file.empty() ? 2u : 0u) << "one for each domain";
      fs::current_path(directory.path(""));
      const Ref<UserDefaults> relative = UserDefaults::initWithSuiteName("suite", "folder");
      fs::create_directories(home);
      fs::current_path(home);
      relative->setInteger(1, "key");
      EXPECT_EQ(savedCount(), 1) << "a relative folder stays where it was";
    });
    EXPECT_EQ(child.end(), 0) << file;
    fs::remove_all(home);
  }
}

// The tests of Preference cover booleans and integers.
TEST_F(UserDefaultsTest, ReadsDoublesAndStringsLeniently) {
  const Ref<UserDefaults> defaults = open();
  const std::tuple<Ref<Object>, double, const char*> cases[] = {
      {nullptr, 0, "none"},
      {Number::numberWith(true), 1, "1"},
      {Number::numberWith(-2.75), -2.75, "-2.75"},
      {String::of(" -3.5e1x"), -35, " -3.5e1x"},
      {nest(1), 0, "none"},
  };
  for (const auto& [stored, real, text] : cases) {
    defaults->setObject(stored, "key");
    EXPECT_EQ(defaults->doubleForKey("key"), real) << text;
    const Ref<String> string = defaults->stringForKey("key");
    EXPECT_EQ(string != nullptr ? string->view() : "none", text);
  }
  defaults->setDouble(0.1, "key");
  EXPECT_EQ(defaults->doubleForKey("key"), 0.1);
  defaults->setBool(true, "key");
  EXPECT_TRUE(objectCast<Number>(defaults->objectForKey("key").get())->value().isBoolean());
}

TEST_F(UserDefaultsTest, SearchesItsDomainsInOrder) {
  const Ref<UserDefaults> defaults = open();
  const auto entry = [](int value) {
    return Dictionary::dictionaryWithEntries({{"ordered", Number::numberWith(value)}});
  };
  EXPECT_EQ(defaults->objectForKey("ordered"), nullptr);
  const std::pair<std::function<void()>, int> steps[] = {
      {[&] { open("other")->registerDefaults(*entry(1)); }, 1},
      {[&] { defaults->registerDefaults(*entry(2)); }, 2},
      {[&] { open("other")->setInteger(3, "ordered"); }, 2},
      {[&] { defaults->setInteger(4, "ordered"); }, 4},
      {[&] { UserDefaults::setArguments(*entry(5)); }, 5},
  };
  for (const auto& [step, found] : steps) {
    step();
    EXPECT_EQ(defaults->integerForKey("ordered"), found);
  }
  EXPECT_EQ(defaults->dictionaryRepresentation()->count(), 1u);
  EXPECT_TRUE(defaults->dictionaryRepresentation()->isEqual(*entry(5)));
  UserDefaults::setArguments(*Dictionary::dictionary());
  EXPECT_EQ(UserDefaults::initWithSuiteName("memory", "")->integerForKey("ordered"), 5);

  const std::string tooLong(201, 'x');
  const std::string_view badNames[] = {"", "a/b", ".", ".x", {"a\0b", 3}, "global", tooLong};
  for (const auto bad : badNames) EXPECT_EQ(open(bad), nullptr) << bad;
}

TEST_F(UserDefaultsTest, RefusesValuesThatAreNoPropertyLists) {
  const Ref<UserDefaults> defaults = open();
  defaults->setInteger(1, "key");
  const auto cyclic = MutableArray::array();
  cyclic->addObject(cyclic);
  cyclic->addObject(cyclic);
  Ref<Object> doubled = Number::numberWith(1);  // 2^64 numbers when written out
  for (int i = 0; i < 64; ++i) doubled = Array::arrayWithObjects({doubled, doubled});
  const Rows<Ref<Object>, const char*> cases{
      {Null::null(), "Attempt to insert non-property list object of class Null for key key"},
      {Array::arrayWithObjects({Value::valueWithPoint({1, 2})}), "object of class Value"},
      {Dictionary::dictionaryWithEntries(
           std::vector<std::pair<Ref<Object>, Ref<Object>>>{{nest(0), nest(0)}}),
       "key that is not a string"},
      {nest(513), "too deep"},
      {cyclic, "too deep"},
      {doubled, "too large"},
      {MutableData::dataWithLength(std::size_t{1} << 28), "too large"},
  };
  for (const auto& [value, reason] : cases) {
    try {
      defaults->setObject(value, "key");
      ADD_FAILURE() << reason;
    } catch (const Exception& exception) {
      EXPECT_EQ(exception.name(), InvalidArgumentException);
      EXPECT_THAT(exception.what(), HasSubstr(reason));
    }
  }
  EXPECT_THROW(defaults->setInteger(2, "\xFF"), Exception);
  EXPECT_EQ(defaults->objectForKey("\xFF"), nullptr);
  EXPECT_THROW(defaults->registerDefaults(*Dictionary::dictionaryWithEntries(
                   {{"refused", nest(0)}, {"no list", Null::null()}})),
               Exception);
  EXPECT_THROW(defaults->registerDefaults(*Dictionary::dictionaryWithEntries(
                   std::vector<std::pair<Ref<Object>, Ref<Object>>>{{nest(0), nest(0)}})),
               Exception);
  EXPECT_EQ(defaults->objectForKey("refused"), nullptr);
  EXPECT_EQ(defaults->integerForKey("key"), 1);
  cyclic->removeAllObjects();
}

TEST_F(UserDefaultsTest, IgnoresInvalidEntriesAndDamageInUseKeepsTheOthers) {
  const Ref<UserDefaults> defaults = open();
  defaults->setInteger(1, "known");
  execute("INSERT INTO preference VALUES (x'61', x'00'), (x'FF', x'00'), ('text', 'text')");
  EXPECT_EQ(count(), 1u);
  EXPECT_THAT(log.messages(), ElementsAre(HasSubstr("Ignored 3 invalid entries")));
  EXPECT_EQ(defaults->integerForKey("known"), 1);
  execute(
      "DELETE FROM preference WHERE key <> x'6B6E6F776E';"
      "INSERT INTO preference SELECT 'text', value FROM preference;"
      "INSERT INTO preference SELECT 7, value FROM preference LIMIT 1");
  EXPECT_TRUE(defaults->synchronize());
  for (const char* const key : {"text", "7"}) {  // no bytes in the database
    EXPECT_EQ(defaults->integerForKey(key), 1);
    defaults->removeObjectForKey(key);
  }
  EXPECT_EQ(savedCount(), 1);
  execute("DROP TABLE preference");
  defaults->setInteger(2, "later");
  EXPECT_EQ(defaults->integerForKey("known"), 1);
  EXPECT_EQ(defaults->integerForKey("later"), 2);
  EXPECT_EQ(savedCount(), 2);
}

TEST_F(UserDefaultsTest, KeepsValuesInMemoryIfTheFolderCannotBeUsed) {
  directory.write("folder", "a file where the folder should be");
  const Ref<UserDefaults> defaults = open();
  defaults->setInteger(1, "key");
  defaults->setInteger(2, "other");
  defaults->removeObjectForKey("other");
  EXPECT_EQ(defaults->integerForKey("key"), 1);
  EXPECT_EQ(defaults->objectForKey("other"), nullptr);
  Ref<Error> error;
  EXPECT_FALSE(defaults->synchronize(&error));
  EXPECT_THAT(error->localizedDescription(), HasSubstr("folder/suite.sqlite: Not a directory."));
  EXPECT_EQ(log.messages().size(), 2u);  // one for the suite, one for the global domain

  std::filesystem::remove(directory.path("folder"));
  EXPECT_TRUE(defaults->synchronize(&error));
  EXPECT_EQ(defaults->integerForKey("key"), 1);
  EXPECT_EQ(savedCount(), 1);
}

// Each wait for the lock takes two seconds.
TEST_F(UserDefaultsLockStress, AStoppedWriterBlocksOthersForALimitedTime) {
  Child stopped([&] {
    const Ref<UserDefaults> defaults = open();
    defaults->setInteger(1, "key");
    FailingSystemCalls::arm(1, FailingSystemCalls::How::stops);
    defaults->setInteger(5, "key");
  });
  stopped.waitUntilStopped();
  const Ref<UserDefaults> defaults = open();
  EXPECT_EQ(defaults->integerForKey("key"), 1);
  defaults->setInteger(2, "key");
  EXPECT_EQ(defaults->integerForKey("key"), 2);
  EXPECT_THAT(log.messages(), ElementsAre(HasSubstr("Cannot lock the preferences")));
  stopped.end(SIGKILL);
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_EQ(savedCount(), 1);
}

TEST_F(UserDefaultsTest, CreatesRemovedFilesAgain) {
  const Ref<UserDefaults> defaults = open();
  for (const char* removed : {"folder", "folder/suite.sqlite"}) {
    SCOPED_TRACE(removed);
    defaults->setInteger(1, "before");
    EXPECT_EQ(defaults->integerForKey("before"), 1);
    EXPECT_TRUE(defaults->synchronize());  // checks the files
    std::filesystem::remove_all(directory.path(removed));
    defaults->setInteger(2, "after");
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(defaults->integerForKey("after"), 2);
    EXPECT_EQ(defaults->objectForKey("before"), nullptr);
    EXPECT_EQ(savedCount(), 1);
  }
}

TEST_F(UserDefaultsTest, LogSinksMayReadPreferences) {
  directory.write("folder", "a file");
  int messages = 0;
  const LogSink before = setLogSink([&](const LogMessage&) {
    EXPECT_TRUE(messages++ > 0 || open()->integerForKey("key") == 1);  // reading also logs
  });
  open()->setInteger(1, "key");
  setLogSink(before);
  EXPECT_GT(messages, 0);
}

TEST_F(UserDefaultsThreadStress, ThreadsSeeEachOthersChangesAtOnce) {
  const auto defaults = open();
  std::atomic<std::int64_t> written = 0;
  onThreads(3, [&](int t) {
    for (std::int64_t i = 1; t == 0 && i <= 500; ++i) {
      defaults->setInteger(i, "count");
      written = i;
    }
    for (std::int64_t last = 0; t != 0 && last < 500;) {
      const std::int64_t before = std::max(last, written.load());
      last = defaults->integerForKey("count");
      ASSERT_GE(last, before);
    }
  });
}

}  // namespace
