// The plug-in as a loaded module.
#pragma once

#include <string>

#include "platform/com.h"

using PFN_DllGetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID rclsid, REFIID riid, void** ppv);
using PFN_DllCanUnloadNow = HRESULT(STDAPICALLTYPE*)();

// Loads a plug-in and unloads it again. Throws HostError (internal) that names the file.
class PluginModule {
 public:
  explicit PluginModule(const std::string& path);
  ~PluginModule();
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;

  PFN_DllGetClassObject DllGetClassObject = nullptr;
  PFN_DllCanUnloadNow DllCanUnloadNow = nullptr;

 private:
  void* m_handle;
};

// Where the plug-in lies: VLX_RENDERER when set, else beside the program, which stands in the
// installed tree or in the build tree.
std::string FindPlugin();

// The version of the maker's shared library that the loaded plug-in uses, "unknown" when it tells
// none.
std::string SharedLibraryVersion();
