// The class factory of the plug-in object. Thread-safe.
#pragma once

#include "platform/com.h"
#include "platform/synch.h"

extern LONG g_cLocks;  // counted by LockServer

class COemCF final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) override;

 private:
  ~COemCF() = default;

  LONG m_cRef = 1;
};
