#include "tools/usage.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

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

// The pieces of the text around the separators, which must occur in this order; empty if one is
// missing.
std::vector<std::string> Split(std::string_view text,
                               std::initializer_list<std::string_view> separators) {
  std::vector<std::string> pieces;
  for (const std::string_view separator : separators) {
    const std::size_t at = text.find(separator);
    if (at == text.npos) return {};
    pieces.emplace_back(text.substr(0, at));
    text.remove_prefix(at + separator.size());
  }
  pieces.emplace_back(text);
  return pieces;
}

// "a,b" as "a, b".
std::string Spaced(const std::string& list) {
  std::string text;
  for (const char c : list) text += c == ',' ? std::string(", ") : std::string(1, c);
  return text;
}

// What the parser says, as thing, value and remedy.
std::string Reworded(const CLI::App& command, const std::string& text) {
  if (const auto choice = Split(text, {": ", " not in {", "}"}); !choice.empty()) {
    return choice[0] + " is " + Quoted(choice[1]) + "; choose one of " + Spaced(choice[2]);
  }
  if (const auto range = Split(text, {": Value ", " not in range ", " to "}); !range.empty()) {
    return range[0] + " is " + Quoted(range[1]) + "; give a number from " + range[2] + " to " +
           range[3];
  }
  if (const auto missing = Split(text, {": 1 required ", " missing"}); !missing.empty()) {
    return missing[0] + " has no value";
  }
  if (const auto number = Split(text, {"Could not convert: ", " = "}); !number.empty()) {
    return number[1] + " is " + Quoted(number[2]) + "; give a whole number";
  }
  if (const auto often = Split(text, {": At Most ", " required but received "}); !often.empty()) {
    return often[0] + " is given " + often[2] + " times; give it once";
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
