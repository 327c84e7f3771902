#include "host/settings/settings.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstring>

#include "common/nearest.h"
#include "host/error.h"
#include "host/file.h"
#include "host/settings/setting_keys.h"
#include "host/settings/setting_pairs.h"
#include "host/settings/setting_value.h"

namespace {

constexpr std::string_view kRawPrefix = "devmode.";

[[noreturn]] void FailUnknown(const std::string& key) {
  std::vector<std::string> known;
  for (const SettingKey& setting : SettingKeys()) known.emplace_back(setting.name);
  for (const OemDevField& field : OemDevFields()) {
    known.push_back(std::string(kRawPrefix) + std::string(field.name));
  }
  const std::string nearest = Nearest(key, known);
  throw HostError(
      kExitSettings, "There is no setting \"" + key + "\"",
      nearest.empty() ? "vlx settings keys lists them" : "did you mean \"" + nearest + "\"?");
}

const OemDevField* FindRawField(std::string_view key) {
  if (!key.starts_with(kRawPrefix)) return nullptr;
  for (const OemDevField& field : OemDevFields()) {
    if (field.name == key.substr(kRawPrefix.size())) return &field;
  }
  return nullptr;
}

template <typename Visit>
void Walk(const toml::table& table, const std::string& prefix, const Visit& visit) {
  for (const auto& [name, node] : table) {
    const std::string key = prefix + std::string(name.str());
    if (const toml::table* inner = node.as_table()) {
      Walk(*inner, key + ".", visit);
    } else {
      visit(key, node);
    }
  }
}

std::string DithererName(WORD ditherer) {
  for (const SettingKey& key : SettingKeys()) {
    if (key.name == "colour.ditherer")
      return WordOf(key, ditherer).value_or(std::to_string(ditherer));
  }
  return std::to_string(ditherer);
}

}  // namespace

// Converts one value as its key demands and stores it in the settings.
class SettingWriter {
 public:
  SettingWriter(Settings& settings, const std::string& key, const toml::node& node)
      : m_settings(settings), m_key(key), m_value(key, node) {}

  void Write() {
    if (const OemDevField* field = FindRawField(m_key)) {
      Put(*field, m_value.AsField(*field));
      return;
    }
    for (const SettingKey& known : SettingKeys()) {
      if (known.name != m_key) continue;
      if (known.field.empty()) {
        WritePage(known);
      } else {
        const OemDevField& field = FieldOfKey(known);
        Put(field, m_value.AsKey(known, field));
      }
      return;
    }
    FailUnknown(m_key);
  }

 private:
  void WritePage(const SettingKey& known) {
    PageSettings& page = m_settings.m_page;
    if (known.name == "paper.size") {
      page.paper = ParsePaperSize(m_value.Text(), m_key);
      m_settings.m_namesPaper = true;
    }
    if (known.name == "paper.orientation") page.landscape = m_value.Word(known) != 0;
    if (known.name == "paper.dpi") page.dpi = static_cast<int>(m_value.Number(known));
    if (known.name == "print.copies") page.copies = static_cast<int>(m_value.Number(known));
    if (known.name == "print.collate") page.collate = m_value.Flag();
  }

  void Put(const OemDevField& field, std::vector<BYTE> bytes) {
    Settings::FieldBytes& place = m_settings.m_fields[field.offset];
    if (!place.key.empty() && place.key != m_key) {
      throw HostError(kExitSettings,
                      "The settings \"" + place.key + "\" (" + place.shown + ") and \"" + m_key +
                          "\" (" + m_value.Shown() + ") set the same thing",
                      "remove one of them");
    }
    place = {m_key, m_value.Shown(), std::move(bytes)};
  }

  Settings& m_settings;
  const std::string& m_key;
  SettingValue m_value;
};

void Settings::ReadFile(const std::string& path) {
  const std::string text = ReadWholeFile(path, "settings file");
  if (text.find('\0') != std::string::npos) {
    throw HostError(kExitSettings, path + " is no settings file, it holds binary data",
                    "give a raw settings record to --devmode or to vlx settings devmode");
  }
  try {
    Walk(toml::parse(text), "", [this](const std::string& key, const toml::node& node) {
      SettingWriter(*this, key, node).Write();
    });
  } catch (const toml::parse_error& error) {
    throw HostError(kExitSettings, path + ", line " + std::to_string(error.source().begin.line) +
                                       ": " + std::string(error.description()));
  } catch (const HostError& error) {
    throw HostError(error.Code(), path + ": " + error.Fact(), error.Remedy());
  }
}

void Settings::Set(const std::string& keyAndValue) {
  const std::size_t equals = keyAndValue.find('=');
  if (equals == std::string::npos || equals == 0) {
    throw HostError(kExitUsage, "The setting is \"" + keyAndValue + "\"", "write KEY=VALUE");
  }
  Set(keyAndValue.substr(0, equals), keyAndValue.substr(equals + 1));
}

// A value that is not valid TOML is taken as a text, because on a command line people do not quote.
void Settings::Set(const std::string& key, const std::string& value) {
  toml::table table;
  try {
    table = toml::parse("value = " + value);
  } catch (const toml::parse_error&) {
    table.clear();
  }
  if (table.size() != 1) table = toml::table{{"value", value}};
  SettingWriter(*this, key, *table.get("value")).Write();
}

void Settings::ApplyTo(OEMDEV& devmode) const {
  for (const auto& [offset, field] : m_fields) {
    std::memcpy(reinterpret_cast<BYTE*>(&devmode) + offset, field.bytes.data(), field.bytes.size());
  }
}

void Settings::Check(const OEMDEV& devmode, const OEMDEV& base) const {
  for (const auto& [offset, field] : m_fields) {
    const BYTE* kept = reinterpret_cast<const BYTE*>(&devmode) + offset;
    if (std::memcmp(kept, field.bytes.data(), field.bytes.size()) == 0) continue;
    if (offset == offsetof(OEMDEV, dwInitialCutSent)) continue;  // the plug-in resets it
    throw HostError(kExitSettings, "The plug-in does not take \"" + field.key +
                                       "\" = " + field.shown + ": the value is out of range");
  }
  CheckSettingPairs(devmode, base, [this](const OemDevField& field) {
    const auto set = m_fields.find(field.offset);
    return set == m_fields.end() ? SetBy() : SetBy{set->second.key, set->second.shown};
  });
  const auto threshold = m_fields.find(offsetof(OEMDEV, byDitherParam));
  if (threshold == m_fields.end() || threshold->second.key != "colour.threshold") return;
  if (devmode.wDitherer == 0) return;
  throw HostError(kExitSettings,
                  "\"colour.threshold\" = " + threshold->second.shown +
                      " is for the ditherer \"threshold\", this one is " +
                      DithererName(devmode.wDitherer),
                  "add colour.ditherer = \"threshold\", or use colour.ditherer_parameter");
}
