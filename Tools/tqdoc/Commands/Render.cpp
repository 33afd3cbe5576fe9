#include <memory>
#include <string>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

struct Options {
  std::string drawing;
  std::string output;
  int width = 0;
  Overlay overlay;
};

Outcome render(const Options& options) {
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> document = openNamedDrawing(options.drawing, &error).document;
  if (!document || !renderPNG(*document, options.width, options.overlay, options.output, &error)) {
    return reportError(error->localizedDescription());
  }
  return Outcome::success;
}

}  // namespace

void addRenderCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("render", "render a drawing to a PNG file");
  command->add_option("drawing", options->drawing, "a .tqdoc or .svg file")->required();
  command->add_option("-o,--output", options->output, "the PNG file")
      ->option_text("FILE")
      ->required();
  const CLI::Option* width =
      addNumber(*command, "--width", options->width,
                "width in pixels; 0 for the drawing's own size", 0, Canvas::kSideLimit);
  command->add_flag("--bounds", options->overlay.bounds, "mark the tight bounds of every shape");
  command->add_flag("--controls", options->overlay.controls,
                    "draw the control polygon of every outline");
  command->add_flag("--intersections", options->overlay.intersections,
                    "mark the intersections of outlines");
  addExamples(*command, {"tqdoc render drawing.svg -o drawing.png --width 512",
                         "tqdoc render drawing.tqdoc -o drawing.png --bounds --controls"});
  command->callback([options, width, &outcome] {
    if (width->count() == 0) options->width = preferredWidth();
    outcome = render(*options);
  });
}

}  // namespace tqdoc
