#include <windows.h>

#include <cstring>
#include <stdexcept>

#include "tests/driver/loader.h"

namespace loader {
namespace {

// Wine's gdi32 has no palettes for drivers. They need only a handle that is not null.
HPALETTE APIENTRY CreatePalette(ULONG, ULONG, ULONG*, ULONG, ULONG, ULONG) {
  static int palette;
  return reinterpret_cast<HPALETTE>(&palette);
}

BOOL APIENTRY DeletePalette(HPALETTE) { return TRUE; }

// Supplies a function that the module imports if gdi32 lacks it.
void Supply(HMODULE module, const char* missing, ULONG_PTR function) {
  if (GetProcAddress(GetModuleHandleW(L"gdi32"), missing) != nullptr) return;
  auto* const base = reinterpret_cast<BYTE*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* from = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
  for (; from->Name != 0; ++from) {
    const auto* name = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + from->OriginalFirstThunk);
    auto* place = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + from->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++place) {
      const auto* import = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
      if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal) || std::strcmp(import->Name, missing) != 0) {
        continue;
      }
      DWORD protection;
      VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection);
      place->u1.Function = function;
      VirtualProtect(place, sizeof *place, protection, &protection);
    }
  }
}

void SupplyPalettes(HMODULE module) {
  Supply(module, "EngCreatePalette", reinterpret_cast<ULONG_PTR>(&CreatePalette));
  Supply(module, "EngDeletePalette", reinterpret_cast<ULONG_PTR>(&DeletePalette));
}

}  // namespace

void* Load(const std::string& path) {
  const HMODULE module = LoadLibraryA(path.c_str());
  if (module == nullptr) {
    throw std::runtime_error(path + " cannot be loaded: error " + std::to_string(GetLastError()));
  }
  SupplyPalettes(module);
  SupplyPalettes(GetModuleHandleW(nullptr));
  return module;
}

void Unload(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

void* Find(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

bool IsLoaded(const std::string& path) { return GetModuleHandleA(path.c_str()) != nullptr; }

}  // namespace loader
