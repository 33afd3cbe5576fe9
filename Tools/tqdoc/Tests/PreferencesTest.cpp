#include "Preferences/Preferences.h"

#include "support/TemporaryDirectory.h"

namespace tqdoc {
namespace {

using Paths = std::vector<std::string>;

struct PreferencesTest : testing::Test {
  tq::test::TemporaryDirectory directory;
  PreferencesTest() {
    ::setenv("XDG_CONFIG_HOME", directory.path("").c_str(), 1);  // before the store's first use
  }
};

TEST_F(PreferencesTest, RecentDrawingsAreKeptInOrderOnceEach) {
  EXPECT_EQ(recentDrawings(), Paths());
  for (const char* path : {"/a.svg", "/b.svg", "/\xff.svg", "/c/../a.svg"}) rememberDrawing(path);
  EXPECT_EQ(recentDrawings(), (Paths{"/a.svg", "/\xff.svg", "/b.svg"}));
  preferences::recentCount.setValue(2);
  rememberDrawing("/b.svg");
  EXPECT_EQ(recentDrawings(), (Paths{"/b.svg", "/a.svg"}));
  rememberDrawing("c.svg");
  EXPECT_TRUE(recentDrawings().front().starts_with('/'));
  preferences::recentCount.setValue(-1);
  rememberDrawing("/d.svg");
  EXPECT_EQ(recentDrawings(), Paths());
  preferences::recentCount.removeValue();
  rememberDrawing("/d.svg");
  forgetDrawings();
  EXPECT_EQ(recentDrawings(), Paths());
  // Another program stored a value that is not a list.
  tq::UserDefaults::standardUserDefaults()->setInteger(1, "recent");
  EXPECT_EQ(recentDrawings(), Paths());
}

}  // namespace
}  // namespace tqdoc
