// The loader's process notification. A module that wants it defines DllMain and, in the same source
// file below its process-wide objects, writes PLATFORM_MODULE_ENTRY once: attach then comes after
// the construction of those objects, detach before their destruction.
#pragma once

#include "platform/types.h"

inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;
inline constexpr DWORD DLL_THREAD_ATTACH = 2;
inline constexpr DWORD DLL_THREAD_DETACH = 3;

BOOL APIENTRY DllMain(HMODULE hModule, DWORD dwReason, LPVOID lpReserved);

extern "C" __attribute__((visibility("hidden"))) void* __dso_handle;

#define PLATFORM_MODULE_ENTRY                                               \
  namespace {                                                               \
  const struct ModuleEntry {                                                \
    ModuleEntry() { DllMain(&__dso_handle, DLL_PROCESS_ATTACH, nullptr); }  \
    ~ModuleEntry() { DllMain(&__dso_handle, DLL_PROCESS_DETACH, nullptr); } \
  } moduleEntry;                                                            \
  }
