#include "Patch/Patch.h"

#include "Files/Drawing.h"
#include "Files/FileList.h"
#include "Model/Compare.h"
#include "Model/Gradient.h"
#include "Model/Numbers.h"
#include "Patch/ChangeRecords.h"
#include "Support.h"
#include "support/CapturedLog.h"

namespace tqdoc {
namespace {

class Patches : public testing::Test {
 protected:
  static void SetUpTestSuite() { registerModel(); }

  tq::test::CapturedLog quiet_;  // parsed archives have reserved keys
};

[[nodiscard]] std::string archiveOf(const tq::Object& object) {
  return std::string(tq::TQJSONEncoder::encodeObjectAsData(object)->view());
}

[[nodiscard]] tq::Ref<tq::Array> parsed(const std::string& json) {
  return tq::refCast<tq::Array>(
      tq::TQJSONDecoder::initWithData(std::as_bytes(std::span(json)))->root());
}

[[nodiscard]] tq::Ref<tq::Array> changesBetween(const Document& a, const Document& b) {
  return parsed(archiveOf(*changeRecords(differencesOf(a, b), a, b)));
}

void expectRoundTrip(const Document& a, const Document& b) {
  tq::Ref<tq::Error> error;
  const auto changes = changesBetween(a, b);
  const auto [document, misfits] = patched(a, *changes, &error);
  ASSERT_TRUE(document) << error->localizedDescription();
  for (const auto& [path, reason] : misfits) {
    ADD_FAILURE() << path << ": " << reason << '\n' << archiveOf(*changes);
  }
  EXPECT_EQ(firstDifference(*document, b), std::nullopt) << archiveOf(*changes);
}

/// Random drawings, and random changes of them.
class RandomDrawing {
 public:
  explicit RandomDrawing(unsigned seed) : random_(seed) {
    for (int i = 0; i < 12; ++i) add(root_);
  }

  void change() {
    Sketch& group = some(root_, below(3));
    const std::size_t at = below(group.children.size() + 1);
    const bool isEmpty = at == group.children.size();
    switch (below(6)) {
      case 0:
        return add(group);
      case 1:
        if (!isEmpty) group.children.erase(group.children.begin() + std::ptrdiff_t(at));
        return;
      case 2:  // moves
        if (!isEmpty) {
          Sketch moved = group.children[at];
          group.children.erase(group.children.begin() + std::ptrdiff_t(at));
          Sketch& other = some(root_, below(3));
          other.children.insert(
              other.children.begin() + std::ptrdiff_t(below(other.children.size() + 1)), moved);
        }
        return;
      case 3:  // repeats
        if (!isEmpty) group.children.push_back(group.children[at]);
        return;
      case 4:
        pageWidth_ += 1.0 / 3;
        return;
      default:
        Sketch& node = isEmpty ? group : group.children[at];
        ++(below(2) == 0 ? node.look : node.shape);
    }
  }

  [[nodiscard]] tq::Ref<Document> document() {
    const auto root = tq::refCast<Group>(nodeOf(root_));
    return tq::makeRef<Document>(tq::String::of("t"),
                                 Document::Page{{pageWidth_, 9}, {0, 0, 9, 9}, tq::String::of("")},
                                 root, tq::Dictionary::dictionary());
  }

 private:
  struct Sketch {
    bool isGroup = true;
    unsigned name = 0, look = 0, shape = 0;  // a name of 0 is none
    std::vector<Sketch> children = {};
  };

  std::size_t below(std::size_t end) { return random_() % end; }

  Sketch& some(Sketch& group, std::size_t depth) {
    if (depth == 0 || group.children.empty()) return group;
    Sketch& child = group.children[below(group.children.size())];
    return child.isGroup ? some(child, depth - 1) : group;
  }

  void add(Sketch& root) {
    Sketch& group = some(root, below(3));
    group.children.push_back(
        {below(3) == 0, unsigned(below(2) * below(40)), unsigned(below(9)), unsigned(below(9))});
  }

  /// Equal nodes are sometimes one object, as in archives that share them.
  [[nodiscard]] tq::Ref<Node> nodeOf(const Sketch& sketch) {
    Node::Traits traits;
    if (sketch.name != 0) traits.name = tq::String::of("n" + std::to_string(sketch.name));
    traits.transform = {1, 0, 0, 1, sketch.look / 3.0, 0};
    if (sketch.look % 2 != 0) traits.opacity = 0.5;
    traits.hidden = sketch.look % 5 == 4;
    if (sketch.look % 7 == 6) traits.blend = Blend::multiply;
    traits.isolated = sketch.look % 4 == 3;
    if (sketch.look % 3 == 2) traits.clip = nodeOf({sketch.look % 2 == 0, 0, 0, sketch.shape, {}});
    if (sketch.isGroup) {
      std::vector<tq::Ref<tq::Object>> children;
      for (const Sketch& child : sketch.children) children.push_back(nodeOf(child));
      return tq::makeRef<Group>(traits, tq::Array::arrayWithObjects(std::move(children)));
    }
    auto& shared = shapes_[{sketch.name, sketch.look, sketch.shape}];
    if (shared && sketch.look % 2 == 0) return shared;
    const double size = sketch.shape / 7.0;
    if (sketch.shape == 8) {
      return shared = tq::makeRef<Picture>(traits, tq::Rect{size, 0, sketch.look / 3.0, 1},
                                           tq::String::of("none"), tq::String::of("image/png"),
                                           tq::Data::dataWithBytes(std::to_string(sketch.look)));
    }
    const auto style = tq::MutableDictionary::dictionary();
    if (sketch.look % 2 == 0)
      style->setObject(tq::String::of(sketch.look % 4 == 0 ? "#123456" : "#000000"), "fill");
    if (sketch.look % 3 == 1)
      style->setObject(tq::makeRef<Gradient>(GradientGeometry{}, std::vector<GradientStop>{{size}}),
                       "stroke");
    return shared = tq::makeRef<Shape>(
               traits, tq::makeRef<PathData>("ML", std::vector<double>{0, 0, archivable(size), 1}),
               style);
  }

  std::mt19937 random_;
  Sketch root_;
  double pageWidth_ = 9;
  std::map<std::tuple<unsigned, unsigned, unsigned>, tq::Ref<Node>> shapes_;
};

TEST_F(Patches, OfRandomChangesGiveTheNewDrawing) {
  for (unsigned seed = 1; seed <= 400; ++seed) {
    SCOPED_TRACE(seed);
    RandomDrawing drawing(seed);
    const auto before = drawing.document();
    for (unsigned i = 0; i < 1 + seed % 12; ++i) drawing.change();
    expectRoundTrip(*before, *drawing.document());
    if (HasFailure()) return;
  }
}

TEST_F(Patches, OfRealDrawingsGiveTheNewDrawing) {
  const std::string icons = "/usr/share/icons/";
  const auto files = listFiles({icons + "Tango/scalable", icons + "yasis", icons + "Suede"}).files;
  if (files.size() < 100) GTEST_SKIP() << "the drawings of ./run demo are not installed";
  auto before = openDrawing(TQDOC_TEST_DATA "/picture.svg", nullptr).document;
  for (std::size_t i = 0; i < files.size(); i += files.size() / 80) {
    SCOPED_TRACE(files[i]);
    auto after = openDrawing(files[i], nullptr).document;
    expectRoundTrip(*before, *after);
    before = std::move(after);
  }
}

TEST_F(Patches, TellWhatDoesNotFit) {
  const char* const kOld =
      "<g id='g'><path id='p' d='M0 0h9'/><path d='M1 0h9'/></g><g id='h'/><path id='q' d='M2 "
      "0h9'/>";
  const auto old = drawingOf(kOld);
  const auto changes = changesBetween(
      *old, *drawingOf("<g id='g'><path id='p' d='M0 0h8' fill='red'/></g><g id='h'><path id='q' "
                       "d='M2 0h9' opacity='.5'/></g><path id='r' d='M3 0'/>"));
  struct Case {
    const char* other;
    std::vector<std::string> misfits;
    const char* partial;  // the drawing with the other changes
  };
  const Case cases[] = {
      {kOld, {}, nullptr},
      // A changed shape does not become another one.
      {"<g id='g'><path id='p' d='M0 1h9'/><path d='M1 0h9'/></g><g id='h'/><path id='q' d='M2 "
       "0h9'/>",
       {"root.children[0].children[0].path: its node is not as it was",
        "root.children[0].children[0].style.fill: its node is not as it was"},
       "<g id='g'><path id='p' d='M0 1h9'/></g><g id='h'><path id='q' d='M2 0h9' "
       "opacity='.5'/></g><path id='r' d='M3 0'/>"},
      // What is different is not removed; what is inside a node that stays, stays too.
      {"<g id='g'><path id='p' d='M0 0h9'/><path d='M1 1h9'/></g><g id='h'/><path id='q' d='M2 "
       "1h9'/>",
       {"root.children[0].children[1]: its node is not as it was",
        "root.children[1].children[0]: its node is not as it was",
        "root.children[1].children[0].opacity: its node is not as it was"},
       "<g id='g'><path id='p' d='M0 0h8' fill='red'/><path d='M1 1h9'/></g><g id='h'/><path "
       "id='q' d='M2 1h9'/><path id='r' d='M3 0'/>"},
      // Nothing is inserted into a group with other nodes.
      {"<g id='g'><path id='p' d='M0 0h9'/><path d='M1 0h9'/></g><g id='h'/><path id='q' d='M2 "
       "0h9'/><path d='M3 3'/>",
       {"root.children[2]: its group is not as it was"},
       "<g id='g'><path id='p' d='M0 0h8' fill='red'/></g><g id='h'><path id='q' d='M2 0h9' "
       "opacity='.5'/></g><path d='M3 3'/>"},
  };
  for (const auto& [other, expected, partial] : cases) {
    const auto [document, misfits] = patched(*drawingOf(other), *changes, nullptr);
    std::vector<std::string> told;
    for (const Misfit& misfit : misfits) told.push_back(misfit.path + ": " + misfit.reason);
    EXPECT_THAT(told, testing::UnorderedElementsAreArray(expected)) << other;
    ASSERT_TRUE(document);
    if (partial == nullptr) continue;
    EXPECT_EQ(firstDifference(*document, *drawingOf(partial)), std::nullopt)
        << archiveOf(*document);
  }
}

TEST_F(Patches, OfHostileRecordsAreMisfitsOrErrors) {
  const auto old = drawingOf("<g><path d='M0 0'/></g><g/>");
  const std::string moved = R"({"kind":"moved","sha1":"1","group":"2","path":)";
  std::string deep = "root", chain;
  for (int i = 0; i < 100'000; ++i) deep += ".children[0]";
  for (int i = 0; i < 20'000; ++i) {
    const std::string index = std::to_string(i), next = std::to_string(i + 1);
    chain += (i == 0 ? "" : ",") + moved + "\"root.children[" + index +
             "]\",\"from\":\"root.children[" + next + "].children[0]\"}";
  }
  for (const std::string& records : std::vector<std::string>{
           "3", "{}", R"({"kind":"bent"})",
           R"({"kind":"changed","path":"title","property":"size"})",
           moved + R"("root.children[0]","from":"root.children[0].children[0]"})",
           moved + R"("root","from":"root.children[0]"})",
           moved + R"("root.children[99999999999999999999]","from":"root.children[0]"})",
           R"({"kind":"removed","sha1":"1","path":")" + deep + "\"}", chain}) {
    const auto list = parsed("[" + records + "]");
    const auto [document, misfits] = patched(*old, *list, nullptr);
    EXPECT_EQ(misfits.size(), list->count()) << records.substr(0, 100);
    ASSERT_TRUE(document);
    EXPECT_EQ(firstDifference(*document, *old), std::nullopt);
  }
  // Values that are not what a drawing contains.
  const auto records =
      changeRecords(differencesOf(*old, *drawingOf("<g><path d='M0 0'/></g><g/><g/>")), *old, *old);
  std::string text = archiveOf(*records);
  for (const char* className : {"TQDocNone", "TQDocPath", "NSDate"}) {
    std::string bent = text;
    bent.replace(bent.find("TQDocGroup"), 10, className);
    tq::Ref<tq::Error> error;
    EXPECT_FALSE(patched(*old, *parsed(bent), &error).document) << bent;
    EXPECT_THAT(std::string(error->localizedDescription()), HasSubstr("do not make a drawing"));
  }
}

}  // namespace
}  // namespace tqdoc
