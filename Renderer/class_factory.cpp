#include "Renderer/class_factory.h"

#include <new>

#include "Renderer/oem_uni2.h"

LONG g_cLocks = 0;

HRESULT COemCF::QueryInterface(REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  if (riid != IID_IUnknown && riid != IID_IClassFactory) {
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  *ppv = static_cast<IClassFactory*>(this);
  AddRef();
  return S_OK;
}

ULONG COemCF::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_cRef)); }

ULONG COemCF::Release() {
  const LONG count = InterlockedDecrement(&m_cRef);
  if (count == 0) delete this;
  return static_cast<ULONG>(count);
}

HRESULT COemCF::CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  if (pUnkOuter != nullptr) return CLASS_E_NOAGGREGATION;
  auto* object = new (std::nothrow) COemUni2;
  if (object == nullptr) return E_OUTOFMEMORY;
  const HRESULT hr = object->QueryInterface(riid, ppv);
  object->Release();
  return hr;
}

HRESULT COemCF::LockServer(BOOL fLock) {
  if (fLock) {
    InterlockedIncrement(&g_cLocks);
  } else {
    InterlockedDecrement(&g_cLocks);
  }
  return S_OK;
}
