// Settings as the text of a settings file: what is shown can be read again.
#pragma once

#include <optional>

#include "host/settings/settings.h"

// A TOML document with every setting by its friendly key, and what has none by its field in
// [devmode]; a comment behind each names the field, its offset in the record and its unit. page:
// the settings outside of the record, left out when null. base: only what differs from it is
// listed, everything when null.
struct SettingsView {
  const PageSettings* page;
  const OEMDEV& devmode;
  const PageSettings* basePage = nullptr;
  const OEMDEV* base = nullptr;
};
std::string SettingsText(const SettingsView& view);

// The word of a key with words that stands for the value, in quotes; none when no word does.
std::optional<std::string> WordOf(const SettingKey& key, std::int64_t value);

// What may stand behind a friendly key: its words, separated by spaces, or "<what is expected>".
std::string ExpectedValues(const SettingKey& key);
std::string ExpectedValues(const OemDevField& field);
