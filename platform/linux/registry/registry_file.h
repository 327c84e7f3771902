// The registry of a text export.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/types.h"

struct RegistryValue {
  DWORD type;
  std::vector<BYTE> data;
};

// A key. Maps are by name in folded case; name is as written. Movable but not copyable, because
// numbered points into subkeys.
struct RegistryKey {
  std::u16string name;
  std::map<std::u16string, RegistryKey> subkeys;
  std::map<std::u16string, RegistryValue> values;
  std::vector<const RegistryKey*> numbered = {};  // the subkeys in the order of their names

  RegistryKey() = default;
  RegistryKey(RegistryKey&&) = default;
  RegistryKey& operator=(RegistryKey&&) = default;
};

// Reads the current user's keys from the bytes of an export. Throws std::runtime_error with the
// line if the text is malformed.
RegistryKey ParseRegistryFile(const std::string& bytes);
