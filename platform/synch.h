// Interlocked counts and the critical section.
#pragma once

#include "platform/types.h"

// Adds or takes 1 atomically and returns the new value.
inline LONG InterlockedIncrement(LONG volatile* addend) {
  return __atomic_add_fetch(addend, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedDecrement(LONG volatile* addend) {
  return __atomic_sub_fetch(addend, 1, __ATOMIC_SEQ_CST);
}

// A recursive lock of one process. 40 bytes, as published; the content is the platform's.
struct CRITICAL_SECTION {
  void* opaque[5];
};
static_assert(sizeof(CRITICAL_SECTION) == 40);

PLATFORM_API void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section);
PLATFORM_API void WINAPI EnterCriticalSection(CRITICAL_SECTION* section);
PLATFORM_API void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section);
PLATFORM_API void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section);
