#pragma once

/// @file Help.h
/// How the command line explains itself.

#include <concepts>
#include <initializer_list>
#include <string>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

namespace tqdoc {

/// Lays help out: an option's value as its option_text(), and no marks that only a parser needs.
class HelpFormatter final : public CLI::Formatter {
 public:
  [[nodiscard]] std::string make_option_name(const CLI::Option* option,
                                             bool isPositional) const override;
  [[nodiscard]] std::string make_option_opts(const CLI::Option* option) const override;
  [[nodiscard]] std::string make_option_usage(const CLI::Option* positional) const override;
};

/// "tqdoc: <what is wrong>", and whom to ask.
[[nodiscard]] std::string misuse(const CLI::App* app, const CLI::Error& error);

/// The end of a command's help.
void addExamples(CLI::App& command, std::initializer_list<const char*> examples);

/// An option whose value is a number, 0 and above; others are refused, and help tells the range.
template <std::integral Number>
CLI::Option* addNumber(CLI::App& command, const std::string& name, Number& target,
                       const std::string& help, int least, int most) {
  return command
      .add_option(name, target,
                  help + " (" + std::to_string(least) + " to " + std::to_string(most) + ")")
      ->option_text("N")
      ->check(CLI::Range(least, most));
}

}  // namespace tqdoc
