// The settings of a job: from a TOML file, from KEY=VALUE texts, or key by key from a front end. A
// key is a friendly name ("print.speed", see setting_keys.h) or a field of the private devmode by
// its own name ("devmode.dwSpeed").
#pragma once

#include <map>
#include <string>
#include <vector>

#include "config/oemdev.h"
#include "host/settings/length.h"

// The settings that are not in the private devmode.
struct PageSettings {
  PaperSize paper = {100000, 150000};
  bool landscape = false;
  int dpi = 300;
  int copies = 1;
  bool collate = false;
};

class Settings {
 public:
  // These throw HostError (settings) that names the key, the value and what is expected; for an
  // unknown key it names the nearest known one. A key may be set again, and its last value counts;
  // setting the same field by two different keys is an error.

  // Throws HostError (input) if the file cannot be read.
  void ReadFile(const std::string& path);
  // "KEY=VALUE". Throws HostError (usage) for any other form.
  void Set(const std::string& keyAndValue);
  // value: as in a settings file; a text needs no quotation marks.
  void Set(const std::string& key, const std::string& value);

  const PageSettings& Page() const { return m_page; }
  // Whether a paper size has been set; otherwise Page() has the default.
  bool NamesPaper() const { return m_namesPaper; }

  // Writes the settings into a record; fields that were not set keep their values.
  void ApplyTo(OEMDEV& devmode) const;
  // devmode: what the plug-in made of the record that the settings were applied to. Throws
  // HostError (settings) if it does not hold what was set, because that was out of range, or if a
  // setting has no effect (see setting_pairs.h; colour.threshold with another ditherer). base: the
  // record before the settings were applied.
  void Check(const OEMDEV& devmode, const OEMDEV& base) const;

 private:
  friend class SettingWriter;
  struct FieldBytes {
    std::string key;  // that set the field
    std::string shown;
    std::vector<BYTE> bytes;
  };

  PageSettings m_page;
  bool m_namesPaper = false;
  std::map<std::size_t, FieldBytes> m_fields;  // by offset in the record
};
