// The registry as read from a text export.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/types.h"

struct RegistryValue {
  DWORD type;
  std::vector<BYTE> data;
};

// Subkeys and values by their names without case; the names as written are kept beside. A key can
// be moved, not copied: its numbers lead to its own subkeys.
struct RegistryKey {
  std::u16string name;
  std::map<std::u16string, RegistryKey> subkeys;
  std::map<std::u16string, RegistryValue> values;
  std::vector<const RegistryKey*> numbered = {};  // the subkeys in the order of their names

  RegistryKey() = default;
  RegistryKey(RegistryKey&&) = default;
  RegistryKey& operator=(RegistryKey&&) = default;
};

// What the file's bytes say of the current user's keys. Throws std::runtime_error that names the
// line for a malformed text.
RegistryKey ParseRegistryFile(const std::string& bytes);
