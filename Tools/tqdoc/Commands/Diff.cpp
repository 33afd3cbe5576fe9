#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include "Commands/Command.h"
#include "Commands/DrawingPairs.h"
#include "Commands/Help.h"
#include "Model/Differences.h"
#include "Model/PlacedNode.h"
#include "Patch/ChangeRecords.h"
#include "Preferences/Preferences.h"
#include "Render/Canvas.h"
#include "Report/Report.h"

namespace tqdoc {
namespace {

struct DiffOptions {
  std::string oldDrawing, newDrawing;
  std::vector<std::string> more;
  std::string range;
  bool asJSON = false;
  std::string picture, report;
  int size = 512;
};

/// The appearance of a kind of difference.
struct Look {
  const char* sign;
  const char* colour;  ///< escape sequence of the terminal
  Color ink;           ///< colour in pictures
};

[[nodiscard]] Look lookOf(Difference::Kind kind) noexcept {
  switch (kind) {
    case Difference::Kind::removed:
      return {"-", "\033[31m", {0.85, 0.1, 0.1}};
    case Difference::Kind::inserted:
      return {"+", "\033[32m", {0, 0.65, 0.2}};
    case Difference::Kind::moved:
      return {">", "\033[36m", {0, 0.55, 0.8}};
    default:
      return {"~", "\033[33m", {1, 0.6, 0}};
  }
}

/// By default on terminals with colours, unless NO_COLOR is set (no-color.org).
[[nodiscard]] bool wantsColours() {
  const Colours colours = preferences::colours.value();
  if (colours != Colours::automatic) return colours == Colours::always;
  const auto variable = [](const char* name) {
    const char* const value = std::getenv(name);
    return std::string_view(value != nullptr ? value : "");
  };
  return isatty(STDOUT_FILENO) != 0 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

[[nodiscard]] std::string lineFor(const Difference& difference) {
  const std::string path =
      tq::printableText(difference.path) + "  " + tq::printableText(difference.what);
  switch (difference.kind) {
    case Difference::Kind::changed:
      return path + ": " + tq::printableText(difference.oldValue) + " -> " +
             tq::printableText(difference.newValue);
    case Difference::Kind::moved:
      return path + " from " + tq::printableText(difference.oldPath);
    default:
      return path;
  }
}

void printText(const std::vector<Difference>& differences) {
  const bool colours = wantsColours();
  for (const Difference& difference : differences) {
    const Look look = lookOf(difference.kind);
    std::cout << (colours ? look.colour : "") << look.sign << ' ' << lineFor(difference)
              << (colours ? "\033[0m" : "") << '\n';
  }
}

/// Adds a mark for each shape and picture of a node, which may be null.
void addMarks(std::vector<Mark>& marks, const Node* node, const Color& color) {
  if (node == nullptr) return;
  for (const PlacedNode& placed : placedNodes(*node)) marks.push_back({placed.node, color});
}

/// Draws both versions with their differences marked, the old one on the left.
[[nodiscard]] bool drawPNG(const Document& oldDrawing, const Document& newDrawing,
                           const std::vector<Difference>& differences, const DiffOptions& options,
                           tq::Ref<tq::Error>* error) {
  constexpr int kGap = 8;
  Overlay left, right;
  for (const Difference& difference : differences) {
    const Color ink = lookOf(difference.kind).ink;
    addMarks(left.marks, difference.oldNode, ink);
    addMarks(right.marks, difference.newNode, ink);
  }
  const double size = options.size;
  const double width = 2 * size + 3 * kGap;
  const double height = size + 2 * kGap;
  Canvas canvas(static_cast<int>(width), static_cast<int>(height));
  canvas.fill({0, 0, width, height}, {1, 1, 1});
  canvas.draw(oldDrawing, {kGap, kGap, size, size}, left);
  canvas.draw(newDrawing, {size + 2 * kGap, kGap, size, size}, right);
  reportUnsupported(options.picture, canvas.leftOut());
  return canvas.writePNG(options.picture, error);
}

[[nodiscard]] DrawingPair namedPair(const std::string& oldName, const std::string& newName) {
  return {newName == kNoDrawing ? oldName : newName, {oldName, ""}, {newName, ""}};
}

/// Returns the pairs to compare, or no value with an error.
[[nodiscard]] std::optional<std::vector<DrawingPair>> pairsOf(const DiffOptions& options,
                                                              tq::Ref<tq::Error>* error) {
  if (!options.range.empty()) return pairsOfRange(options.range, error);
  std::vector<std::string> names{options.oldDrawing, options.newDrawing};
  names.insert(names.end(), options.more.begin(), options.more.end());
  if (names.size() % 2 != 0) {
    tq::setOutError(error, errorWith(names.back() + ": has no newer version"));
    return std::nullopt;
  }
  std::vector<DrawingPair> pairs;
  for (std::size_t i = 0; i < names.size(); i += 2) {
    std::error_code ignored;
    if (std::filesystem::is_directory(names[i], ignored) &&
        std::filesystem::is_directory(names[i + 1], ignored)) {
      auto inside = pairsOfDirectories(names[i], names[i + 1], error);
      if (!inside) return std::nullopt;
      std::ranges::move(*inside, std::back_inserter(pairs));
    } else {
      pairs.push_back(namedPair(names[i], names[i + 1]));
    }
  }
  return pairs;
}

/// Opens a version and reports what was left out.
[[nodiscard]] tq::Ref<Document> open(const DrawingVersion& version, const DiffOptions& options,
                                     tq::Ref<tq::Error>* error) {
  SvgDrawing drawing = openVersion(version, error);
  reportUnsupported(version.path, drawing.leftOut);
  const bool isNamed = version.path == options.oldDrawing || version.path == options.newDrawing;
  if (isNamed && drawing.document && version.path != kNoDrawing &&
      version.path != kStandardStream) {
    rememberDrawing(version.path);
  }
  return std::move(drawing.document);
}

/// Compares the pairs. Collects the errors of pairs, and goes on with the next one.
class Comparison {
 public:
  Comparison(const DiffOptions& options, bool hasHeadings)
      : options_(options), hasHeadings_(hasHeadings), report_(options.size) {}

  void compare(const DrawingPair& pair) {
    tq::Ref<tq::Error> error;
    try {
      compare(pair, &error);
    } catch (...) {
      error = errorOfException(pair.name);
    }
    if (!error) return;
    report_.addUnreadable(pair.name, error->localizedDescription());
    outcome_ = reportError(error->localizedDescription());
  }

  /// Writes the report, if there is one.
  [[nodiscard]] Outcome finish() {
    if (options_.report.empty()) return outcome_;
    tq::Ref<tq::Error> error;
    const std::string page = report_.page();
    if (saveFile(options_.report, std::as_bytes(std::span(page)), &error)) return outcome_;
    return reportError(error->localizedDescription());
  }

 private:
  void compare(const DrawingPair& pair, tq::Ref<tq::Error>* error) {
    const tq::Ref<Document> oldDrawing = open(pair.oldVersion, options_, error);
    const tq::Ref<Document> newDrawing =
        oldDrawing ? open(pair.newVersion, options_, error) : nullptr;
    if (!newDrawing) return;
    const std::vector<Difference> differences = differencesOf(*oldDrawing, *newDrawing);
    if (!differences.empty()) outcome_ = std::max(outcome_, Outcome::different);
    if (options_.asJSON) {
      printJSON(*changeRecords(differences, *oldDrawing, *newDrawing));
    } else if (!isStandardOutput(options_.report) && !isStandardOutput(options_.picture)) {
      if (hasHeadings_ && !differences.empty()) std::cout << tq::printableText(pair.name) << '\n';
      printText(differences);
    }
    if (!options_.picture.empty() &&
        !drawPNG(*oldDrawing, *newDrawing, differences, options_, error)) {
      return;
    }
    const ReportedPair reported{pair.name,   pair.oldVersion.path, pair.newVersion.path,
                                *oldDrawing, *newDrawing,          differences};
    if (!options_.report.empty()) report_.add(reported, error);
  }

  const DiffOptions& options_;
  const bool hasHeadings_;
  Report report_;
  Outcome outcome_ = Outcome::success;
};

Outcome diff(const DiffOptions& options) {
  tq::Ref<tq::Error> error;
  const std::string records(options.asJSON ? kStandardStream : "");
  if (isWrittenTwice({options.picture, options.report, records})) return Outcome::error;
  const auto pairs = pairsOf(options, &error);
  if (!pairs) return reportError(error->localizedDescription());
  const bool isOne = pairs->size() == 1;
  if (!isOne && (options.asJSON || !options.picture.empty())) {
    return reportError("--json and --png take one pair of drawings, not " + grouped(pairs->size()));
  }
  for (const DrawingPair& pair : *pairs) {
    const std::string drawings[] = {pair.oldVersion.path, pair.newVersion.path};
    for (const std::string& output : {options.picture, options.report}) {
      if (isOneOf(output, drawings)) return Outcome::error;
    }
  }
  const bool isNamed = isOne && pairs->front().newVersion.path == options.newDrawing;
  Comparison comparison(options, !isNamed);
  for (const DrawingPair& pair : *pairs) comparison.compare(pair);
  return comparison.finish();
}

}  // namespace

void addDiffCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<DiffOptions>();
  CLI::App* command = app.add_subcommand("diff", "compare two versions of a drawing");
  CLI::Option* oldDrawing = command->add_option(
      "old", options->oldDrawing, "a .tqdoc or .svg file, /dev/null, or a directory of drawings");
  CLI::Option* newDrawing =
      command->add_option("new", options->newDrawing, "the newer version, or a directory of them");
  command->add_option("more", options->more, "further pairs of an old and a new version");
  CLI::Option* range =
      addText(*command, "--git", options->range,
              "compare the drawings that git diff lists for this range of revisions", "RANGE")
          ->excludes(oldDrawing);
  command->add_flag("--json", options->asJSON, "print a JSON array of records");
  addText(*command, "--png", options->picture,
          "write a PNG file of both versions with the differences marked", "FILE");
  addText(*command, "--html", options->report,
          "write a web page that shows both versions and their differences", "FILE");
  addNumber(*command, "--size", options->size,
            "width of each version in the pictures in pixels; default 512", 8, 4'000);
  addExamples(*command, {"tqdoc diff old.svg new.svg",
                         "tqdoc diff --json old.tqdoc new.tqdoc --png diff.png --size 256",
                         "tqdoc diff --html report.html old-drawings new-drawings",
                         "tqdoc diff --html report.html --git main..HEAD"});
  command->callback([options, range, newDrawing, &outcome] {
    if (range->count() + newDrawing->count() == 0) throw CLI::RequiredError("old and new");
    outcome = diff(*options);
  });
}

}  // namespace tqdoc
