#include "tools/completion_command.h"

#include <cstdio>
#include <sstream>

#include "common/error.h"
#include "host/error.h"
#include "host/settings/printer_profiles.h"
#include "host/settings/settings_text.h"

namespace {

constexpr const char* kCompletionExamples = R"(Examples:
  source <(vlx completion bash)
  vlx completion zsh > ~/.zsh/functions/_vlx
  vlx completion fish > ~/.config/fish/completions/vlx.fish

An installed vlx has them already.)";

// bash splits words at equals signs and completes what follows the last one.
constexpr const char* kBash = R"(_vlx() {
  local words=() current
  read -ra words <<<"${COMP_LINE:0:COMP_POINT}"
  [[ ${COMP_LINE:0:COMP_POINT} == *[[:space:]] ]] && words+=("")
  current=${words[-1]}
  mapfile -t COMPREPLY < <("$1" completion words "${words[@]:1}" 2>/dev/null)
  [[ $current == *=* ]] && COMPREPLY=("${COMPREPLY[@]#"${current%=*}="}")
  [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace 2>/dev/null
  return 0
}
complete -o default -F _vlx vlx
)";

constexpr const char* kZsh = R"zsh(#compdef vlx
_vlx() {
  local -a found
  found=(${(f)"$(${words[1]} completion words "${(@)words[2,CURRENT]}" 2>/dev/null)"})
  if (( ${#found} == 0 )); then
    _files
  elif [[ ${found[1]} == *= ]]; then
    compadd -S '' -- $found
  else
    compadd -- $found
  fi
}
compdef _vlx vlx
)zsh";

constexpr const char* kFish = R"(function __vlx_words
  set -l words (commandline -opc) (commandline -ct)
  $words[1] completion words $words[2..-1] 2>/dev/null
end
complete -c vlx -n 'test (count (__vlx_words)) -gt 0' -f
complete -c vlx -a '(__vlx_words)'
)";

struct Shell {
  const char* name;
  const char* script;
};
constexpr Shell kShells[] = {{"bash", kBash}, {"zsh", kZsh}, {"fish", kFish}};

using Words = std::vector<std::string>;

Words CommandsOf(const CLI::App& app) {
  Words names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

// The choices "{a,b}" among an option's checks.
Words ChoicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{');
  Words choices;
  if (open == type.npos) return choices;
  std::istringstream list(type.substr(open + 1, type.find('}', open) - open - 1));
  for (std::string choice; std::getline(list, choice, ',');) choices.push_back(choice);
  return choices;
}

// KEY= until the key is complete, then KEY=VALUE.
Words SettingWords(const std::string& word) {
  Words settings;
  const auto add = [&](const std::string& key, const std::string& values) {
    if (!word.starts_with(key + "=")) return settings.push_back(key + "=");
    if (values.starts_with('<')) return;
    std::istringstream list(values);
    for (std::string value; list >> value;) settings.push_back(key + "=" + value);
  };
  for (const SettingKey& key : SettingKeys()) add(std::string(key.name), ExpectedValues(key));
  for (const OemDevField& field : OemDevFields()) {
    add("devmode." + std::string(field.name), ExpectedValues(field));
  }
  return settings;
}

Words PrinterNames() {
  Words names;
  try {
    for (const PrinterProfile& profile : PrinterProfiles()) names.push_back(profile.name);
  } catch (const HostError&) {
    // A completion cannot report it.
  }
  return names;
}

Words ValuesOf(const CLI::Option& option, const std::string& word) {
  const std::string name = option.get_name();
  if (name == "--set") return SettingWords(word);
  if (name == "--printer") return PrinterNames();
  return ChoicesOf(option);
}

Words OptionsOf(const CLI::App& app) {
  Words names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

Words Candidates(const CLI::App& program, const Words& words) {
  const CLI::App* app = &program;
  const CLI::Option* awaits = nullptr;  // the option whose value comes next
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const bool isValue = awaits != nullptr;
    awaits = nullptr;
    if (isValue) continue;
    if (words[i].starts_with('-')) {
      const CLI::Option* option = app->get_option_no_throw(words[i]);
      if (option != nullptr && option->get_items_expected_max() != 0) awaits = option;
      continue;
    }
    for (const CLI::App* command : app->get_subcommands([](const CLI::App*) { return true; })) {
      if (command->get_name() == words[i]) app = command;
    }
  }
  const std::string word = words.empty() ? "" : words.back();
  if (awaits != nullptr) return ValuesOf(*awaits, word);
  if (const std::size_t equals = word.find('='); word.starts_with("--") && equals != word.npos) {
    const CLI::Option* option = app->get_option_no_throw(word.substr(0, equals));
    Words values;
    if (option != nullptr) values = ValuesOf(*option, word.substr(equals + 1));
    for (std::string& value : values) value.insert(0, word.substr(0, equals + 1));
    return values;
  }
  if (word.starts_with('-')) return OptionsOf(*app);
  if (app->get_name() == "help") return CommandsOf(program);
  const CLI::Option* argument = app->get_option_no_throw("SHELL");
  return argument != nullptr ? ChoicesOf(*argument) : CommandsOf(*app);
}

}  // namespace

int PrintCompletions(const CLI::App& program, const std::vector<std::string>& words) {
  const std::string word = words.empty() ? "" : words.back();
  for (const std::string& candidate : Candidates(program, words)) {
    if (candidate.starts_with(word)) std::printf("%s\n", candidate.c_str());
  }
  return kExitDone;
}

Command CompletionCommand(CLI::App& program) {
  const auto shell = std::make_shared<std::string>();
  CLI::App* completion =
      program.add_subcommand("completion", "Print the completion script of a shell");
  completion->add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->footer(kCompletionExamples);
  return {completion, [shell] {
            for (const Shell& known : kShells) {
              if (*shell == known.name) std::fputs(known.script, stdout);
            }
            return kExitDone;
          }};
}
