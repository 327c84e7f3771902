// Last error, memory blocks, critical sections and local time.

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "platform/extensions.h"
#include "platform/memory.h"
#include "platform/synch.h"
#include "platform/text.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

void* Allocate(const char* call, UINT flags, SIZE_T bytes) {
  void* block = nullptr;
  if (!PlatformShouldFail(call)) {
    bytes = std::max<SIZE_T>(bytes, 1);
    block = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, bytes) : std::malloc(bytes);
  }
  if (block == nullptr) lastError = ERROR_NOT_ENOUGH_MEMORY;
  return block;
}

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION));

pthread_mutex_t* MutexOf(CRITICAL_SECTION* section) {
  return reinterpret_cast<pthread_mutex_t*>(section->opaque);
}

}  // namespace

DWORD GetLastError() { return lastError; }
void SetLastError(DWORD dwErrCode) { lastError = dwErrCode; }

HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes) { return Allocate("LocalAlloc", uFlags, uBytes); }
HGLOBAL GlobalAlloc(UINT uFlags, SIZE_T dwBytes) {
  return Allocate("GlobalAlloc", uFlags, dwBytes);
}

HLOCAL LocalReAlloc(HLOCAL hMem, SIZE_T uBytes, UINT uFlags) {
  void* block = nullptr;
  const bool valid = hMem != nullptr && uFlags == LMEM_MOVEABLE;
  if (valid && !PlatformShouldFail("LocalReAlloc")) {
    block = std::realloc(hMem, std::max<SIZE_T>(uBytes, 1));
  }
  if (block == nullptr) lastError = valid ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_PARAMETER;
  return block;
}

HLOCAL LocalFree(HLOCAL hMem) {
  std::free(hMem);
  return nullptr;
}
HGLOBAL GlobalFree(HGLOBAL hMem) { return LocalFree(hMem); }

const char* PlatformVersion() { return VLX_VERSION; }

void InitializeCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(MutexOf(section), &attributes);
  pthread_mutexattr_destroy(&attributes);
}
void EnterCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_lock(MutexOf(section)); }
void LeaveCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(MutexOf(section)); }
void DeleteCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_destroy(MutexOf(section)); }

void GetLocalTime(SYSTEMTIME* lpSystemTime) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  *lpSystemTime = {
      static_cast<WORD>(local.tm_year + 1900), static_cast<WORD>(local.tm_mon + 1),
      static_cast<WORD>(local.tm_wday),        static_cast<WORD>(local.tm_mday),
      static_cast<WORD>(local.tm_hour),        static_cast<WORD>(local.tm_min),
      static_cast<WORD>(local.tm_sec),         static_cast<WORD>(now.tv_nsec / 1000000)};
}
