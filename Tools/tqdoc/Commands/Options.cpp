#include <algorithm>
#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Preferences/Preferences.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

/// A preference, with its value as text.
struct Option {
  const char* name;
  const char* help;
  std::function<std::string()> read;
  std::function<bool(const std::string&)> write;  ///< returns false for an invalid value
  std::function<void()> reset;
};

std::optional<std::int64_t> numberIn(const std::string& word, std::int64_t most) {
  std::int64_t number = -1;
  const bool isNumber = CLI::detail::lexical_cast(word, number);
  return isNumber && number >= 0 && number <= most ? std::optional(number) : std::nullopt;
}

Option numberOption(const char* name, const char* help,
                    const tq::Preference<std::int64_t>& preference, std::int64_t most) {
  return {name, help, [&] { return std::to_string(preference.value()); },
          [&preference, most](const std::string& word) {
            const auto number = numberIn(word, most);
            if (number) preference.setValue(*number);
            return number.has_value();
          },
          [&] { preference.removeValue(); }};
}

const std::vector<Option>& allOptions() {
  static const std::vector<Option> all = {
      {"colours", "when diff colours its output: auto, always or never",
       [] { return tq::RawRepresentable<Colours>::rawValue(preferences::colours.value()); },
       [](const std::string& word) {
         const auto colours = tq::RawRepresentable<Colours>::fromRawValue(word);
         if (colours) preferences::colours.setValue(*colours);
         return colours.has_value();
       },
       [] { preferences::colours.removeValue(); }},
      {"gzip", "whether import compresses archives: on or off",
       [] { return std::string(preferences::gzip.value() ? "on" : "off"); },
       [](const std::string& word) {
         const bool isKnown = word == "on" || word == "off";
         if (isKnown) preferences::gzip.setValue(word == "on");
         return isKnown;
       },
       [] { preferences::gzip.removeValue(); }},
      numberOption("width", "width of pictures in pixels; 0 for the drawing's own size",
                   preferences::width, Canvas::kSideLimit),
      numberOption("recent", "number of recent drawings to keep", preferences::recentCount,
                   kMostRecent)};
  return all;
}

struct Words {
  std::string name;
  std::optional<std::string> value;
  bool resets = false;
};

Outcome resetOptions() {
  for (const Option& option : allOptions()) option.reset();
  return saveOptions();
}

Outcome oneOption(const Words& words) {
  const auto& all = allOptions();
  const auto option = std::ranges::find(all, words.name, &Option::name);
  if (option == all.end()) return reportError("unknown option '" + words.name + "'");
  if (words.resets) {
    option->reset();
  } else if (!words.value) {
    std::cout << option->read() << '\n';
    return Outcome::success;
  } else if (!option->write(*words.value)) {
    return reportError("invalid value '" + *words.value + "' for " + words.name + " (" +
                       option->help + ")");
  }
  return saveOptions();
}

Outcome listOptions() {
  constexpr int kNameWidth = 10;
  constexpr int kValueWidth = 8;
  for (const Option& option : allOptions()) {
    std::cout << std::left << std::setw(kNameWidth) << option.name << std::setw(kValueWidth)
              << option.read() << option.help << '\n';
  }
  return Outcome::success;
}

}  // namespace

void addOptionsCommand(CLI::App& app, Outcome& outcome) {
  auto words = std::make_shared<Words>();
  CLI::App* command = app.add_subcommand("options", "print or set the defaults of options");
  command->add_option("name", words->name, "the option; by default all are printed");
  CLI::Option* value = command->add_option("value", words->value, "the new value");
  command->add_flag("--reset", words->resets, "restore the default of one option, or of all")
      ->excludes(value);
  addExamples(*command, {"tqdoc options", "tqdoc options colours never", "tqdoc options --reset"});
  command->callback([words, &outcome] {
    outcome = !words->name.empty() ? oneOption(*words)
              : words->resets      ? resetOptions()
                                   : listOptions();
  });
}

}  // namespace tqdoc
