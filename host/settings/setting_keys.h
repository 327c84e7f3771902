// The friendly keys of the settings: what each sets and which values it takes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "config/oemdev_fields.h"

struct SettingKey {
  enum class Kind { Text, Number, Flag, Length, Margin, Words, Color, Percent, Paper, Stock };
  std::string_view name;
  Kind kind;
  std::string_view field = "";  // of the private devmode; empty for a setting of the page
  std::string_view words = "";  // "word=value word=value" for Kind::Words
  // The bounds of a number, or of a length in um; a length has none if both are 0.
  LONG least = 0;
  LONG most = 0;

  bool AllowsLength(std::int64_t um) const { return most == 0 || (um >= least && um <= most); }
};

// All keys, in the order in which they are shown.
std::span<const SettingKey> SettingKeys();

// The field that the key sets. The key must have one.
const OemDevField& FieldOfKey(const SettingKey& key);

// The first friendly key of a field; null if it has none.
const SettingKey* KeyOf(const OemDevField& field);

// The name under which a field is set: its friendly key, or "devmode.nCut2Count".
std::string NameOf(const OemDevField& field);

// The word of a Kind::Words key for the value, in quotation marks; nullopt if it has none.
std::optional<std::string> WordOf(const SettingKey& key, std::int64_t value);
