#include <exception>
#include <iostream>
#include <memory>
#include <string_view>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Model/Document.h"

namespace tqdoc {
namespace {

constexpr const char* kFooter = R"(examples:
  tqdoc import drawing.svg -o drawing.tqdoc
  tqdoc show drawing.tqdoc
  tqdoc render drawing.tqdoc -o drawing.png --width 512 --bounds
  tqdoc render - -o - < drawing.svg > drawing.png
  tqdoc hit drawing.tqdoc 24 24 --png hit.png --width 512
  tqdoc diff --html report.html old.svg new.svg
  tqdoc patch old.svg changes.json -o new.tqdoc
  tqdoc check --draw /usr/share/icons
  tqdoc sheet /usr/share/icons -o sheet.png --count 24
  tqdoc options width 512
"tqdoc COMMAND --help" describes a command, "man tqdoc" describes all of them.

exit status: 0 success, 1 differences found, 2 error)";

Outcome run(int argc, char** argv) {
  Outcome outcome = Outcome::success;
  CLI::App app("SVG drawings as archives of a document model.", "tqdoc");
  // Commands inherit what is set before they are added.
  app.formatter(std::make_shared<HelpFormatter>());
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.set_help_flag("-h,--help", "print this help");
  app.require_subcommand(1);
  addImportCommand(app, outcome);
  addShowCommand(app, outcome);
  addRenderCommand(app, outcome);
  addHitCommand(app, outcome);
  addSheetCommand(app, outcome);
  addDiffCommand(app, outcome);
  addPatchCommand(app, outcome);
  addCheckCommand(app, outcome);
  addRecentCommand(app, outcome);
  addOptionsCommand(app, outcome);
  // Commands do not inherit these.
  app.set_help_all_flag("--help-all", "print the help of every command");
  app.set_version_flag("--version", "tqdoc " TQDOC_VERSION, "print the version");
  app.failure_message(misuse);
  app.footer(kFooter);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& request) {
    // A request for help is a parse error with code 0.
    outcome = app.exit(request) == 0 ? Outcome::success : Outcome::error;
  }
  if (!std::cout.flush()) return reportError("cannot write to standard output");
  return outcome;
}

}  // namespace
}  // namespace tqdoc

int main(int argc, char** argv) {
  try {
    tq::UserDefaults::setApplicationDomain("tqdoc");  // independent of the name of the program
    // Errors give the reason. The log would repeat it, with a line for each character of a text
    // that is no archive.
    tq::setPlainLogSink([](std::string_view) {});
    tqdoc::registerModel();
    return static_cast<int>(tqdoc::run(argc, argv));
  } catch (const std::exception&) {
    return static_cast<int>(tqdoc::reportError(tqdoc::exceptionText()));
  }
}
