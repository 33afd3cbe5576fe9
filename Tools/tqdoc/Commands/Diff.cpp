#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Model/Differences.h"
#include "Model/PlacedNode.h"
#include "Preferences/Preferences.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

struct Options {
  std::string oldDrawing, newDrawing;
  bool asJSON = false;
  std::string picture;
  int size = 512;
};

/// The appearance of a kind of difference.
struct Look {
  const char* word;
  const char* sign;
  const char* colour;  ///< escape sequence of the terminal
  Color ink;           ///< colour in pictures
};

[[nodiscard]] Look lookOf(Difference::Kind kind) noexcept {
  switch (kind) {
    case Difference::Kind::removed:
      return {"removed", "-", "\033[31m", {0.85, 0.1, 0.1}};
    case Difference::Kind::inserted:
      return {"inserted", "+", "\033[32m", {0, 0.65, 0.2}};
    case Difference::Kind::moved:
      return {"moved", ">", "\033[36m", {0, 0.55, 0.8}};
    default:
      return {"changed", "~", "\033[33m", {1, 0.6, 0}};
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
  const std::string path = printable(difference.path) + "  " + printable(difference.what);
  switch (difference.kind) {
    case Difference::Kind::changed:
      return path + ": " + printable(difference.oldValue) + " -> " + printable(difference.newValue);
    case Difference::Kind::moved:
      return path + " from " + printable(difference.oldPath);
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

void printRecords(const std::vector<Difference>& differences) {
  std::vector<tq::Ref<tq::Object>> records;
  for (const Difference& difference : differences) {
    const auto record = tq::MutableDictionary::dictionary();
    record->setObject(tq::String::of(lookOf(difference.kind).word), "kind");
    record->setObject(jsonText(difference.path), "path");
    record->setObject(jsonText(difference.what), "what");
    if (difference.kind == Difference::Kind::changed) {
      record->setObject(jsonText(difference.oldValue), "old");
      record->setObject(jsonText(difference.newValue), "new");
    }
    if (difference.kind == Difference::Kind::moved) {
      record->setObject(jsonText(difference.oldPath), "from");
    }
    records.push_back(record);
  }
  printJSON(*tq::Array::arrayWithObjects(std::move(records)));
}

/// Adds a mark for each shape and picture of a node, which may be null.
void addMarks(std::vector<Mark>& marks, const Node* node, const Color& color) {
  if (node == nullptr) return;
  for (const PlacedNode& placed : placedNodes(*node)) marks.push_back({placed.node, color});
}

/// Draws both versions with their differences marked, the old one on the left.
[[nodiscard]] bool drawPNG(const Document& oldDrawing, const Document& newDrawing,
                           const std::vector<Difference>& differences, const Options& options,
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
  return canvas.writePNG(options.picture, error);
}

/// As openNamedDrawing(). /dev/null is an empty drawing, because version control uses it for a file
/// that does not exist.
[[nodiscard]] tq::Ref<Document> open(const std::string& path, tq::Ref<tq::Error>* error) {
  if (path != "/dev/null") {
    SvgDrawing drawing = openNamedDrawing(path, error);
    reportUnsupported(path, drawing.leftOut);
    return std::move(drawing.document);
  }
  return tq::makeRef<Document>(nullptr, Document::Page{{}, {}, tq::String::of("")},
                               tq::makeRef<Group>(Node::Traits(), tq::Array::array()),
                               tq::Dictionary::dictionary());
}

Outcome diff(const Options& options) {
  const std::string drawings[] = {options.oldDrawing, options.newDrawing};
  if (isOneOf(options.picture, drawings)) return Outcome::error;
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> oldDrawing = open(options.oldDrawing, &error);
  if (!oldDrawing) return reportError(error->localizedDescription());
  const tq::Ref<Document> newDrawing = open(options.newDrawing, &error);
  if (!newDrawing) return reportError(error->localizedDescription());
  const std::vector<Difference> differences = differencesOf(*oldDrawing, *newDrawing);
  if (options.asJSON) {
    printRecords(differences);
  } else {
    printText(differences);
  }
  if (!options.picture.empty() &&
      !drawPNG(*oldDrawing, *newDrawing, differences, options, &error)) {
    return reportError(error->localizedDescription());
  }
  return differences.empty() ? Outcome::success : Outcome::different;
}

}  // namespace

void addDiffCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("diff", "compare two versions of a drawing");
  command->add_option("old", options->oldDrawing, "a .tqdoc or .svg file, or /dev/null")
      ->required();
  command->add_option("new", options->newDrawing, "the newer version")->required();
  command->add_flag("--json", options->asJSON, "print a JSON array of records");
  command
      ->add_option("--png", options->picture,
                   "write a PNG file of both versions with the differences marked")
      ->option_text("FILE");
  addNumber(*command, "--size", options->size, "width of each version in pixels; default 512", 8,
            4'000);
  addExamples(*command, {"tqdoc diff old.svg new.svg",
                         "tqdoc diff --json old.tqdoc new.tqdoc --png diff.png --size 256"});
  command->callback([options, &outcome] { outcome = diff(*options); });
}

}  // namespace tqdoc
