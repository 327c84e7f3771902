#include "tests/windows/module.h"

#include <cstring>
#include <stdexcept>

#ifdef _WIN32

#include <windows.h>

namespace {

// Wine's gdi32 has no EngCreatePalette. A printer driver needs only a handle that is not null.
void* APIENTRY CreatePalette(ULONG, ULONG, ULONG*, ULONG, ULONG, ULONG) {
  static int palette;
  return &palette;
}

// Puts the function above where the loader found none to import.
void SupplyPalette(HMODULE module) {
  constexpr const char* kName = "EngCreatePalette";
  if (GetProcAddress(GetModuleHandleW(L"gdi32"), kName) != nullptr) return;
  auto* const base = reinterpret_cast<BYTE*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* from = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
  for (; from->Name != 0; ++from) {
    const auto* name = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + from->OriginalFirstThunk);
    auto* function = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + from->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++function) {
      const auto* import = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
      if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal) || std::strcmp(import->Name, kName) != 0)
        continue;
      DWORD protection;
      VirtualProtect(function, sizeof *function, PAGE_READWRITE, &protection);
      function->u1.Function = reinterpret_cast<ULONG_PTR>(&CreatePalette);
      VirtualProtect(function, sizeof *function, protection, &protection);
    }
  }
}

void* Load(const std::string& path) {
  const HMODULE module = LoadLibraryA(path.c_str());
  if (module == nullptr) {
    throw std::runtime_error(path + " cannot be loaded: error " + std::to_string(GetLastError()));
  }
  SupplyPalette(module);
  return module;
}

void* Find(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void Unload(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace

#else

#include <dlfcn.h>

namespace {

void* Load(const std::string& path) {
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  return module;
}

void* Find(void* module, const char* name) { return dlsym(module, name); }

void Unload(void* module) { dlclose(module); }

}  // namespace

#endif

Module::Module(const std::string& path) : m_handle(Load(path)) {
  DllGetClassObject =
      reinterpret_cast<decltype(DllGetClassObject)>(Find(m_handle, "DllGetClassObject"));
  DllCanUnloadNow = reinterpret_cast<decltype(DllCanUnloadNow)>(Find(m_handle, "DllCanUnloadNow"));
  if (DllGetClassObject == nullptr || DllCanUnloadNow == nullptr) {
    throw std::runtime_error(path + " lacks an exported function");
  }
}

Module::~Module() { Unload(m_handle); }
