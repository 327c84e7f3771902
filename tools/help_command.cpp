#include "tools/help_command.h"

#include <algorithm>
#include <cstdio>

#include "common/error.h"
#include "common/nearest.h"
#include "host/driver/driver.h"
#include "host/driver/module.h"

namespace {

constexpr const char* kHelpExamples = R"(Examples:
  vlx help print
  vlx help settings show)";

class Layout final : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    if (!option->get_option_text().empty()) return " " + option->get_option_text();
    if (option->get_items_expected_max() == 0) return {};
    if (option->get_positional()) return option->get_expected_max() > 1 ? " ..." : "";
    const std::string type = option->get_type_name();
    if (const std::size_t open = type.find('{'); open != type.npos) {
      std::string choices = type.substr(open + 1, type.find('}', open) - open - 1);
      std::replace(choices.begin(), choices.end(), ',', '|');
      return " " + choices;
    }
    return type.starts_with("TEXT") ? " TEXT" : " N";
  }
};

const CLI::App& FindCommand(const CLI::App& program, const std::vector<std::string>& names,
                            std::string& title) {
  const CLI::App* app = &program;
  for (const std::string& name : names) {
    const auto commands = app->get_subcommands([](const CLI::App*) { return true; });
    const auto found = std::find_if(commands.begin(), commands.end(), [&](const CLI::App* command) {
      return command->get_name() == name;
    });
    if (found == commands.end()) {
      std::vector<std::string> known;
      for (const CLI::App* command : commands) known.push_back(command->get_name());
      const std::string nearest = Nearest(name, known);
      throw CommandError(
          kExitUsage, "There is no command \"" + title + " " + name + "\"",
          nearest.empty() ? "vlx help lists the commands" : "did you mean \"" + nearest + "\"?");
    }
    title += " " + name;
    app = *found;
  }
  return *app;
}

}  // namespace

int ShowVersion() {
  Spool nowhere;
  const std::string plugin = FindPlugin();
  const LabelDriver driver(plugin, nowhere);
  std::printf("vlx %s\nplatform library %s\nshared library %s\nplug-in interface %u (%s)\n",
              VLX_VERSION, PlatformLibraryVersion().c_str(), SharedLibraryVersion().c_str(),
              driver.PluginVersion(), plugin.c_str());
  return kExitDone;
}

std::shared_ptr<CLI::FormatterBase> HelpLayout() { return std::make_shared<Layout>(); }

Command HelpCommand(CLI::App& program) {
  const auto names = std::make_shared<std::vector<std::string>>();
  CLI::App* help = program.add_subcommand("help", "Show the options and examples of a command");
  help->add_option("COMMAND", *names, "The command; all of them by default");
  help->footer(kHelpExamples);
  return {help, [names, &program] {
            std::string title = "vlx";
            const CLI::App& app = FindCommand(program, *names, title);
            std::fputs(
                app.get_formatter()->make_help(&app, title, CLI::AppFormatMode::Normal).c_str(),
                stdout);
            return kExitDone;
          }};
}

Command VersionCommand(CLI::App& program) {
  CLI::App* version =
      program.add_subcommand("version", "Show the versions of the program and its libraries");
  version->footer("Examples:\n  vlx version");
  return {version, ShowVersion};
}
