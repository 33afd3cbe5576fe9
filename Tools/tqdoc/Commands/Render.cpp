#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include "Commands/Command.h"
#include "Files/Drawing.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

struct Options {
  std::string drawing;
  std::string output;
  int width = 0;
  Overlay overlay;
};

[[nodiscard]] int side(double pixels) {
  return static_cast<int>(std::lround(std::clamp(pixels, 1.0, double{Canvas::kSideLimit})));
}

Outcome render(const Options& options) {
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> document = openDrawing(options.drawing, &error).document;
  if (!document) return reportTrouble(error->localizedDescription());
  const tq::Size page = document->page().size;
  const double scale = options.width > 0 ? options.width / page.width : 1;
  Canvas canvas(side(page.width * scale), side(page.height * scale));
  canvas.draw(*document,
              {0, 0, double(side(page.width * scale)), double(side(page.height * scale))},
              options.overlay);
  if (!canvas.writePNG(options.output, &error)) return reportTrouble(error->localizedDescription());
  return Outcome::fine;
}

}  // namespace

void addRenderCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("render", "draw a drawing into a PNG file");
  command->add_option("drawing", options->drawing, "a .tqdoc or .svg file")->required();
  command->add_option("-o,--output", options->output, "the PNG file")->required();
  command->add_option("--width", options->width, "pixels across; by default the drawing's own size")
      ->check(CLI::Range(1, Canvas::kSideLimit));
  command->add_flag("--bounds", options->overlay.bounds, "mark the tight bounds of every shape");
  command->add_flag("--control-polygons", options->overlay.controlPolygons,
                    "join the control points of every outline");
  command->callback([options, &outcome] { outcome = render(*options); });
}

}  // namespace tqdoc
