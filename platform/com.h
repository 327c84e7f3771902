// COM as far as a print plug-in needs it: IUnknown, IClassFactory, memory streams, identifiers.
// Interfaces have no virtual destructor: the slot order is the binary contract.
#pragma once

#include "platform/com_ptr.h"
#include "platform/types.h"

inline constexpr IID IID_IUnknown = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_IClassFactory = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID IID_IStream = {
    0x0000000C, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;

 protected:
  ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid,
                                                   void** ppv) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) = 0;

 protected:
  ~IClassFactory() = default;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct STATSTG {
  LPWSTR pwcsName;
  DWORD type;
  ULARGE_INTEGER cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};
static_assert(sizeof(STATSTG) == 80);

inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;
inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;

struct ISequentialStream : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
  virtual HRESULT STDMETHODCALLTYPE Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;

 protected:
  ~ISequentialStream() = default;
};

// Read returns S_OK also at the end of the stream, with fewer bytes in *pcbRead.
struct IStream : ISequentialStream {
  virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin,
                                         ULARGE_INTEGER* plibNewPosition) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER libNewSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* pstm, ULARGE_INTEGER cb,
                                           ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) = 0;
  virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
  virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb,
                                               DWORD dwLockType) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb,
                                                 DWORD dwLockType) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IStream** ppstm) = 0;

 protected:
  ~IStream() = default;
};

// Creates an empty memory stream with one reference. hGlobal must be null (no initial memory) and
// fDeleteOnRelease TRUE: the memory goes with the stream. Fails with E_INVALIDARG or E_OUTOFMEMORY;
// *ppstm is then null.
PLATFORM_API HRESULT STDAPICALLTYPE CreateStreamOnHGlobal(HGLOBAL hGlobal, BOOL fDeleteOnRelease,
                                                          IStream** ppstm);

// Fills *pguid with a random (version 4, RFC 4122) identifier.
PLATFORM_API HRESULT STDAPICALLTYPE CoCreateGuid(GUID* pguid);

// Reads the registry form "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", letters in either case.
// Anything else: CO_E_CLASSSTRING, *pclsid all zero.
PLATFORM_API HRESULT STDAPICALLTYPE CLSIDFromString(LPCWSTR lpsz, CLSID* pclsid);
