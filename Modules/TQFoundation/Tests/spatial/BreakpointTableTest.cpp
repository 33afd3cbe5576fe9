#include <TQFoundation/spatial/BreakpointTable.h>

#include <TQFoundation/spatial/Collectable.h>

#include "support/Test.h"

namespace {

TEST(BreakpointTable, ALiteralAnswersTheGreatestBreakpointNotAboveTheKey) {
  for (const BreakpointTable<int, double>& table :
       {BreakpointTable<int, double>{{0, 1}, {10, 2}, {20, 3}},
        BreakpointTable<int, double>{{20, 3}, {0, 1}, {10, 2}},
        BreakpointTable<int, double>(std::vector<std::pair<int, double>>{{10, 2}, {20, 3}, {0, 1}}),
        BreakpointTable<int, double>(std::map<int, float>{{0, 1}, {10, 2}, {20, 3}})}) {
    EXPECT_EQ(table[15], 2);
    EXPECT_EQ(table[10], 2);
    EXPECT_EQ(table[25], 3);
    EXPECT_EQ(table[-1], 0);
  }
}

TEST(BreakpointTable, StoringAKeyAgainPutsTheNewerValueFirst) {
  BreakpointTable<int, int> table{{10, 2}, {10, 7}};
  EXPECT_EQ(std::as_const(table)[10], 7);
  EXPECT_EQ(table.entryCount(), 2U);
  table[12] = 5;
  table[11] += 3;  // reads 7 from 10, stores 10 under 11
  EXPECT_EQ(std::as_const(table)[11], 10);
  EXPECT_EQ(std::as_const(table)[12], 5);
  EXPECT_EQ(std::as_const(table)[10], 7);
  EXPECT_EQ(table.entryCount(), 4U);
  table[20] = table[10];
  EXPECT_EQ(std::as_const(table)[20], 7);
  EXPECT_EQ(table[11]++, 10);
  EXPECT_EQ(--table[20], 6);
  EXPECT_EQ(table[12]--, 5);
  EXPECT_EQ(++table[3], 1);  // below the least breakpoint
  EXPECT_EQ(table.lookUp(11), 11);
  EXPECT_EQ(table.lookUp(12), 4);
  BreakpointTable<int, std::string> names("none", std::greater_equal<>());
  names[3] = "three";
  std::ostringstream text;
  text << names[4] << ' ' << names[2];
  EXPECT_EQ(text.str(), "three none");
}

TEST(BreakpointTable, ObeysItsPredicateAndHandsItTheKeyFirst) {
  int calls = 0;
  BreakpointTable<std::string, int> table(
      -1, [&calls](const std::string& key, const std::string& breakpoint) {
        ++calls;
        return key.starts_with(breakpoint);
      });
  EXPECT_EQ(std::as_const(table)["any"], -1);
  EXPECT_EQ(calls, 0);
  table.store("a", 1);
  table.store("ab", 2);  // matches "a", so it is inserted before it
  table.store("b", 3);
  EXPECT_EQ(table.lookUp("abc"), 2);
  EXPECT_EQ(table.lookUp("ac"), 1);
  EXPECT_EQ(table.lookUp("bc"), 3);
  EXPECT_EQ(table.lookUp("c"), -1);
}

TEST(Collectable, GoesBackToItsDefaultWhenCollectedOrProjected) {
  Collectable<std::string> value("five");
  value.setWrappedValue("eight");
  EXPECT_NE(value, Collectable<std::string>("five"));
  EXPECT_EQ(value, Collectable<std::string>("eight"));
  for (const char* collected : {"eight", "five"}) EXPECT_EQ(value.collect(), collected);
  value.setWrappedValue("nine");
  for (const char* projected : {"nine", "five"}) EXPECT_EQ(value.projectedValue(), projected);
  EXPECT_EQ(value.defaultValue(), "five");
}

}  // namespace
