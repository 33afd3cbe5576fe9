#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Patch/Patch.h"
#include "Preferences/Preferences.h"

namespace tqdoc {
namespace {

struct PatchOptions {
  std::string drawing, changes, output;
  bool isPartial = false;
  bool gzip = false;
};

/// Returns the parsed records, or null.
[[nodiscard]] tq::Ref<tq::Array> readChanges(const std::string& path, tq::Ref<tq::Error>* error) {
  const auto bytes = readFile(path, error);
  if (!bytes) return nullptr;
  auto changes = tq::refCast<tq::Array>(tq::TQJSONDecoder::initWithData(*bytes)->root());
  if (!changes) tq::setOutError(error, errorWith(path + ": not the output of tqdoc diff --json"));
  return changes;
}

Outcome patch(const PatchOptions& options) {
  const bool isStream = isStandardOutput(options.output);
  if (!isStream && !isArchive(options.output)) {
    return reportError(options.output + ": the name of an archive must end in .tqdoc");
  }
  if (options.drawing == kStandardStream && options.changes == kStandardStream) {
    return reportError("the drawing and the changes cannot both be standard input");
  }
  tq::Ref<tq::Error> error;
  const SvgDrawing drawing = openNamedDrawing(options.drawing, &error);
  if (!drawing.document) return reportError(error->localizedDescription());
  const auto changes = readChanges(options.changes, &error);
  if (!changes) return reportError(error->localizedDescription());
  const auto [document, misfits] = patched(*drawing.document, *changes, &error);
  for (const auto& [path, reason] : misfits) {
    reportError(options.drawing + ": " + path + ": not applied: " + reason);
  }
  if (!document) return reportError(options.changes + ": " + error->localizedDescription());
  const bool isComplete = misfits.empty();
  if (!isComplete && !options.isPartial) {
    reportError(grouped(misfits.size()) + " of " + counted(changes->count(), "change") +
                " not applied; nothing is written (--partial writes the others)");
    return Outcome::different;
  }
  const Packing packing = options.gzip ? Packing::gzip : Packing::none;
  if (!saveArchive(*document, options.output, packing, &error)) {
    return reportError(error->localizedDescription());
  }
  if (!isStream) {
    std::cout << tq::printableText(options.output) << ": "
              << counted(changes->count() - misfits.size(), "change") << " applied\n";
  }
  return isComplete ? Outcome::success : Outcome::different;
}

}  // namespace

void addPatchCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<PatchOptions>();
  CLI::App* command = app.add_subcommand("patch", "apply the output of diff --json to a drawing");
  command->add_option("old", options->drawing, "the drawing that was compared first")->required();
  command->add_option("changes", options->changes, "the output of tqdoc diff --json")->required();
  addText(*command, "-o,--output", options->output, "the archive of the result", "FILE")
      ->required();
  command->add_flag("--partial", options->isPartial,
                    "write the result even if some of the changes do not fit");
  const CLI::Option* gzip =
      command->add_flag("--gzip,!--no-gzip", options->gzip, "compress the archive with gzip");
  addExamples(*command, {"tqdoc diff --json old.svg new.svg > changes.json",
                         "tqdoc patch old.svg changes.json -o new.tqdoc"});
  command->callback([options, gzip, &outcome] {
    if (gzip->count() == 0) options->gzip = preferences::gzip.value();
    outcome = patch(*options);
  });
}

}  // namespace tqdoc
