#include <exception>

#include "Commands/Command.h"
#include "Model/Document.h"

namespace {

constexpr const char* kExamples = R"(examples:
  tqdoc import drawing.svg -o drawing.tqdoc
  tqdoc show drawing.tqdoc
  tqdoc render drawing.tqdoc -o drawing.png --width 512 --bounds
  tqdoc hit drawing.tqdoc 24 24 --png hit.png --width 512
  tqdoc diff old.svg new.svg
  tqdoc check --draw /usr/share/icons
  tqdoc sheet /usr/share/icons -o sheet.png --count 24
  tqdoc options width 512

exit code: 0 all is well, 1 there are differences, 2 there was trouble)";

}  // namespace

int main(int argc, char** argv) {
  try {
    tqdoc::registerModel();
    tqdoc::Outcome outcome = tqdoc::Outcome::fine;
    CLI::App app("SVG drawings as archives of a document model.", "tqdoc");
    app.footer(kExamples);
    app.require_subcommand(1);
    tqdoc::addImportCommand(app, outcome);
    tqdoc::addShowCommand(app, outcome);
    tqdoc::addRenderCommand(app, outcome);
    tqdoc::addHitCommand(app, outcome);
    tqdoc::addSheetCommand(app, outcome);
    tqdoc::addDiffCommand(app, outcome);
    tqdoc::addCheckCommand(app, outcome);
    tqdoc::addRecentCommand(app, outcome);
    tqdoc::addOptionsCommand(app, outcome);
    try {
      app.parse(argc, argv);
    } catch (const CLI::ParseError& request) {
      // Help is a parse error of code 0.
      const bool fine = app.exit(request) == 0;
      return static_cast<int>(fine ? tqdoc::Outcome::fine : tqdoc::Outcome::trouble);
    }
    return static_cast<int>(outcome);
  } catch (const std::exception& fault) {
    return static_cast<int>(tqdoc::reportTrouble(fault.what()));
  }
}
