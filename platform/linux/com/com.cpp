// Memory streams and identifiers.

#include "platform/com.h"

#include <sys/random.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/extensions.h"
#include "platform/synch.h"

namespace {

constexpr DWORD kStreamType = 2;  // STGTY_STREAM
constexpr std::uint64_t kLargestStream = 0x7FFFFFFF;

class MemoryStream final : public IStream {
 public:
  MemoryStream() = default;
  MemoryStream(const MemoryStream&) = delete;
  MemoryStream& operator=(const MemoryStream&) = delete;
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_ISequentialStream && riid != IID_IStream) {
      return E_NOINTERFACE;
    }
    *ppv = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_cRef)); }
  ULONG Release() override {
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
  }

  HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override {
    if (pcbRead != nullptr) *pcbRead = 0;
    if (pv == nullptr) return STG_E_INVALIDPOINTER;
    if (PlatformShouldFail("IStream::Read")) return E_OUTOFMEMORY;
    const std::uint64_t left = m_position < m_size ? m_size - m_position : 0;
    const auto count = static_cast<ULONG>(std::min<std::uint64_t>(cb, left));
    if (count != 0) std::memcpy(pv, m_bytes + m_position, count);
    m_position += count;
    if (pcbRead != nullptr) *pcbRead = count;
    return S_OK;
  }
  HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) override {
    if (pcbWritten != nullptr) *pcbWritten = 0;
    if (pv == nullptr) return STG_E_INVALIDPOINTER;
    if (PlatformShouldFail("IStream::Write") || !Reach(m_position + cb)) return STG_E_MEDIUMFULL;
    if (cb != 0) std::memcpy(m_bytes + m_position, pv, cb);
    m_position += cb;
    if (pcbWritten != nullptr) *pcbWritten = cb;
    return S_OK;
  }
  HRESULT Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin, ULARGE_INTEGER* plibNewPosition) override {
    if (PlatformShouldFail("IStream::Seek")) return E_OUTOFMEMORY;
    std::int64_t base = 0;
    if (dwOrigin == STREAM_SEEK_CUR) base = static_cast<std::int64_t>(m_position);
    if (dwOrigin == STREAM_SEEK_END) base = static_cast<std::int64_t>(m_size);
    std::int64_t target = 0;
    if (dwOrigin > STREAM_SEEK_END || __builtin_add_overflow(base, dlibMove.QuadPart, &target) ||
        target < 0) {
      return STG_E_INVALIDFUNCTION;
    }
    m_position = static_cast<std::uint64_t>(target);
    if (plibNewPosition != nullptr) plibNewPosition->QuadPart = m_position;
    return S_OK;
  }
  HRESULT SetSize(ULARGE_INTEGER libNewSize) override {
    if (!Reach(libNewSize.QuadPart)) return STG_E_MEDIUMFULL;
    m_size = libNewSize.QuadPart;
    return S_OK;
  }
  HRESULT CopyTo(IStream* pstm, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                 ULARGE_INTEGER* pcbWritten) override {
    if (pstm == nullptr) return STG_E_INVALIDPOINTER;
    const std::uint64_t left = m_position < m_size ? m_size - m_position : 0;
    const auto count = static_cast<ULONG>(std::min<std::uint64_t>(cb.QuadPart, left));
    ULONG written = 0;
    static constexpr BYTE kNothing = 0;
    const HRESULT hr = pstm->Write(count == 0 ? &kNothing : m_bytes + m_position, count, &written);
    m_position += count;
    if (pcbRead != nullptr) pcbRead->QuadPart = count;
    if (pcbWritten != nullptr) pcbWritten->QuadPart = written;
    return hr;
  }
  HRESULT Commit(DWORD) override { return S_OK; }
  HRESULT Revert() override { return S_OK; }
  HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT Stat(STATSTG* pstatstg, DWORD) override {
    if (pstatstg == nullptr) return STG_E_INVALIDPOINTER;
    if (PlatformShouldFail("IStream::Stat")) return E_OUTOFMEMORY;
    *pstatstg = {};
    pstatstg->type = kStreamType;
    pstatstg->cbSize.QuadPart = m_size;
    return S_OK;
  }
  HRESULT Clone(IStream** ppstm) override {
    if (ppstm != nullptr) *ppstm = nullptr;
    return E_NOTIMPL;
  }

 private:
  ~MemoryStream() { std::free(m_bytes); }

  // Grows the content to that size at least, with zeros. Returns false if there is no memory.
  bool Reach(std::uint64_t size) {
    if (size > kLargestStream) return false;
    if (size <= m_size) return true;
    if (size > m_room) {
      const std::uint64_t room = m_bytes == nullptr ? size : size + size / 2;
      auto* larger = static_cast<BYTE*>(std::realloc(m_bytes, room));
      if (larger == nullptr) return false;
      m_bytes = larger;
      m_room = room;
    }
    std::memset(m_bytes + m_size, 0, size - m_size);
    m_size = size;
    return true;
  }

  LONG m_cRef = 1;
  BYTE* m_bytes = nullptr;  // from malloc
  std::uint64_t m_size = 0;
  std::uint64_t m_room = 0;
  std::uint64_t m_position = 0;
};

int HexDigit(WCHAR c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// Reads that many hexadecimal digits and moves text past them.
template <typename Number>
bool ReadHex(LPCWSTR& text, int digits, Number* number) {
  DWORD value = 0;
  for (int i = 0; i < digits; ++i) {
    const int digit = HexDigit(*text);
    if (digit < 0) return false;
    value = value << 4 | static_cast<DWORD>(digit);
    ++text;
  }
  *number = static_cast<Number>(value);
  return true;
}

bool ReadChar(LPCWSTR& text, WCHAR expected) {
  if (*text != expected) return false;
  ++text;
  return true;
}

bool ReadGuid(LPCWSTR text, GUID* guid) {
  if (!ReadChar(text, u'{') || !ReadHex(text, 8, &guid->Data1) || !ReadChar(text, u'-') ||
      !ReadHex(text, 4, &guid->Data2) || !ReadChar(text, u'-') || !ReadHex(text, 4, &guid->Data3) ||
      !ReadChar(text, u'-')) {
    return false;
  }
  for (int i = 0; i < 8; ++i) {
    if (i == 2 && !ReadChar(text, u'-')) return false;
    if (!ReadHex(text, 2, &guid->Data4[i])) return false;
  }
  return ReadChar(text, u'}') && *text == 0;
}

}  // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL hGlobal, BOOL fDeleteOnRelease, IStream** ppstm) {
  if (ppstm == nullptr) return E_INVALIDARG;
  *ppstm = nullptr;
  if (hGlobal != nullptr || !fDeleteOnRelease) return E_INVALIDARG;
  if (PlatformShouldFail("CreateStreamOnHGlobal")) return E_OUTOFMEMORY;
  *ppstm = new (std::nothrow) MemoryStream;
  return *ppstm == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT CoCreateGuid(GUID* pguid) {
  if (pguid == nullptr) return E_INVALIDARG;
  *pguid = {};
  if (PlatformShouldFail("CoCreateGuid") ||
      getrandom(pguid, sizeof *pguid, 0) != static_cast<ssize_t>(sizeof *pguid)) {
    return E_FAIL;
  }
  pguid->Data3 = static_cast<WORD>((pguid->Data3 & 0x0FFF) | 0x4000);
  pguid->Data4[0] = static_cast<BYTE>((pguid->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}

HRESULT CLSIDFromString(LPCWSTR lpsz, CLSID* pclsid) {
  if (pclsid == nullptr) return E_INVALIDARG;
  GUID guid = {};
  const bool read = lpsz != nullptr && ReadGuid(lpsz, &guid);
  *pclsid = read ? guid : GUID{};
  return read ? S_OK : CO_E_CLASSSTRING;
}
