// The module: its process-wide objects, its entry and its two exported functions.

#include <new>

#include "Renderer/class_factory.h"
#include "Renderer/gdiplus_guard.h"
#include "Renderer/oem_uni2.h"
#include "config/log.h"
#include "config/renderer_class.h"
#include "platform/module.h"

CLoggerClient g_logClient;
ConfigsCache* g_configsCache = nullptr;
CGdiPlusGuard g_gdiPlusGuard;

BOOL APIENTRY DllMain(HMODULE hModule, DWORD dwReason, LPVOID) {
  switch (dwReason) {
    case DLL_PROCESS_ATTACH:
      g_logClient.Initialize(hModule);
      CLogger::StartLogging(g_logClient);
      g_configsCache = ConfigsCache::GetInstance();
      break;
    case DLL_PROCESS_DETACH:
      ConfigsCache::ReleaseInstance();
      g_configsCache = nullptr;
      CLogger::StopLogging(g_logClient);
      break;
  }
  return TRUE;
}

PLATFORM_MODULE_ENTRY

MODULE_EXPORT HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  if (rclsid != kRendererClass) {
    LogError(kNoCategory, "DllGetClassObject: Class not available!");
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  auto* factory = new (std::nothrow) COemCF;
  if (factory == nullptr) {
    LogError(kNoCategory, "DllGetClassObject: Out of Memory!");
    return E_OUTOFMEMORY;
  }
  const HRESULT hr = factory->QueryInterface(riid, ppv);
  factory->Release();
  return hr;
}

MODULE_EXPORT HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  const auto read = [](LONG& count) { return InterlockedCompareExchange(&count, 0, 0); };
  const bool inUse = read(g_cObjects) != 0 || read(g_cLocks) != 0;
  return inUse ? S_FALSE : S_OK;
}
