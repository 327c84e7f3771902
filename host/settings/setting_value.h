// One value of a settings file, converted to what its key expects.
#pragma once

#include <toml++/toml.h>

#include <string>
#include <vector>

#include "host/settings/setting_keys.h"

// Every conversion throws HostError (settings) that names the key, the value and what is expected.
class SettingValue {
 public:
  SettingValue(std::string key, const toml::node& node);

  // The bytes of a field of the private devmode, converted as its friendly key or its own kind
  // demands.
  std::vector<BYTE> AsKey(const SettingKey& key, const OemDevField& field) const;
  std::vector<BYTE> AsField(const OemDevField& field) const;

  std::string Text() const;
  bool Flag() const;
  LONG Number(const SettingKey& key) const;
  LONG Word(const SettingKey& key) const;

  // The value as it was written, for messages.
  const std::string& Shown() const { return m_shown; }

 private:
  [[noreturn]] void Refuse(const std::string& expected) const;
  LONG LengthUm() const;
  std::int64_t Integer(std::int64_t least, std::int64_t most) const;
  COLORREF Color() const;
  std::vector<BYTE> FixedText(std::size_t size) const;
  std::vector<BYTE> Guid() const;

  const std::string m_key;
  const toml::node& m_node;
  std::string m_shown;
};
