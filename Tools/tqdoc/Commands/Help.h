#pragma once

/// @file Help.h
/// Help texts and error messages of the command line.

#include <concepts>
#include <initializer_list>
#include <string>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

namespace tqdoc {

/// Formats help: shows the option_text() of a value and hides the marks of the parser.
class HelpFormatter final : public CLI::Formatter {
 public:
  [[nodiscard]] std::string make_option_name(const CLI::Option* option,
                                             bool isPositional) const override;
  [[nodiscard]] std::string make_option_opts(const CLI::Option* option) const override;
  [[nodiscard]] std::string make_option_usage(const CLI::Option* positional) const override;
};

/// Returns "tqdoc: <error>" and a hint to the help.
[[nodiscard]] std::string misuse(const CLI::App* app, const CLI::Error& error);

/// Adds examples to the end of a command's help.
void addExamples(CLI::App& command, std::initializer_list<const char*> examples);

/// Adds an option whose value is text, such as the name of a file. Empty text is an error.
CLI::Option* addText(CLI::App& command, const std::string& name, std::string& target,
                     const std::string& help, const std::string& nameOfValue);

/// Adds an option with a number from `least` to `most`. Other values are an error; the help shows
/// the range.
template <std::integral Number>
CLI::Option* addNumber(CLI::App& command, const std::string& name, Number& target,
                       const std::string& help, int least, int most) {
  return command
      .add_option(name, target,
                  help + " (" + std::to_string(least) + " to " + std::to_string(most) + ")")
      ->option_text("N")
      ->check([range = CLI::Range(least, most), least, most](const std::string& word) {
        if (range(word).empty()) return std::string();
        return "'" + word + "' is not a whole number from " + std::to_string(least) + " to " +
               std::to_string(most);
      });
}

}  // namespace tqdoc
