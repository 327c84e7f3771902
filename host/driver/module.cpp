#include "host/driver/module.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <filesystem>

#include "host/error.h"
#include "platform/extensions.h"

PluginModule::PluginModule(const std::string& path)
    : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (m_handle == nullptr) {
    throw HostError(kExitInternal, "The plug-in cannot be loaded: " + std::string(dlerror()));
  }
  DllGetClassObject = reinterpret_cast<PFN_DllGetClassObject>(dlsym(m_handle, "DllGetClassObject"));
  DllCanUnloadNow = reinterpret_cast<PFN_DllCanUnloadNow>(dlsym(m_handle, "DllCanUnloadNow"));
  if (DllGetClassObject == nullptr || DllCanUnloadNow == nullptr) {
    dlclose(m_handle);
    throw HostError(kExitInternal, path + " is not a plug-in: an exported function is missing");
  }
}

PluginModule::~PluginModule() {
  // A module whose objects are still in use must stay loaded.
  if (DllCanUnloadNow() == S_OK) dlclose(m_handle);
}

std::string FindPlugin() {
  if (const char* path = std::getenv("VLX_RENDERER"); path != nullptr && *path != '\0') return path;
  // The libraries are installed side by side; the programs are not.
  Dl_info platform = {};
  if (dladdr(dlsym(RTLD_DEFAULT, "OpenPrinterW"), &platform) == 0) platform.dli_fname = "";
  const std::filesystem::path folder = std::filesystem::path(platform.dli_fname).parent_path();
  const std::filesystem::path path = (folder / "libvlx_renderer.so").lexically_normal();
  std::error_code error;
  if (std::filesystem::exists(path, error)) return path.string();
  throw HostError(kExitInternal, "The plug-in " + path.string() + " does not exist",
                  "install it there or set VLX_RENDERER to its path");
}

std::string LibraryPath(const char* name) {
  void* library = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return {};
  const link_map* map = nullptr;
  const std::string path = dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : "";
  dlclose(library);
  return path;
}

std::string SharedLibraryVersion() {
  void* library = dlopen("libvlx_shared.so", RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return "unknown";
  const auto version = reinterpret_cast<const char* (*)()>(dlsym(library, "VlxSharedVersion"));
  std::string text = version == nullptr ? "unknown" : version();
  dlclose(library);
  return text;
}

std::string PlatformLibraryVersion() { return PlatformVersion(); }
