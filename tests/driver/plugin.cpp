#include "tests/driver/plugin.h"

#include <cstdlib>
#include <stdexcept>

#include "tests/driver/loader.h"

namespace {

std::string OwnPath() {
  const char* other = std::getenv("VLX_TEST_PLUGIN");
  return other != nullptr ? other : PLUGIN_PATH;
}

}  // namespace

Plugin::Plugin(const std::string& path)
    : m_module(loader::Load(path.empty() ? OwnPath() : path)) {
  const auto find = [this](auto& function, const char* name) {
    function = reinterpret_cast<std::decay_t<decltype(function)>>(loader::Find(m_module, name));
    if (function == nullptr) throw std::runtime_error(std::string("There is no export ") + name);
  };
  find(GetClassObject, "DllGetClassObject");
  find(CanUnloadNow, "DllCanUnloadNow");
}

Plugin::~Plugin() { loader::Unload(m_module); }

bool Plugin::IsLoaded() { return loader::IsLoaded(OwnPath()); }
