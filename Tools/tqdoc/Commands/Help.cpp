#include "Commands/Help.h"

#include "Commands/Command.h"

namespace tqdoc {

std::string HelpFormatter::make_option_name(const CLI::Option* option, bool isPositional) const {
  const std::string name = CLI::Formatter::make_option_name(option, isPositional);
  return CLI::detail::find_and_replace(name, "{false}", "");
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  if (option->get_positional()) return "";  // its usage line shows the values
  const std::string value = option->get_option_text();
  return (value.empty() ? "" : " " + value) + (option->get_required() ? " (required)" : "");
}

std::string HelpFormatter::make_option_usage(const CLI::Option* positional) const {
  const std::string text = positional->get_option_text();
  return text.empty() ? CLI::Formatter::make_option_usage(positional) : text;
}

std::string misuse(const CLI::App* app, const CLI::Error& error) {
  const auto commands = app->get_subcommands();
  const auto unknown = app->remaining();
  const std::string whom = commands.empty() ? "" : commands.front()->get_name() + " ";
  const std::string what = commands.empty() && !unknown.empty()
                               ? "unknown command '" + unknown.front() + "'"
                               : error.what();
  return "tqdoc: " + printable(what) + "\nTry 'tqdoc " + whom + "--help' for more information.\n";
}

void addExamples(CLI::App& command, std::initializer_list<const char*> examples) {
  std::string text = "examples:";
  for (const char* example : examples) text += std::string("\n  ") + example;
  command.footer(text);
}

}  // namespace tqdoc
