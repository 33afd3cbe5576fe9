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
  const auto unknown = (commands.empty() ? app : commands.front())->remaining();
  const std::string whom = commands.empty() ? "" : commands.front()->get_name() + " ";
  std::string what = error.what();
  if (!unknown.empty() && commands.empty()) what = "unknown command '" + unknown.front() + "'";
  if (!unknown.empty() && !commands.empty() && unknown.front().starts_with('-')) {
    what = "unknown option '" + unknown.front() + "' (write ./" + unknown.front() + " for a file)";
  }
  return "tqdoc: " + tq::printableText(what) + "\nTry 'tqdoc " + whom +
         "--help' for more information.\n";
}

CLI::Option* addText(CLI::App& command, const std::string& name, std::string& target,
                     const std::string& help, const std::string& nameOfValue) {
  return command.add_option(name, target, help)
      ->option_text(nameOfValue)
      ->check([](const std::string& text) { return text.empty() ? "is empty" : ""; });
}

void addExamples(CLI::App& command, std::initializer_list<const char*> examples) {
  std::string text = "examples:";
  for (const char* example : examples) text += std::string("\n  ") + example;
  command.footer(text);
}

}  // namespace tqdoc
