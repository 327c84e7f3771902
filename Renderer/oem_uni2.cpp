// The plug-in object: identity, information and capability queries, and the methods it declines.

#include "Renderer/oem_uni2.h"

#include <cassert>
#include <cstring>

#include "config/log.h"

LONG g_cObjects = 0;

namespace {

constexpr DWORD kPluginVersion = 1;

// Hosts probe for this interface; decline without logging.
constexpr IID kProbedInterface = {
    0x4E4A7747, 0xBC76, 0x4AED, {0xAC, 0xC8, 0xC7, 0x6A, 0xF2, 0x2A, 0xAD, 0x43}};

HRESULT Declined(const char* method) {
  LogTrace(kRendering, "Renderer.COemUni2.%s BEGIN", method);
  LogTrace(kRendering, "Renderer.COemUni2.%s END (E_NOTIMPL)", method);
  return E_NOTIMPL;
}

void LogInfoMode(DWORD dwMode) {
  constexpr const char* kLine = "Renderer.COemUni2.GetInfo BEGIN (dwMode=%s)";
  switch (dwMode) {
    case OEMGI_GETSIGNATURE:
      return LogTrace(kRendering, kLine, "OEMGI_GETSIGNATURE");
    case OEMGI_GETVERSION:
      return LogTrace(kRendering, kLine, "OEMGI_GETVERSION");
    case OEMGI_GETREQUESTEDHELPERINTERFACES:
      return LogTrace(kRendering, kLine, "OEMGI_GETREQUESTEDHELPERINTERFACES");
    default:
      return LogTrace(kRendering, "Renderer.COemUni2.GetInfo BEGIN (dwMode=unknown:%d)",
                      static_cast<LONG>(dwMode));
  }
}

}  // namespace

COemUni2::COemUni2() { InterlockedIncrement(&g_cObjects); }

COemUni2::~COemUni2() {
  assert(0 == m_cRef);
  ReleaseDriverInterface();
  InterlockedDecrement(&g_cObjects);
}

void COemUni2::ReleaseDriverInterface() {
  if (m_pDriverUni != nullptr) m_pDriverUni->Release();
  m_pDriverUni = nullptr;
}

HRESULT COemUni2::QueryInterface(REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  if (riid == IID_IUnknown || riid == IID_IPrintOemUni2) {
    *ppv = static_cast<IPrintOemUni2*>(this);
    AddRef();
    return S_OK;
  }
  *ppv = nullptr;
  if (riid != kProbedInterface) {
    LogWarning(kRendering, "COemUni2::QueryInterface called with unknown iid %04X%04X%04X%04X",
               riid.Data1, riid.Data2, riid.Data3, riid.Data4[0] << 8 | riid.Data4[1]);
  }
  return E_NOINTERFACE;
}

ULONG COemUni2::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_cRef)); }

ULONG COemUni2::Release() {
  const LONG count = InterlockedDecrement(&m_cRef);
  if (count == 0) delete this;
  return static_cast<ULONG>(count);
}

HRESULT COemUni2::GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) {
  LogInfoMode(dwMode);
  if (pcbNeeded == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    LogError(kRendering, "Renderer.COemUni2.GetInfo END (E_FAIL, pcbNeeded is NULL)");
    return E_FAIL;
  }
  *pcbNeeded = sizeof(DWORD);
  if (cbSize < sizeof(DWORD) || pBuffer == nullptr) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    LogError(kRendering,
             "Renderer.COemUni2.GetInfo END (E_FAIL, cbSize too small or pBuffer is NULL)");
    return E_FAIL;
  }
  switch (dwMode) {
    case OEMGI_GETSIGNATURE:
      std::memcpy(pBuffer, &kOemDevSignature, sizeof(DWORD));
      LogTrace(kRendering, "Renderer.COemUni2.GetInfo END (S_OK)");
      return S_OK;
    case OEMGI_GETVERSION:
      LogTrace(kRendering, "Renderer.COemUni2.GetInfo: END (S_OK, version=%d)",
               static_cast<LONG>(kPluginVersion));
      std::memcpy(pBuffer, &kPluginVersion, sizeof(DWORD));
      return S_OK;
    case OEMGI_GETREQUESTEDHELPERINTERFACES:
      LogInfo(kRendering, "Renderer.COemUni2.GetInfo END (E_NOTIMPL)");
      return E_NOTIMPL;
    default:
      LogError(kRendering, "Renderer.COemUni2.GetInfo: END (E_FAIL, unknown dwMode %d)",
               static_cast<LONG>(dwMode));
      SetLastError(ERROR_INVALID_PARAMETER);
      return E_FAIL;
  }
}

HRESULT COemUni2::DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) {
  return hrOEMDevMode(g_logClient, g_configsCache, WTEXT(""), dwMode, pOemDMParam);
}

HRESULT COemUni2::PublishDriverInterface(IUnknown* pIUnknown) {
  LogTrace(kRendering, "Renderer.COemUni2.PublishDriverInterface BEGIN");
  if (m_pDriverUni == nullptr) {
    void* driver = nullptr;
    if (pIUnknown == nullptr ||
        FAILED(pIUnknown->QueryInterface(IID_IPrintOemDriverUni, &driver)) || driver == nullptr) {
      LogError(kRendering,
               "Renderer.COemUni2.PublishDriverInterface END (E_FAIL, >QueryInterface for "
               "IID_IPrintOemDriverUni failed)");
      return E_FAIL;
    }
    m_pDriverUni = static_cast<IPrintOemDriverUni*>(driver);
  }
  LogTrace(kRendering, "Renderer.COemUni2.PublishDriverInterface END (S_OK)");
  return S_OK;
}

HRESULT COemUni2::GetImplementedMethod(PSTR pMethodName) {
  constexpr const char* kImplemented[] = {"CommandCallback", "FilterGraphics", "ImageProcessing"};
  LogTrace(kRendering, "Renderer.COemUni2.GetImplementedMethod BEGIN (pMethodName=%s)",
           LogTextFromAnsi(pMethodName).c_str());
  bool implemented = false;
  for (const char* name : kImplemented) {
    implemented |= pMethodName != nullptr && std::strcmp(pMethodName, name) == 0;
  }
  LogTrace(kRendering, "Renderer.COemUni2.GetImplementedMethod END (%s)",
           implemented ? "S_OK" : "S_FALSE");
  return implemented ? S_OK : S_FALSE;
}

HRESULT COemUni2::CommandCallback(PDEVOBJ, DWORD, DWORD, PDWORD, INT* piResult) {
  if (piResult != nullptr) *piResult = 0;
  return S_OK;
}

HRESULT COemUni2::Compression(PDEVOBJ, PBYTE, PBYTE, DWORD, DWORD, INT*) { return E_NOTIMPL; }

HRESULT COemUni2::DriverDMS(PVOID, PVOID, DWORD, PDWORD) { return Declined("DriverDMS"); }

HRESULT COemUni2::HalftonePattern(PDEVOBJ, PBYTE, DWORD, DWORD, DWORD, DWORD, PBYTE, DWORD) {
  return Declined("HalftonePattern");
}

HRESULT COemUni2::MemoryUsage(PDEVOBJ, OEMMEMORYUSAGE*) { return Declined("MemoryUsage"); }

HRESULT COemUni2::TTYGetInfo(PDEVOBJ, DWORD, PVOID, DWORD, DWORD*) {
  return Declined("TTYGetInfo");
}

HRESULT COemUni2::DownloadFontHeader(PDEVOBJ, UNIFONTOBJ*, DWORD*) {
  return Declined("DownloadFontHeader");
}

HRESULT COemUni2::DownloadCharGlyph(PDEVOBJ, UNIFONTOBJ*, HGLYPH, PDWORD, DWORD*) {
  return Declined("DownloadCharGlyph");
}

HRESULT COemUni2::TTDownloadMethod(PDEVOBJ, UNIFONTOBJ*, DWORD*) {
  return Declined("TTDownloadMethod");
}

HRESULT COemUni2::OutputCharStr(PDEVOBJ, UNIFONTOBJ*, DWORD, DWORD, PVOID) {
  return Declined("OutputCharStr");
}

HRESULT COemUni2::SendFontCmd(PDEVOBJ, UNIFONTOBJ*, FINVOCATION*) {
  return Declined("SendFontCmd");
}

HRESULT COemUni2::TextOutAsBitmap(SURFOBJ*, STROBJ*, FONTOBJ*, CLIPOBJ*, RECTL*, RECTL*, BRUSHOBJ*,
                                  BRUSHOBJ*, POINTL*, MIX) {
  return Declined("TextOutAsBitmap");
}

HRESULT COemUni2::WritePrinter(PDEVOBJ, PVOID, DWORD, PDWORD) { return Declined("WritePrinter"); }
