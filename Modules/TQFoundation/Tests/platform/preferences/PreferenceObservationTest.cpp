#include <TQFoundation/platform/preferences/PreferenceObservation.h>

#include <TQFoundation/platform/loops/RunLoop.h>
#include <TQFoundation/platform/preferences/UserDefaults.h>

#include "support/Child.h"
#include "support/Descriptors.h"
#include "support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

/// Another process makes the changes of a test, one at each call of next().
struct PreferenceObservationTest : testing::Test {
  test::TemporaryDirectory directory;
  const std::string folder = directory.path("parent/folder");
  std::atomic<int>& stage = test::shared<std::atomic<int>>();
  std::vector<std::string> seen;

  [[nodiscard]] Ref<UserDefaults> open() const {
    return UserDefaults::initWithSuiteName("suite", folder);
  }
  void next() { ++stage; }
  /// Runs the loop until the handler was called, or for a while.
  std::vector<std::string> told(double seconds = 20) {
    seen.clear();
    for (int pass = 0; pass < 100 && seen.empty(); ++pass) RunLoop::current().runFor(seconds / 100);
    return seen;
  }
  [[nodiscard]] static std::ptrdiff_t openMonitors() {
    return std::ranges::count_if(fs::directory_iterator("/proc/self/fd"), [](const auto& file) {
      std::error_code ignored;
      return fs::read_symlink(file, ignored) == "anon_inode:inotify";
    });
  }
  PreferenceObservation::Handler handler() {
    return [this](std::span<const std::string> keys) { seen.assign(keys.begin(), keys.end()); };
  }
};

TEST_F(PreferenceObservationTest, ReportsWhatAnotherProcessChanges) {
  fs::create_directories(folder);
  Child other([&] {
    const auto step = [&](int number) { test::waitFor(stage, number); };
    step(1);
    Ref<UserDefaults> defaults = open();
    defaults->setInteger(1, "a");
    step(2);
    defaults->setInteger(1, "a");
    UserDefaults::initWithSuiteName("other", folder)->setInteger(1, "other");
    defaults->setInteger(2, "b");
    step(3);
    defaults->removeObjectForKey("a");
    step(4);  // the folder was removed
    defaults = nullptr;
    defaults = open();
    defaults->setInteger(3, "again");
    step(5);
    defaults->setInteger(4, "again");
    defaults->setInteger(5, "last");
  });
  const Ref<UserDefaults> defaults = open();
  Ref<PreferenceObservation> observation = defaults->observeChanges(handler());
  EXPECT_THAT(told(0.1), ElementsAre());
  EXPECT_EQ(openMonitors(), 1);
  next();
  EXPECT_THAT(told(), ElementsAre("a"));
  EXPECT_EQ(defaults->integerForKey("a"), 1);
  next();
  EXPECT_THAT(told(), ElementsAre("b")) << "equal values and other stores are not reported";
  next();
  EXPECT_THAT(told(), ElementsAre("a"));
  defaults->setInteger(3, "own");
  EXPECT_THAT(told(), ElementsAre("own"));
  fs::remove_all(directory.path("parent"));
  EXPECT_THAT(told(), ElementsAre("b", "own"));
  next();
  EXPECT_THAT(told(), ElementsAre("again"));
  observation = nullptr;
  next();
  EXPECT_EQ(other.end(), 0);
  EXPECT_THAT(told(0.1), ElementsAre());
  EXPECT_EQ(openMonitors(), 0);
  EXPECT_EQ(defaults->integerForKey("last"), 5);
}

TEST_F(PreferenceObservationTest, FollowsADatabaseThatIsALink) {
  const auto link = [this](const char* target) {
    fs::create_symlink(directory.path(target), folder + "/new");
    fs::rename(folder + "/new", folder + "/suite.sqlite");
  };
  Child other([&] {
    for (const int value : {1, 2}) {
      test::waitFor(stage, value);
      open()->setInteger(value, "key");
    }
  });
  fs::create_directories(folder);
  link("first");
  const Ref<UserDefaults> defaults = open();
  const Ref<PreferenceObservation> observation = defaults->observeChanges(handler());
  next();
  EXPECT_THAT(told(), ElementsAre("key"));
  EXPECT_EQ(defaults->integerForKey("key"), 1);
  link("parent/second");
  EXPECT_THAT(told(), ElementsAre("key"));
  next();
  EXPECT_THAT(told(), ElementsAre("key"));
  EXPECT_EQ(defaults->integerForKey("key"), 2);
  EXPECT_EQ(other.end(), 0);
}

TEST_F(PreferenceObservationTest, TheHandlerMayDropEverythingAlsoWithoutDescriptors) {
  Child other([&] {
    test::waitFor(stage, 1);
    for (int i = 0; i < 3; ++i) open()->setInteger(i + 1, "key");
  });
  int calls = 0;
  Ref<UserDefaults> defaults = open();
  static_cast<void>(RunLoop::current());  // needs a descriptor
  // Without a descriptor for it, the store is read once a second.
  test::allowDescriptors(0);
  Ref<PreferenceObservation> observation;
  observation = defaults->observeChanges([&, own = std::string(100, 'x')](auto keys) {
    defaults = nullptr;
    observation = nullptr;
    seen.assign(keys.begin(), keys.end());
    EXPECT_EQ(own.size(), 100u);
    ++calls;
  });
  const Ref<PreferenceObservation> ended = defaults->observeChanges([&](auto) { ADD_FAILURE(); });
  ended->invalidate();
  test::allowDescriptors(1000);
  next();
  EXPECT_THAT(told(), ElementsAre("key"));
  EXPECT_EQ(other.end(), 0);
  told(0.1);
  EXPECT_EQ(calls, 1);
}

}  // namespace
