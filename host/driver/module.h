// Finds and loads the plug-in, and tells the versions of the libraries in use.
#pragma once

#include <string>

#include "platform/com.h"

using PFN_DllGetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID rclsid, REFIID riid, void** ppv);
using PFN_DllCanUnloadNow = HRESULT(STDAPICALLTYPE*)();

// Loads a plug-in, and unloads it unless its objects are still in use. The constructor throws
// HostError (internal) that names the file.
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

// The path of the plug-in: the variable VLX_RENDERER if it is set, else the file beside the
// platform library that this process uses. Throws HostError (internal) if it does not exist.
std::string FindPlugin();

// The path of a loaded library, given its file name; empty if it is not loaded.
std::string LibraryPath(const char* name);

// The version of the maker's shared library; "unknown" if it is not loaded or has none.
std::string SharedLibraryVersion();

// The version of the platform library, like "1.0.0".
std::string PlatformLibraryVersion();
