#include <cmath>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Model/HitIndex.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

struct HitOptions {
  std::string drawing;
  std::vector<double> area;
  std::string picture;
  bool asJSON = false;
  int width = 0;
};

void printText(const std::vector<const PlacedNode*>& hits) {
  for (const PlacedNode* hit : hits) {
    std::cout << tq::printableText(hit->place) << "  " << shortText(outlineBounds(*hit)) << '\n';
  }
  if (hits.empty()) std::cout << "nothing\n";
}

void printRecords(const std::vector<const PlacedNode*>& hits) {
  std::vector<tq::Ref<tq::Object>> records;
  for (const PlacedNode* hit : hits) {
    const auto record = tq::MutableDictionary::dictionary();
    record->setObject(jsonText(hit->place), "path");
    record->setObject(jsonRect(outlineBounds(*hit)), "bounds");
    records.push_back(record);
  }
  printJSON(*tq::Array::arrayWithObjects(std::move(records)));
}

Outcome hit(const HitOptions& options) {
  tq::Rect area{options.area[0], options.area[1], 0, 0};
  if (options.area.size() == 4) area.size = {options.area[2], options.area[3]};
  if (options.area.size() == 3) return reportError("a rect needs a width and a height");
  const std::string records(options.asJSON ? kStandardStream : "");
  if (isWrittenTwice({options.picture, records})) return Outcome::error;
  if (isOneOf(options.picture, {&options.drawing, 1})) return Outcome::error;
  tq::Ref<tq::Error> error;
  const auto [document, leftOut] = openNamedDrawing(options.drawing, &error);
  if (!document) return reportError(error->localizedDescription());
  reportUnsupported(options.drawing, leftOut);

  const HitIndex index(*document);
  Overlay overlay;
  overlay.area = area;
  const auto hits = index.hits(area);
  for (const PlacedNode* placed : hits) overlay.marks.push_back({placed->node, {1, 0.5, 0}});
  if (options.asJSON) {
    printRecords(hits);
  } else if (!isStandardOutput(options.picture)) {
    printText(hits);
  }
  if (options.picture.empty()) return Outcome::success;
  Features notDrawn;
  if (!renderPNG(*document, options.width, overlay, options.picture, notDrawn, &error)) {
    return reportError(error->localizedDescription());
  }
  reportUnsupported(options.drawing, notDrawn);
  return Outcome::success;
}

}  // namespace

void addHitCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<HitOptions>();
  CLI::App* command =
      app.add_subcommand("hit", "list what is at a point or in a rect, topmost first");
  command->add_option("drawing", options->drawing, "a .tqdoc or .svg file")->required();
  command
      ->add_option("area", options->area,
                   "a point (x y) or a rect (x y width height) in the coordinates of 'tqdoc show'")
      ->option_text("x y [width height]")
      ->required()
      ->expected(2, 4)
      ->check([](const std::string& word) {
        const bool isNumber =
            CLI::Number(word).empty() && std::isfinite(std::strtod(word.c_str(), nullptr));
        return isNumber ? std::string() : "'" + word + "' is not a number";
      });
  addText(*command, "--png", options->picture,
          "write a PNG file of the drawing with the hits marked", "FILE");
  command->add_flag("--json", options->asJSON, "print a JSON array of records");
  const CLI::Option* width =
      addNumber(*command, "--width", options->width,
                "width in pixels; 0 for the drawing's own size", 0, Canvas::kSideLimit);
  addExamples(*command, {"tqdoc hit drawing.svg 24 24",
                         "tqdoc hit drawing.svg 10 10 20 15 --png hit.png --width 512"});
  command->callback([options, width, &outcome] {
    if (width->count() == 0) options->width = preferredWidth();
    outcome = hit(*options);
  });
}

}  // namespace tqdoc
