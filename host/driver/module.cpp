#include "host/driver/module.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "host/error.h"

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
  // A module that is still in use must stay.
  if (DllCanUnloadNow() == S_OK) dlclose(m_handle);
}

std::string FindPlugin() {
  if (const char* path = std::getenv("VLX_RENDERER"); path != nullptr && *path != '\0') return path;
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path folder = program.parent_path();
  for (const char* libraries : {VLX_LIBRARY_FOLDER, "../lib"}) {
    const std::filesystem::path path = folder / libraries / "libvlx_renderer.so";
    if (std::filesystem::exists(path, error)) return path.lexically_normal().string();
  }
  throw HostError(kExitInternal, "The plug-in libvlx_renderer.so is not beside " +
                                     program.string() + "; set VLX_RENDERER to its path");
}

std::string SharedLibraryVersion() {
  void* library = dlopen("libvlx_shared.so", RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return "unknown";
  const auto version = reinterpret_cast<const char* (*)()>(dlsym(library, "VlxSharedVersion"));
  std::string text = version == nullptr ? "unknown" : version();
  dlclose(library);
  return text;
}
