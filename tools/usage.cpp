#include "tools/usage.h"

#include <algorithm>
#include <regex>

#include "common/nearest.h"

namespace {

// The innermost command that was given; name: its full name, as "vlx settings show".
const CLI::App* NamedCommand(const CLI::App* app, std::string& name) {
  name = app->get_name();
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    name += " " + app->get_name();
  }
  return app;
}

std::vector<std::string> OptionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

// The first argument that no command or option takes; empty if there is none.
std::string FirstExtra(const CLI::App& program, const std::vector<std::string>& arguments) {
  const std::vector<std::string> extras = program.remaining(true);
  const auto first =
      std::find_first_of(arguments.begin(), arguments.end(), extras.begin(), extras.end());
  return first == arguments.end() ? std::string() : *first;
}

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

std::string Joined(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

// What the parser says, as thing, value and remedy.
std::string Reworded(const CLI::App& command, const std::string& text) {
  std::smatch found;
  static const std::regex choice("(\\S+): (.*) not in \\{(.*)\\}");
  static const std::regex range("(\\S+): Value (.*) not in range (\\S+) to (\\S+)");
  static const std::regex missing("(\\S+): 1 required .* missing");
  static const std::regex number("Could not convert: (\\S+) = (.*)");
  if (std::regex_match(text, found, choice)) {
    return found.str(1) + " is " + Quoted(found.str(2)) + "; choose one of " + found.str(3);
  }
  if (std::regex_match(text, found, range)) {
    return found.str(1) + " is " + Quoted(found.str(2)) + "; give a number from " + found.str(3) +
           " to " + found.str(4);
  }
  if (std::regex_match(text, found, missing)) return found.str(1) + " has no value";
  if (std::regex_match(text, found, number)) {
    return found.str(1) + " is " + Quoted(found.str(2)) + "; give a whole number";
  }
  if (text == "A subcommand is required") {
    return "a command is missing; give one of " + Joined(CommandNames(command));
  }
  return text;
}

}  // namespace

std::string UsageMessage(const CLI::App& program, const std::vector<std::string>& arguments,
                         const CLI::ParseError& error) {
  std::string name;
  const CLI::App* command = NamedCommand(&program, name);
  const std::string extra = FirstExtra(program, arguments);
  const std::string help = name + " --help shows what is possible";
  if (extra.empty()) return name + ": " + Reworded(*command, error.what()) + "; " + help;
  const bool isOption = extra.starts_with('-');
  const std::string nearest = Nearest(extra.substr(0, extra.find('=')),
                                      isOption ? OptionNames(*command) : CommandNames(*command));
  if (nearest.empty()) return name + ": \"" + extra + "\" is not expected; " + help;
  return name + ": there is no " + (isOption ? "option" : "command") + " \"" + extra +
         "\"; did you mean \"" + nearest + "\"? " + help;
}
