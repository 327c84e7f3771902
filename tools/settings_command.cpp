#include "tools/settings_command.h"

#include <cstdio>
#include <cstring>

#include "host/driver/driver.h"
#include "host/error.h"
#include "host/settings/settings_text.h"
#include "tools/job_options.h"

namespace {

constexpr const char* kSettingsExamples = R"(Examples:
  vlx settings show two-colour.toml --changed
  vlx settings show --set print.speed=150 > fast.toml
  vlx settings devmode saved.bin
  vlx settings keys

What show and devmode print is a settings file again.)";

struct ShowOptions {
  std::string file;
  std::vector<std::string> sets;
  bool changed = false;
};

void Print(const SettingsView& view) {
  const std::string text = SettingsText(view);
  std::fputs(text.empty() ? "# Everything is as it is by default.\n" : text.c_str(), stdout);
}

int Show(const ShowOptions& options) {
  JobOptions job;
  job.settingsFile = options.file;
  job.sets = options.sets;
  const Settings settings = ReadSettings(job);
  Spool nowhere({});
  LabelDriver driver(FindPlugin(), nowhere);
  const OEMDEV devmode = MakeDevMode(driver, job, settings);
  const PageSettings page = settings.Page(), basePage;
  const OEMDEV base = driver.DefaultDevMode();
  Print({&page, devmode, options.changed ? &basePage : nullptr, options.changed ? &base : nullptr});
  return kExitDone;
}

// A field that the plug-in does not take as it stands in the record.
void TellRepairs(const OEMDEV& stored, const OEMDEV& taken) {
  for (const OemDevField& field : OemDevFields()) {
    const auto at = [&field](const OEMDEV& devmode) {
      return reinterpret_cast<const BYTE*>(&devmode) + field.offset;
    };
    if (std::memcmp(at(stored), at(taken), field.size) == 0) continue;
    std::fprintf(stderr, "%s in the record is out of range; the driver takes what is shown\n",
                 std::string(field.name).c_str());
  }
}

int ShowRecord(const ShowOptions& options) {
  Spool nowhere({});
  LabelDriver driver(FindPlugin(), nowhere);
  const std::vector<BYTE> record = ReadDevModeFile(options.file);
  const OEMDEV devmode = driver.MergeDevMode(record, options.file);
  const OEMDEV base = driver.DefaultDevMode();
  Print({nullptr, devmode, nullptr, options.changed ? &base : nullptr});
  if (record.size() == sizeof(OEMDEV)) {
    OEMDEV stored;
    std::memcpy(&stored, record.data(), sizeof stored);
    TellRepairs(stored, devmode);
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
  CLI::App* settings =
      program.add_subcommand("settings", "Show what settings amount to, field by field");
  settings->require_subcommand(1);
  settings->footer(kSettingsExamples);

  CLI::App* show = settings->add_subcommand("show", "A settings file, completed by the defaults");
  show->add_option("FILE", options->file, "Settings file (TOML); without it the defaults");
  AddSetOption(*show, options->sets);
  CLI::App* devmode = settings->add_subcommand("devmode", "A raw settings record of 2708 bytes");
  devmode->add_option("FILE", options->file, "As --save-devmode writes it")->required();
  for (CLI::App* command : {show, devmode}) {
    command->add_flag("--changed", options->changed, "Only what differs from the defaults");
    command->footer(kSettingsExamples);
  }
  CLI::App* keys =
      settings->add_subcommand("keys", "Every key, with what may stand behind it after a tab");
  keys->footer(kSettingsExamples);
  return {settings, [=] {
            if (keys->parsed()) return ListKeys();
            return show->parsed() ? Show(*options) : ShowRecord(*options);
          }};
}
