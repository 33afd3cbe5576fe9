#include <TQFoundation/environment/TQStringUniquer.h>

#include <ctime>

#include "support/Test.h"

namespace {

TEST(StringUniquer, ContinuesTheNumbersOfTakenNames) {
  const test::Rows<std::vector<std::string>, const char*, const char*, const char*> cases{
      {{}, "Oval", "Oval", "Oval copy"},
      {{"Oval"}, "Oval", "Oval 2", "Oval copy"},
      {{"Oval", "Oval 2", "Oval 4", "Oval copy"}, "Oval", "Oval 3", "Oval copy 2"},
      {{"Oval 7", "Oval 8"}, "Oval 7", "Oval 9", "Oval 7 copy"},
      {{"Oval copy"}, "Oval copy", "Oval copy 2", "Oval copy 2"},
      {{"Oval copy 7", "Oval copy 8"}, "Oval copy 7", "Oval copy 9", "Oval copy 9"},
      {{"Oval 1"}, "Oval 1", "Oval 1 2", "Oval 1 copy"},
      {{"Oval 07"}, "Oval 07", "Oval 07 2", "Oval 07 copy"},
      {{"x 1234567890123456789"},
       "x 1234567890123456789",
       "x 1234567890123456789 2",
       "x 1234567890123456789 copy"},
      {{"", " 2"}, "", " 3", " copy"},
      {{" 7"}, " 7", " 7 2", " 7 copy"},
      {{"Oval "}, "Oval ", "Oval  2", "Oval  copy"},
      {{"oval"}, "Oval", "Oval", "Oval copy"},
  };
  for (const auto& [taken, name, unique, copy] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(TQStringUniquer(taken).uniqueString(name), unique);
    EXPECT_EQ(TQStringUniquer(taken).uniqueCopyName(name), copy);
  }
}

// Each call must be fast for any number of taken names.
TEST(StringUniquer, GeneratesManyNamesWithoutDuplicates) {
  TQStringUniquer uniquer(std::vector<std::string>{"Oval copy 50000"});
  std::set<std::string> generated{"Oval copy 50000"};
  const std::clock_t start = std::clock();
  for (int i = 0; i < 100'000; ++i) {
    EXPECT_TRUE(
        generated.insert(uniquer.uniqueCopyName(i % 3 == 0 ? "Oval copy 7" : "Oval")).second);
    EXPECT_TRUE(generated.insert(uniquer.uniqueString("Oval")).second);
    EXPECT_TRUE(generated.insert(uniquer.uniqueString("Oval " + std::to_string(i / 2))).second);
  }
  // Names like "Oval 0" and "Oval 1 2" do not count.
  for (const char* name : {"Oval copy", "Oval copy 100001", "Oval 199996", "Oval 199997"}) {
    EXPECT_EQ(generated.contains(name), name != std::string("Oval 199997")) << name;
  }
  EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 60);  // of processor time
}

}  // namespace
