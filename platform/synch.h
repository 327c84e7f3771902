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
// Returns what stood there; exchange stands there now if that was comparand.
inline LONG InterlockedCompareExchange(LONG volatile* destination, LONG exchange, LONG comparand) {
  __atomic_compare_exchange_n(destination, &comparand, exchange, false, __ATOMIC_SEQ_CST,
                              __ATOMIC_SEQ_CST);
  return comparand;
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
