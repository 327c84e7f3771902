// One value of a settings file, read as what its key wants.
#pragma once

#include <toml++/toml.h>

#include <string>
#include <vector>

#include "host/settings/settings.h"

// Every reader throws HostError (settings) with the key, the value and what is expected.
class SettingValue {
 public:
  SettingValue(std::string key, const toml::node& node);

  // The bytes of a field of the private devmode, as its friendly key or its own kind says.
  std::vector<BYTE> AsKey(const SettingKey& key, const OemDevField& field) const;
  std::vector<BYTE> AsField(const OemDevField& field) const;

  std::string Text() const;
  bool Flag() const;
  LONG Number(const SettingKey& key) const;
  LONG Word(const SettingKey& key) const;

  const std::string& Shown() const { return m_shown; }

 private:
  [[noreturn]] void Refuse(const std::string& expected) const;
  std::int64_t Integer(std::int64_t least, std::int64_t most) const;
  COLORREF Color() const;
  std::vector<BYTE> FixedText(std::size_t size) const;
  std::vector<BYTE> Guid() const;

  const std::string m_key;
  const toml::node& m_node;
  std::string m_shown;
};
