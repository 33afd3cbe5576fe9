#include <iostream>
#include <memory>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Preferences/Preferences.h"

namespace tqdoc {

void addRecentCommand(CLI::App& app, Outcome& outcome) {
  auto clears = std::make_shared<bool>(false);
  CLI::App* command = app.add_subcommand("recent", "the drawings opened last, the last one first");
  command->add_flag("--clear", *clears, "forget them");
  addExamples(*command, {"tqdoc recent", "tqdoc show \"$(tqdoc recent | head -1)\""});
  command->callback([clears, &outcome] {
    outcome = Outcome::fine;
    if (*clears) return forgetDrawings();
    for (const std::string& path : recentDrawings()) std::cout << printable(path) << '\n';
  });
}

}  // namespace tqdoc
