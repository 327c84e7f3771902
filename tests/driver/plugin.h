// The plug-in as a module of this process: loaded by its file, entered by its two exports.
#pragma once

#include <string>

#include "platform/com.h"

// At most one at a time; every driver ends before it.
class Plugin {
 public:
  // Loads the plug-in of that path; of this build, or the one that the environment names in
  // VLX_TEST_PLUGIN, if the path is empty. Throws std::runtime_error if there is none.
  explicit Plugin(const std::string& path = {});
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  static constexpr CLSID kClass = {
      0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
  static inline HRESULT(STDAPICALLTYPE* GetClassObject)(REFCLSID rclsid, REFIID riid, void** ppv) = nullptr;
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
