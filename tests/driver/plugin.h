// The plug-in as a module of this process: loaded by its file, entered by its two exports.
#pragma once

#include <string>

#include "platform/com.h"

// Only one may exist at a time, and it outlives every driver.
class Plugin {
 public:
  // Loads the plug-in at that path; if the path is empty, the one that VLX_TEST_PLUGIN names or
  // that of this build. Throws std::runtime_error if it cannot be loaded.
  explicit Plugin(const std::string& path = {});
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  static constexpr CLSID kClass = {
      0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
  static inline HRESULT(STDAPICALLTYPE* GetClassObject)(REFCLSID rclsid, REFIID riid,
                                                        void** ppv) = nullptr;
  static inline HRESULT(STDAPICALLTYPE* CanUnloadNow)() = nullptr;

  // Whether the plug-in of this build is in this process.
  static bool IsLoaded();

 private:
  void* m_module;
};

// Marks a stretch in which the plug-in runs, or within one a callback of the driver. Injected
// failures happen only inside the plug-in.
class InPlugin {
 public:
  explicit InPlugin(bool inside) : m_before(s_inside) { s_inside = inside; }
  ~InPlugin() { s_inside = m_before; }
  InPlugin(const InPlugin&) = delete;
  InPlugin& operator=(const InPlugin&) = delete;
  static bool Now() { return s_inside; }

 private:
  static inline thread_local bool s_inside = false;
  const bool m_before;
};
