#include "Report/Report.h"

#include "Report/Assets.h"
#include "Report/Markup.h"

namespace tqdoc {

std::size_t Report::addToIndex(const std::string& name, const std::string& cells) {
  ++count_;
  onlyName_ = name;
  index_ += "<tr><th scope=\"row\"><a href=\"#pair-" + std::to_string(count_) + "\">" +
            isolated(name) + "</a></th>" + cells + "</tr>\n";
  return count_;
}

bool Report::add(const ReportedPair& pair, tq::Ref<tq::Error>* error) {
  if (pair.differences.empty()) {
    ++equalCount_;
    equal_ += "<li>" + isolated(pair.name) + "</li>\n";
    return true;
  }
  std::array<std::size_t, 4> counts{};
  for (const Difference& difference : pair.differences) {
    ++counts[static_cast<std::size_t>(difference.kind)];
  }
  const std::string section = sectionOf(pair, count_ + 1, side_, error);
  if (section.empty()) return false;
  using enum Difference::Kind;
  std::string cells;
  for (const auto kind : {inserted, removed, moved, changed}) {
    cells += "<td>" + std::to_string(counts[static_cast<std::size_t>(kind)]) + "</td>";
  }
  addToIndex(pair.name, cells);
  sections_ += section;
  return true;
}

void Report::addUnreadable(const std::string& name, const std::string& reason) {
  const std::string number =
      std::to_string(addToIndex(name, "<td colspan=\"4\" class=\"failed\">cannot be read</td>"));
  sections_ += "<section id=\"pair-" + number + "\" aria-labelledby=\"name-" + number +
               "\">\n<h2 id=\"name-" + number + "\">" + isolated(name) +
               "</h2>\n<p>Cannot be read: " + isolated(reason) + "</p>\n</section>\n";
}

std::string Report::page() const {
  const bool hasIndex = count_ != 1 || equalCount_ > 0;
  std::string title = "Changes of " + onlyName_.substr(onlyName_.rfind('/') + 1);
  std::string index;
  if (hasIndex) {
    title = "Changes of " + std::to_string(count_) + (count_ == 1 ? " drawing" : " drawings");
    index = "<nav aria-label=\"Drawings\">\n";
    if (count_ > 0) {
      index +=
          "<table>\n<caption>Drawings and their changes</caption>\n<thead><tr><th "
          "scope=\"col\">drawing</th><th scope=\"col\">added</th><th "
          "scope=\"col\">removed</th><th scope=\"col\">moved</th><th "
          "scope=\"col\">changed</th></tr></thead>\n<tbody>\n" +
          index_ + "</tbody>\n</table>\n";
    }
    if (equalCount_ > 0) {
      index += "<details><summary>" + std::to_string(equalCount_) + " without changes</summary>\n" +
               "<ul>\n" + equal_ + "</ul></details>\n";
    }
    index += "</nav>";
  }
  return filled(kReportPage, {{"title", escaped(title)},
                              {"style", kReportStyle},
                              {"index", index},
                              {"sections", sections_},
                              {"script", kReportScript}});
}

}  // namespace tqdoc
