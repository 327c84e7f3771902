#include "config/png_stream.h"

#include "config/wide_text.h"
#include "platform/memory.h"

bool FindPngEncoder(CLSID* encoder) {
  UINT count = 0;
  UINT bytes = 0;
  if (Gdiplus::DllExports::GdipGetImageEncodersSize(&count, &bytes) != Gdiplus::Ok || bytes == 0) {
    return false;
  }
  const LocalBlock<Gdiplus::ImageCodecInfo> list(
      static_cast<Gdiplus::ImageCodecInfo*>(LocalAlloc(LPTR, bytes)));
  if (list == nullptr ||
      Gdiplus::DllExports::GdipGetImageEncoders(count, bytes, list.get()) != Gdiplus::Ok) {
    return false;
  }
  for (UINT i = 0; i < count; ++i) {
    const Gdiplus::ImageCodecInfo& codec = list.get()[i];
    if (codec.MimeType == nullptr || WideView(codec.MimeType) != WTEXT("image/png")) continue;
    *encoder = codec.Clsid;
    return true;
  }
  return false;
}

bool ReadStream(IStream* stream, LocalBlock<BYTE>& bytes, DWORD* size) {
  STATSTG statistics = {};
  if (FAILED(stream->Stat(&statistics, STATFLAG_NONAME))) return false;
  *size = static_cast<DWORD>(statistics.cbSize.QuadPart);
  if (FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr))) return false;
  bytes.reset(static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, *size)));
  ULONG read = 0;
  return bytes != nullptr && SUCCEEDED(stream->Read(bytes.get(), *size, &read)) && read == *size;
}
