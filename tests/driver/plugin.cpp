#include "tests/driver/plugin.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>

namespace {

const char* Path() {
  const char* other = std::getenv("VLX_TEST_PLUGIN");
  return other != nullptr ? other : PLUGIN_PATH;
}

}  // namespace

Plugin::Plugin() : m_module(dlopen(Path(), RTLD_NOW | RTLD_LOCAL)) {
  if (m_module == nullptr) throw std::runtime_error(dlerror());
  const auto find = [this](auto& function, const char* name) {
    function = reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(m_module, name));
  };
  find(GetClassObject, "DllGetClassObject");
  find(CanUnloadNow, "DllCanUnloadNow");
}

Plugin::~Plugin() { dlclose(m_module); }

bool Plugin::IsLoaded() { return dlopen(Path(), RTLD_NOW | RTLD_NOLOAD) != nullptr; }
