// Prints settings as a settings file, which can be read again.
#pragma once

#include <string>

#include "host/settings/setting_keys.h"
#include "host/settings/settings.h"

// What is to be printed. Nothing is owned.
struct SettingsView {
  const PageSettings* page;  // the settings outside the record; null: none are printed
  const OEMDEV& devmode;
  // Only what differs from these is printed; null: everything is.
  const PageSettings* basePage = nullptr;
  const OEMDEV* base = nullptr;
};

// A TOML document: settings under their friendly keys, and under [devmode] the fields that have
// none. A comment after each names the field, its offset in the record and its unit.
std::string SettingsText(const SettingsView& view);

// The possible values of a key or field: words separated by spaces, or "<what is expected>".
std::string ExpectedValues(const SettingKey& key);
std::string ExpectedValues(const OemDevField& field);
