// Prints settings as a settings file, which can be read again.
#pragma once

#include <string>

#include "host/settings/setting_keys.h"
#include "host/settings/settings.h"

// What is to be printed. page: the settings outside of the record; left out if null. base and
// basePage: only what differs from them is printed; everything if null.
struct SettingsView {
  const PageSettings* page;
  const OEMDEV& devmode;
  const PageSettings* basePage = nullptr;
  const OEMDEV* base = nullptr;
};

// A TOML document: every setting under its friendly key, and under [devmode] the fields that have
// none. A comment behind each names the field, its offset in the record and its unit.
std::string SettingsText(const SettingsView& view);

// The possible values of a key or field: its words, separated by spaces, or "<what is expected>".
std::string ExpectedValues(const SettingKey& key);
std::string ExpectedValues(const OemDevField& field);
