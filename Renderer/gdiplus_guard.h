// Counted start-up of GDI+, one object per process. Thread-safe.
#pragma once

#include "platform/gdiplus.h"
#include "platform/synch.h"

class CGdiPlusGuard {
 public:
  CGdiPlusGuard();
  ~CGdiPlusGuard();  // shuts GDI+ down if it is still running
  CGdiPlusGuard(const CGdiPlusGuard&) = delete;
  CGdiPlusGuard& operator=(const CGdiPlusGuard&) = delete;

  void Start();
  void Stop();  // does nothing without a matching Start

 private:
  CRITICAL_SECTION m_lock;
  DWORD m_startCount = 0;
  ULONG_PTR m_token = 0;
};

extern CGdiPlusGuard g_gdiPlusGuard;
