#include "Report/Report.h"

#include <pugixml.hpp>

#include "Report/Markup.h"
#include "Support.h"

namespace tqdoc {
namespace {

/// Parses the page, which is well-formed XML except for its script.
[[nodiscard]] pugi::xml_document parsedPage(std::string page) {
  const std::size_t begin = page.rfind("<script>") + 8;
  page.erase(begin, page.rfind("</script>") - begin);
  pugi::xml_document parsed;
  const auto result = parsed.load_string(page.c_str(), pugi::parse_default | pugi::parse_doctype);
  EXPECT_TRUE(result) << result.description() << ": "
                      << page.substr(std::size_t(result.offset), 200);
  return parsed;
}

[[nodiscard]] Report reportOf(const Document& a, const Document& b, const std::string& name) {
  Report report(64);
  const std::vector<Difference> differences = differencesOf(a, b);
  EXPECT_TRUE(report.add({name, name, name, a, b, differences}, nullptr));
  return report;
}

TEST(Reports, ShowNamesAsText) {
  for (const std::string& name : std::vector<std::string>{
           "</script><img src='x' onerror='alert(1)'/>", "\"><svg onload=alert(1)>",
           "' autofocus onfocus='alert(1)", "]]>&lt;{{script}}<!--", "\x01\xff\xed\xa0\x80"}) {
    const auto drawing = [&](const char* fill) {
      Node::Traits traits;
      traits.name = tq::String::stringWithUTF8Repaired(name);
      const auto style = tq::Dictionary::dictionaryWithEntries(
          {{"fill", tq::String::of(fill)}, {"x", traits.name}});
      const auto shape = tq::makeRef<Shape>(
          traits, tq::makeRef<PathData>("ML", std::vector<double>{0, 0, 1, 1}), style);
      return tq::makeRef<Document>(traits.name, Document::Page{{9, 9}, {0, 0, 9, 9}, traits.name},
                                   tq::makeRef<Group>(traits, tq::Array::arrayWithObjects({shape})),
                                   tq::Dictionary::dictionary());
    };
    Report report = reportOf(*drawing("#000000"),
                             *drawing(name.starts_with('<') ? name.c_str() : "#000001"), name);
    report.addUnreadable(name, name);
    const auto page = parsedPage(report.page());
    const std::set<std::string> plain = {
        "html",   "head",  "meta",  "title",  "style",  "body",       "header", "h1",
        "h2",     "h3",    "p",     "nav",    "table",  "caption",    "thead",  "tbody",
        "tr",     "th",    "td",    "a",      "main",   "section",    "div",    "fieldset",
        "legend", "label", "input", "button", "figure", "figcaption", "img",    "svg",
        "path",   "span",  "bdi",   "code",   "ol",     "li",         "br",     "script"};
    for (const auto& each : page.select_nodes("//*"))
      EXPECT_TRUE(plain.contains(each.node().name())) << each.node().name();
    EXPECT_EQ(
        page.select_nodes(
                "//@*[starts-with(name(), 'on') or name() = 'autofocus' or name() = 'href' and "
                "not(starts-with(., '#')) or name() = 'src' and not(starts-with(., "
                "'data:image/png;'))]")
            .size(),
        0u);
    EXPECT_EQ(page.select_nodes("//script").size(), 1u);
    std::string shown = page.select_node("//h2/bdi").node().text().get();
    EXPECT_EQ(escaped(shown), escaped(name));
  }
}

TEST(Reports, MarkEachChangeInTheDrawingsThatHaveIt) {
  const auto a = drawingOf(
      "<rect id='back' width='120' height='120' fill='#eeeeee'/><g id='g'><rect id='gone' x='10' "
      "y='10' width='20' height='20'/><circle id='nose' cx='90' cy='60' r='6'/></g>");
  const auto b = drawingOf(
      "<rect id='back' width='120' height='120' fill='#ffffee'/><g id='g'/><circle id='nose' "
      "cx='90' cy='60' r='6'/><path id='more' d='M30 90h60' clip-path='url(#c)'/><clipPath "
      "id='c'/>");
  const auto page = parsedPage(reportOf(*a, *b, "a.svg").page());
  const struct {
    const char* kind;
    std::size_t marks[2];
  } cases[] = {{"changed", {1, 1}}, {"removed", {1, 0}}, {"moved", {1, 1}}, {"added", {0, 1}}};
  const auto count = [&](const std::string& query) {
    return page.select_nodes(query.c_str()).size();
  };
  for (const auto& [kind, marks] : cases) {
    const std::string word = kind;
    EXPECT_EQ(
        count("//button[@class='change " + word + "']/span[@class='word'][. = '" + word + "']"), 1u)
        << kind;
    for (const int side : {0, 1}) {
      const std::string figure = side == 0 ? "//figure[@class='old']" : "//figure[@class='new']";
      EXPECT_EQ(count(figure + "//path[starts-with(@class, 'mark " + word + "')]"), marks[side])
          << figure << kind;
      EXPECT_EQ(count(figure + "//span[@class='word'][. = '" + word + "']"), marks[side])
          << figure << kind;
    }
  }
  // The marks and the changes have the same numbers, and the large one is below the others.
  EXPECT_EQ(count("//path[not(@data-mark = //button/@data-mark)]"), 0u);
  EXPECT_EQ(count("//ol//button[not(@data-mark = //path/@data-mark)]"), 0u);
  EXPECT_EQ(
      std::string(page.select_node("//figure//path").node().attribute("d").value()).substr(0, 5),
      "M0 0 ");
  EXPECT_EQ(count("//span[@class='swatch'][@style='background:#eeeeee']"), 1u);
  EXPECT_EQ(count("//img[@width='64'][@height='64']"), 2u);
}

TEST(Reports, HaveAnIndexOfSeveralDrawings) {
  const auto a = drawingOf("<path id='p' d='M0 0h9'/>");
  const auto b = drawingOf("<path id='p' d='M0 0h8'/>");
  Report report = reportOf(*a, *b, "one.svg");
  EXPECT_EQ(parsedPage(report.page()).select_nodes("//nav").size(), 0u);
  EXPECT_TRUE(report.add({"same.svg", "", "", *a, *a, {}}, nullptr));
  report.addUnreadable("bad.svg", "bad.svg:1:2: no");
  const std::string text = report.page();
  EXPECT_THAT(text, HasSubstr("<title>Changes of 2 drawings</title>"));
  EXPECT_THAT(text, HasSubstr("<summary>1 without changes</summary>"));
  EXPECT_THAT(text, HasSubstr("Cannot be read: <bdi>bad.svg:1:2: no</bdi>"));
  const auto page = parsedPage(text);
  EXPECT_EQ(page.select_nodes("//nav//a[substring(@href, 2) = //section/@id]").size(), 2u);
}

}  // namespace
}  // namespace tqdoc
