// The settings of a print: from a TOML file, from KEY=VALUE texts and from options of the command
// line. Friendly keys ("print.speed") stand beside the fields of the private devmode by their own
// names ("devmode.dwSpeed").
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "config/oemdev_fields.h"
#include "host/settings/length.h"

// What the public devmode and the driver take.
struct PageSettings {
  PaperSize paper = {100000, 150000};
  bool landscape = false;
  int dpi = 300;
  int copies = 1;
  bool collate = false;
};

class Settings {
 public:
  // All throw HostError (settings) that names the key, the value and the remedy; an unknown key
  // is answered with the nearest known one. A field that two different keys set is a conflict;
  // the same key may be set again, the last one counts.
  void ReadFile(const std::string& path);  // HostError (input) when it cannot be read
  void Set(const std::string& keyAndValue);
  void Set(const std::string& key, const std::string& tomlValue);

  const PageSettings& Page() const { return m_page; }

  // Lays the settings over a record.
  void ApplyTo(OEMDEV& devmode) const;
  // Throws HostError when the record does not hold what was set, because the plug-in found it out
  // of range, or when colour.threshold was set and the record has another ditherer.
  void CheckKept(const OEMDEV& devmode) const;

 private:
  friend class SettingWriter;
  struct FieldBytes {
    std::string key;  // that set the field
    std::string shown;
    std::vector<BYTE> bytes;
  };

  PageSettings m_page;
  std::map<std::size_t, FieldBytes> m_fields;  // by offset in the record
};

// One known friendly key.
struct SettingKey {
  enum class Kind { Text, Number, Flag, Length, Margin, Words, Color, Percent, Paper, Stock };
  std::string_view name;
  Kind kind;
  std::string_view field;  // of the private devmode; empty for a page setting
  std::string_view words;  // "word=value word=value" for Kind::Words
  LONG least = 0;          // for numbers, and lengths in um unless both are 0
  LONG most = 0;

  bool Bears(std::int64_t um) const { return most == 0 || (um >= least && um <= most); }
};
std::span<const SettingKey> SettingKeys();

// The field that a key with one sets.
const OemDevField& FieldOfKey(const SettingKey& key);
