#include "tests/driver/loader.h"

#include <dlfcn.h>

#include <stdexcept>

namespace loader {

void* Load(const std::string& path) {
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  return module;
}

void Unload(void* module) { dlclose(module); }

void* Find(void* module, const char* name) { return dlsym(module, name); }

bool IsLoaded(const std::string& path) {
  return dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr;
}

}  // namespace loader
