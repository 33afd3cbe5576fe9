#include <iostream>
#include <memory>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Preferences/Preferences.h"

namespace tqdoc {

void addRecentCommand(CLI::App& app, Outcome& outcome) {
  auto clears = std::make_shared<bool>(false);
  CLI::App* command = app.add_subcommand("recent", "list recently opened drawings, latest first");
  command->add_flag("--clear", *clears, "clear the list");
  addExamples(*command, {"tqdoc recent", "tqdoc show \"$(tqdoc recent | head -1)\""});
  command->callback([clears, &outcome] {
    if (*clears) {
      forgetDrawings();
      outcome = saveOptions();
      return;
    }
    outcome = Outcome::success;
    for (const std::string& path : recentDrawings()) std::cout << tq::printableText(path) << '\n';
  });
}

}  // namespace tqdoc
