#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Files/FileList.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

struct RenderOptions {
  std::vector<std::string> drawings;
  std::string output;
  int width = 0;
  Overlay overlay;
};

/// Returns the picture's path for each drawing: the output, or names in it if it is a folder.
[[nodiscard]] std::vector<std::string> picturesFor(const std::vector<std::string>& drawings,
                                                   const std::string& output) {
  std::error_code ignored;  // writing the picture reports it
  if (!std::filesystem::is_directory(output, ignored)) return {output};
  std::vector<std::string> pictures;
  for (const std::string& drawing : drawings) {
    const std::filesystem::path name =
        drawing == kStandardStream ? "drawing" : std::filesystem::path(drawing).stem();
    pictures.push_back((output / name) += ".png");
  }
  return pictures;
}

/// Reports an error unless each drawing has a picture of its own, which replaces none of them.
[[nodiscard]] bool areSeparate(std::vector<std::string> pictures,
                               const std::vector<std::string>& drawings) {
  for (const std::string& picture : pictures) {
    if (isOneOf(picture, drawings)) return false;
  }
  std::ranges::sort(pictures);
  const auto twice = std::ranges::adjacent_find(pictures);
  if (twice != pictures.end()) reportError(*twice + ": would be the picture of two drawings");
  return twice == pictures.end();
}

Outcome render(const RenderOptions& options) {
  const std::vector<std::string> drawings = listFiles(options.drawings).files;
  if (drawings.empty()) return reportError("no drawings found");
  const std::vector<std::string> pictures = picturesFor(drawings, options.output);
  if (pictures.size() != drawings.size()) {
    return reportError(options.output + ": must be a folder for several drawings");
  }
  if (!areSeparate(pictures, drawings)) return Outcome::error;
  Outcome outcome = Outcome::success;
  for (std::size_t i = 0; i < drawings.size(); ++i) {
    tq::Ref<tq::Error> error;
    auto [document, leftOut] = openNamedDrawing(drawings[i], &error);
    if (!document ||
        !renderPNG(*document, options.width, options.overlay, pictures[i], leftOut, &error)) {
      outcome = reportError(error->localizedDescription());
    }
    reportUnsupported(drawings[i], leftOut);
  }
  return outcome;
}

}  // namespace

void addRenderCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<RenderOptions>();
  CLI::App* command = app.add_subcommand("render", "render drawings to PNG files");
  command->add_option("drawings", options->drawings, ".svg, .svgz and .tqdoc files, or directories")
      ->required();
  addText(*command, "-o,--output", options->output,
          "the PNG file, or an existing directory for several", "FILE")
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
                         "tqdoc render a.svg b.svg -o pictures",
                         "tqdoc render - -o - < drawing.svg > drawing.png"});
  command->callback([options, width, &outcome] {
    if (width->count() == 0) options->width = preferredWidth();
    outcome = render(*options);
  });
}

}  // namespace tqdoc
