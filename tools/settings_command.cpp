#include "tools/settings_command.h"

#include <toml++/toml.h>

#include <cstdio>
#include <cstring>
#include <sstream>

#include "host/driver/driver.h"
#include "host/driver/module.h"
#include "host/error.h"
#include "host/settings/settings_text.h"
#include "tools/job_options.h"

namespace {

constexpr const char* kSettingsExamples = R"(Examples:
  vlx settings show two-colour.toml --changed
  vlx settings show --set print.speed=150 > fast.toml
  vlx settings devmode saved.bin
  vlx settings keys

The output of show and devmode is a settings file.)";

struct ShowOptions {
  std::string file;
  std::vector<std::string> sets;
  bool changed = false;
  bool json = false;
};

void Print(const SettingsView& view, bool asJson) {
  const std::string text = SettingsText(view);
  if (asJson) {
    const toml::table table = toml::parse(text);
    std::ostringstream json;
    json << toml::json_formatter(table);
    std::printf("%s\n", json.str().c_str());
    return;
  }
  std::fputs(text.empty() ? "# Everything has its default value.\n" : text.c_str(), stdout);
}

int Show(const ShowOptions& options) {
  JobOptions job;
  job.settingsFile = options.file;
  job.sets = options.sets;
  WarnOfSystemFile();
  const Settings settings = ReadSettings(job);
  Spool nowhere;
  LabelDriver driver(FindPlugin(), nowhere);
  const OEMDEV devmode = driver.MakeDevMode(settings, std::nullopt);
  const PageSettings page = settings.Page(), basePage;
  const OEMDEV base = driver.DefaultDevMode();
  Print({&page, devmode, options.changed ? &basePage : nullptr, options.changed ? &base : nullptr},
        options.json);
  return kExitDone;
}

// Names the fields that the plug-in has repaired.
void ReportRepairs(const OEMDEV& stored, const OEMDEV& taken) {
  for (const OemDevField& field : OemDevFields()) {
    const auto at = [&field](const OEMDEV& devmode) {
      return reinterpret_cast<const BYTE*>(&devmode) + field.offset;
    };
    if (std::memcmp(at(stored), at(taken), field.size) == 0) continue;
    std::fprintf(stderr, "%s in the record is out of range; the driver uses the value shown\n",
                 std::string(field.name).c_str());
  }
}

int ShowRecord(const ShowOptions& options) {
  Spool nowhere;
  LabelDriver driver(FindPlugin(), nowhere);
  const DevModeRecord record = ReadDevModeFile(options.file);
  const OEMDEV devmode = driver.MergeDevMode(record);
  const OEMDEV base = driver.DefaultDevMode();
  Print({nullptr, devmode, nullptr, options.changed ? &base : nullptr}, options.json);
  if (record.bytes.size() == sizeof(OEMDEV)) {
    OEMDEV stored;
    std::memcpy(&stored, record.bytes.data(), sizeof stored);
    ReportRepairs(stored, devmode);
  }
  return kExitDone;
}

int ListKeys() {
  for (const SettingKey& key : SettingKeys()) {
    std::printf("%s\t%s\n", std::string(key.name).c_str(), ExpectedValues(key).c_str());
  }
  for (const OemDevField& field : OemDevFields()) {
    std::printf("devmode.%s\t%s\n", std::string(field.name).c_str(), ExpectedValues(field).c_str());
  }
  return kExitDone;
}

}  // namespace

Command SettingsCommand(CLI::App& program) {
  const auto options = std::make_shared<ShowOptions>();
  CLI::App* settings = program.add_subcommand("settings", "Show settings, field by field");
  settings->require_subcommand(1);
  settings->footer(kSettingsExamples);

  CLI::App* show =
      settings->add_subcommand("show", "Show a settings file, completed with the defaults");
  show->add_option("FILE", options->file, "Settings file (TOML); without one, the defaults");
  AddSetOption(*show, options->sets);
  CLI::App* devmode =
      settings->add_subcommand("devmode", "Show a raw settings record of 2708 bytes");
  devmode->add_option("FILE", options->file, "Record saved by --save-devmode")->required();
  for (CLI::App* command : {show, devmode}) {
    command->add_flag("--changed", options->changed, "Show only what differs from the defaults");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer(kSettingsExamples);
  }
  CLI::App* keys =
      settings->add_subcommand("keys", "List every key and, after a tab, its possible values");
  keys->footer(kSettingsExamples);
  return {settings, [=] {
            if (keys->parsed()) return ListKeys();
            return show->parsed() ? Show(*options) : ShowRecord(*options);
          }};
}
