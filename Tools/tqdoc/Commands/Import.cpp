#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Preferences/Preferences.h"

namespace tqdoc {
namespace {

struct ImportOptions {
  std::string drawing;
  std::string output;
  bool gzip = false;
};

Outcome import(const ImportOptions& options) {
  std::string output = options.output;
  if (output.empty() && options.drawing == kStandardStream) output = kStandardStream;
  if (output.empty()) output = std::filesystem::path(options.drawing).replace_extension("tqdoc");
  const bool isStream = isStandardOutput(output);
  if (!isStream && !isArchive(output))
    return reportError(output + ": the name of an archive must end in .tqdoc");
  tq::Ref<tq::Error> error;
  const SvgDrawing drawing = openNamedDrawing(options.drawing, &error);
  const Packing packing = options.gzip ? Packing::gzip : Packing::none;
  if (!drawing.document || !saveArchive(*drawing.document, output, packing, &error)) {
    return reportError(error->localizedDescription());
  }
  reportUnsupported(options.drawing, drawing.leftOut);
  if (isStream) return Outcome::success;
  std::error_code fault;
  const std::uintmax_t size = std::filesystem::file_size(output, fault);
  if (fault) return reportError(output + ": " + fault.message());
  std::cout << tq::printableText(output) << ": " << counted(drawing.document->shapeCount(), "shape")
            << ", " << counted(size, "byte") << '\n';
  return Outcome::success;
}

}  // namespace

void addImportCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<ImportOptions>();
  CLI::App* command = app.add_subcommand("import", "import an SVG drawing into an archive");
  command->add_option("drawing", options->drawing, "an .svg file")->required();
  addText(*command, "-o,--output", options->output,
          "the archive; by default the drawing's name with the extension .tqdoc", "FILE");
  const CLI::Option* gzip =
      command->add_flag("--gzip,!--no-gzip", options->gzip, "compress the archive with gzip");
  addExamples(*command, {"tqdoc import drawing.svg",
                         "tqdoc import drawing.svg -o archives/drawing.tqdoc --gzip"});
  command->callback([options, gzip, &outcome] {
    if (gzip->count() == 0) options->gzip = preferences::gzip.value();
    outcome = import(*options);
  });
}

}  // namespace tqdoc
