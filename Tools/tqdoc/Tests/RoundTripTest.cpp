#include "Files/RoundTrip.h"

#include "Files/FileList.h"
#include "Model/Compare.h"
#include "Model/Gradient.h"
#include "Model/Numbers.h"
#include "Render/Canvas.h"
#include "Support.h"
#include "support/CapturedLog.h"
#include "support/FailingSystemCalls.h"
#include "support/TemporaryDirectory.h"

namespace tqdoc {
namespace {

using testing::EndsWith;

class Drawings : public testing::Test {
 protected:
  static void SetUpTestSuite() { registerModel(); }

  [[nodiscard]] std::string data(const char* name) const {
    return std::string(TQDOC_TEST_DATA "/") + name;
  }
  tq::test::TemporaryDirectory directory_;
};

TEST_F(Drawings, ThatDifferAreReported) {
  const auto one = drawingOf("<g id='g'><path id='p' d='M0 0h9v9' fill='red'/></g>");
  const tq::test::Rows<const char*, const char*, bool> cases{
      {"<g id='g'><path id='p' d='M0 0h9v8' fill='red'/></g>", "root/0/0 (p): the paths differ",
       false},
      {"<g id='g'><path id='p' d='M0 0h9v9' fill='#fe0000'/></g>",
       "root/0/0 (p): the styles differ", false},
      {"<g id='h'><path id='p' d='M0 0h9v9' fill='red'/></g>", "root/0 (g): the names differ",
       true},
      {"<g id='g'/>", "root/0: the numbers of children differ", false},
      {"<path id='g' d='M0 0'/>", "root/0 (g): the kinds differ", false},
      {"<g id='g' opacity='.5'><path id='p' d='M0 0h9v9' fill='red'/></g>",
       "root/0 (g): the opacities differ", false},
      {"<g id='g' style='mix-blend-mode:hue'/>", "root/0 (g): the blend modes differ", false},
  };
  for (const auto& [inside, difference, isAlike] : cases) {
    const auto other = drawingOf(inside);
    EXPECT_EQ(firstDifference(*one, *other), difference) << inside;
    EXPECT_EQ(looksTheSame(*one, *other, 90), isAlike) << inside;
  }
  EXPECT_EQ(firstDifference(*one, *one), std::nullopt);
}

TEST_F(Drawings, InDamagedArchivesAreErrors) {
  const tq::test::CapturedLog quiet;
  const auto document = openDrawing(data("paint.svg"), nullptr).document;
  std::string whole;
  const auto failureOf = [&](std::string_view archive) {
    return roundTrip(directory_.write("odd.tqdoc", archive)).failure;
  };
  for (const Packing packing : {Packing::gzip, Packing::none}) {
    ASSERT_TRUE(saveArchive(*document, directory_.path("a.tqdoc"), packing, nullptr));
    whole = directory_.read("a.tqdoc");
    EXPECT_EQ(whole.starts_with("\x1f\x8b"), packing == Packing::gzip);
    for (std::size_t length = 0; length < whole.size(); length += 7) {
      EXPECT_NE(failureOf(whole.substr(0, length)), "") << length;
    }
    // The size at the end of a gzip file: 4 GiB, which only a long file can expand to.
    for (const std::size_t more : {0u, 5'000'000u}) {
      const std::string false4GiB =
          whole.substr(0, whole.size() - 4) + std::string(more, '\0') + "\xff\xff\xff\xff";
      const char* const reason = more == 0 ? "damaged" : "decompresses to more than 256 MiB";
      EXPECT_THAT(failureOf(false4GiB),
                  HasSubstr(packing == Packing::gzip ? reason : "odd.tqdoc: "));
    }
  }
  for (std::size_t i = 0; i < whole.size(); i += 7) {
    std::string bent = whole;
    bent[i] = '9';
    const RoundTrip result = roundTrip(directory_.write("bent.tqdoc", bent));
    if (!result.failure.empty()) continue;
    EXPECT_TRUE(looksTheSame(*result.document, *result.reopened, 16)) << bent;
  }
  for (const char* text :
       {"1", "{}", R"({"_class":"TQDocument"})",
        R"({"_class":"TQDocument","root":{"_class":"TQDocGroup","children":[3]}})",
        R"({"_class":"TQDocument","root":{"_class":"TQDocGroup","children":[
            {"_class":"TQDocText","string":"a","spans":[3]}]}})",
        R"({"_class":"TQDocument","root":{"_class":"TQDocGroup","children":[{"_class":"TQDocText",
            "string":"a","spans":[{"_class":"TQDocTextSpan","length":-1,"x":["b"]}]}]}})",
        R"({"_class":"TQDocument","root":{"_class":"TQDocGroup","children":[
            {"_class":"TQDocShape","path":{"_class":"TQDocPath","steps":"MC","coordinates":[1,2]}}]}})"}) {
    EXPECT_THAT(failureOf(text), HasSubstr("odd.tqdoc: ")) << text;
  }
  // Of newer programs: saving what was read would lose the rest.
  const tq::test::Rows<const char*, const char*> newer{
      {R"("glow":1,"children":[])", ": /root/glow"},
      {R"("children":[{"_class":"TQDocStar"}])", ": /root/children/0 (TQDocStar)"},
      {R"("glow":{"a":1},"glare":2,"children":[])", ": /root/glow, and 1 more"}};
  for (const auto& [members, place] : newer) {
    const std::string root = std::string(R"({"_class":"TQDocGroup",)") + members + "}";
    EXPECT_THAT(failureOf(R"({"_class":"TQDocument","root":)" + root + "}"), EndsWith(place));
  }
}

TEST_F(Drawings, AreReplacedCompletelyOrNotAtAll) {
  const auto document = openDrawing(data("shapes.svg"), nullptr).document;
  tq::Ref<tq::Error> error;
  EXPECT_FALSE(saveArchive(*document, directory_.path("no/a.tqdoc"), Packing::none, &error));
  EXPECT_THAT(error->localizedDescription(),
              HasSubstr("no/a.tqdoc: The folder “no” doesn’t exist."));

  for (const Packing packing : {Packing::none, Packing::gzip}) {
    const std::string path = directory_.write("old.tqdoc", "old");
    tq::test::FailingSystemCalls::arm(1, tq::test::FailingSystemCalls::How::stays_failed);
    EXPECT_FALSE(saveArchive(*document, path, packing, &error));
    EXPECT_TRUE(tq::test::FailingSystemCalls::disarm());
    EXPECT_EQ(directory_.read("old.tqdoc"), "old");
    EXPECT_TRUE(saveArchive(*document, path, packing, &error));
    const auto reopened = openDrawing(path, nullptr).document;
    ASSERT_TRUE(reopened);
    EXPECT_EQ(firstDifference(*document, *reopened), std::nullopt);
    EXPECT_EQ(roundTrip(path).differences.size(), 0u);
    EXPECT_EQ(directory_.entries(), 1);
  }
}

TEST_F(Drawings, AreListedOnce) {
  std::filesystem::create_directories(directory_.path("d/folder.svg"));
  const std::string inner = directory_.write("d/folder.svg/e.svg", "");
  const std::string b = directory_.write("d/b.svg", "");
  const std::string a = directory_.write("d/a.tqdoc", "");
  directory_.write("d/c.txt", "");
  std::filesystem::create_symlink(a, directory_.path("d/z.svg"));
  const FileList list = listFiles({b, directory_.path("d"), "gone.svg"});
  EXPECT_THAT(list.files, ElementsAre(b, a, inner, "gone.svg"));
  EXPECT_EQ(list.repeated, 2u);
}

TEST_F(Drawings, DoNotAffectLaterDrawing) {
  const auto document = openDrawing(data("shapes.svg"), nullptr).document;
  Canvas canvas(40, 20);
  canvas.draw(*document, {0, 0, 20, 20});
  const std::vector<std::uint32_t> before(canvas.pixels().begin(), canvas.pixels().end());
  canvas.fill({20, 0, 20, 20}, {1, 0, 0});
  for (std::size_t i = 0; i < before.size(); ++i) {
    ASSERT_EQ(canvas.pixels()[i], i % 40 < 20 ? before[i] : 0xffff0000u) << i;
  }
}

TEST_F(Drawings, HaveSourcesOfAnyScale) {
  const std::string pattern = "<pattern id='p' patternUnits='userSpaceOnUse' height='10' ";
  const std::string content = "><rect width='5' height='10'/></pattern>";
  const std::string image =
      "<image height='9' preserveAspectRatio='none' href='data:image/png;base64,iVBORw0KGgoAAAANSUh"
      "EUgAAAAEAAAABCAAAAAA6fptVAAAACklEQVR4nGNgAAAAAgABSK+kcQAAAABJRU5ErkJggg==' width=";
  const tq::test::Rows<std::string, std::uint32_t, const char*> cases{
      {pattern + "width='1e-11'" + content, 0xff000000, "none"},
      {pattern + "width='10' patternTransform='scale(1e-6)'" + content, 0x80000000, "none"},
      {pattern + "width='10' x='1e9'" + content, 0xff000000, "none"},
      {"<linearGradient id='p' gradientTransform='scale(1e-9)'><stop stop-color='red'/><stop "
       "stop-color='blue' offset='1'/></linearGradient>",
       0, "gradients that are too small 1"},
      {image + "'1e-6'/>", 0, "images that are too small 1"},
      {image + "'1e-3'/>", 0, "none"}};
  for (const auto& [source, pixel, leftOut] : cases) {
    Canvas canvas(120, 120);
    canvas.draw(*drawingOf(source + "<rect width='120' height='120' fill='url(#p)'/>"),
                {0, 0, 120, 120});
    EXPECT_EQ(canvas.pixels()[60 * 120 + 61], pixel) << source;
    EXPECT_EQ(summary(canvas.leftOut()), leftOut) << source;
  }
}

TEST(Archivable, NumbersAreUnchangedInArchives) {
  for (const double value : {0.1, 1.0 / 3, -2.5e-30, 1e300, 5e-324, std::nan("")}) {
    const double kept = archivable(value);
    EXPECT_EQ(archivable(kept), kept);
    const auto data = tq::TQJSONEncoder::encodeObjectAsData(
        tq::Array::arrayWithNumbers(std::vector<double>{kept}));
    tq::Ref<tq::Error> error;
    const auto back = tq::refCast<tq::Array>(tq::TQJSONDecoder::decodeDataError(*data, &error));
    EXPECT_EQ(numbersOf(*back)->front(), kept);
  }
}

}  // namespace
}  // namespace tqdoc
