#include "platform/registry.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/extensions.h"
#include "platform/linux/registry/registry_file.h"
#include "platform/linux/state/file_watch.h"
#include "platform/linux/system/handle_table.h"
#include "platform/linux/text/unicode.h"

namespace {

// A key; keeps the whole registry that it belongs to alive.
using OpenKey = std::shared_ptr<const RegistryKey>;

HandleTable<OpenKey>& OpenKeys() {
  static HandleTable<OpenKey> table(0x300000);
  return table;
}

OpenKey Root() {
  static WatchedFile<RegistryKey> file("registry.reg", RegistryKey{}, ParseRegistryFile);
  return file.Get();
}

// Null if the handle is not open.
OpenKey KeyOf(HKEY handle) {
  if (handle == HKEY_CURRENT_USER) return Root();
  const auto found = OpenKeys().Find(handle);
  return found == nullptr ? nullptr : *found;
}

const RegistryKey* Descend(const RegistryKey* key, std::u16string_view path) {
  for (std::size_t at = 0; key != nullptr && at <= path.size() && !path.empty();) {
    const std::size_t end = std::min(path.find(u'\\', at), path.size());
    const auto found = key->subkeys.find(FoldedCase(path.substr(at, end - at)));
    key = found == key->subkeys.end() ? nullptr : &found->second;
    at = end + 1;
  }
  return key;
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD, REGSAM, HKEY* phkResult) try {
  if (phkResult == nullptr) return ERROR_INVALID_PARAMETER;
  *phkResult = nullptr;
  if (PlatformShouldFail("RegOpenKeyExW")) return ERROR_OUTOFMEMORY;
  const OpenKey key = KeyOf(hKey);
  if (key == nullptr) return ERROR_INVALID_HANDLE;
  const RegistryKey* found = Descend(key.get(), lpSubKey == nullptr ? WTEXT("") : lpSubKey);
  if (found == nullptr) return ERROR_FILE_NOT_FOUND;
  *phkResult = OpenKeys().Add(OpenKey(key, found));
  return ERROR_SUCCESS;
} catch (const std::bad_alloc&) {
  return ERROR_OUTOFMEMORY;
}

LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR lpName, LPDWORD lpcchName, LPDWORD, LPWSTR,
                      LPDWORD, void*) try {
  if (lpName == nullptr || lpcchName == nullptr) return ERROR_INVALID_PARAMETER;
  if (PlatformShouldFail("RegEnumKeyExW")) return ERROR_OUTOFMEMORY;
  const OpenKey key = KeyOf(hKey);
  if (key == nullptr) return ERROR_INVALID_HANDLE;
  if (dwIndex >= key->numbered.size()) return ERROR_NO_MORE_ITEMS;
  const std::u16string& name = key->numbered[dwIndex]->name;
  if (*lpcchName <= name.size()) return ERROR_MORE_DATA;
  std::copy_n(name.c_str(), name.size() + 1, lpName);
  *lpcchName = static_cast<DWORD>(name.size());
  return ERROR_SUCCESS;
} catch (const std::bad_alloc&) {
  return ERROR_OUTOFMEMORY;
}

LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD, LPDWORD lpType, LPBYTE lpData,
                         LPDWORD lpcbData) try {
  if (lpData != nullptr && lpcbData == nullptr) return ERROR_INVALID_PARAMETER;
  if (PlatformShouldFail("RegQueryValueExW")) return ERROR_OUTOFMEMORY;
  const OpenKey key = KeyOf(hKey);
  if (key == nullptr) return ERROR_INVALID_HANDLE;
  const auto found = key->values.find(FoldedCase(lpValueName == nullptr ? WTEXT("") : lpValueName));
  if (found == key->values.end()) return ERROR_FILE_NOT_FOUND;
  const RegistryValue& value = found->second;
  if (lpType != nullptr) *lpType = value.type;
  if (lpcbData == nullptr) return ERROR_SUCCESS;
  const DWORD room = *lpcbData;
  *lpcbData = static_cast<DWORD>(value.data.size());
  if (lpData == nullptr) return ERROR_SUCCESS;
  if (room < value.data.size()) return ERROR_MORE_DATA;
  if (!value.data.empty()) std::memcpy(lpData, value.data.data(), value.data.size());
  return ERROR_SUCCESS;
} catch (const std::bad_alloc&) {
  return ERROR_OUTOFMEMORY;
}

LSTATUS RegCloseKey(HKEY hKey) {
  if (hKey == HKEY_CURRENT_USER || OpenKeys().Remove(hKey)) return ERROR_SUCCESS;
  return ERROR_INVALID_HANDLE;
}
