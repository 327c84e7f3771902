#include "Renderer/gdiplus_guard.h"

namespace {

class Locked {
 public:
  explicit Locked(CRITICAL_SECTION& lock) : m_lock(lock) { EnterCriticalSection(&m_lock); }
  ~Locked() { LeaveCriticalSection(&m_lock); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  CRITICAL_SECTION& m_lock;
};

}  // namespace

CGdiPlusGuard::CGdiPlusGuard() { InitializeCriticalSection(&m_lock); }

CGdiPlusGuard::~CGdiPlusGuard() {
  DeleteCriticalSection(&m_lock);
  if (m_token != 0) Gdiplus::GdiplusShutdown(m_token);
}

void CGdiPlusGuard::Start() {
  const Locked locked(m_lock);
  if (m_startCount == 0) {
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&m_token, &input, nullptr);
  }
  ++m_startCount;
}

void CGdiPlusGuard::Stop() {
  const Locked locked(m_lock);
  if (m_startCount == 0) return;
  if (--m_startCount == 0) {
    Gdiplus::GdiplusShutdown(m_token);
    m_token = 0;
  }
}
