// A plug-in that is loaded as the system's loader loads it.
#pragma once

#include <string>

#include "platform/com.h"

class Module {
 public:
  // Throws std::runtime_error if the file is no plug-in.
  explicit Module(const std::string& path);
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  ~Module();

  HRESULT(STDAPICALLTYPE* DllGetClassObject)(REFCLSID, REFIID, void**) = nullptr;
  HRESULT(STDAPICALLTYPE* DllCanUnloadNow)() = nullptr;

 private:
  void* m_handle;
};
