#include "imaging/png_encoder.h"

#include <string_view>

#include "commands/image_commands.h"
#include "commands/job_stream.h"
#include "config/block_owner.h"
#include "config/log.h"
#include "config/wide_text.h"
#include "platform/memory.h"

namespace {

// Why a stream could not be created.
std::string ResultSuffix(HRESULT hr) {
  const std::string lastError = ", GetLastError=" + std::to_string(LONG(GetLastError())) + ")";
  if (hr == E_INVALIDARG) return " (hResult=E_INVALIDARG" + lastError;
  if (hr == E_OUTOFMEMORY) return " (hResult=E_OUTOFMEMORY" + lastError;
  return " (hResult=" + std::to_string(hr) + lastError;
}

}  // namespace

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
    if (codec.MimeType == nullptr || WideView(codec.MimeType) != WTEXT("image/png")) {
      continue;
    }
    *encoder = codec.Clsid;
    return true;
  }
  return false;
}

bool CreatePngStream(const char* streamName, const char* spacer, ComPtr<IStream>& stream) {
  constexpr const char* kLine = "SendImageToPrinter: CreateStreamOnHGlobal for %s failed%s";
  const HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
  if (FAILED(hr)) {
    LogError(kNoCategory, kLine, streamName, ResultSuffix(hr).c_str());
    return false;
  }
  if (!stream) {
    const std::string suffix =
        std::string(spacer) +
        " (hResult=S_OK, pPngStream=NULL, GetLastError=" + std::to_string(LONG(GetLastError())) +
        ")";
    LogError(kNoCategory, kLine, streamName, suffix.c_str());
    return false;
  }
  return true;
}

bool WriteImageDownload(PDEVOBJ pdevobj, IStream* stream, const std::string& imageName) {
  STATSTG statistics = {};
  if (FAILED(stream->Stat(&statistics, STATFLAG_NONAME))) return false;
  const DWORD size = static_cast<DWORD>(statistics.cbSize.QuadPart);
  if (FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr))) return false;
  const LocalBlock<char> file(static_cast<char*>(LocalAlloc(LMEM_FIXED, size)));
  if (file == nullptr) return false;
  ULONG read = 0;
  if (FAILED(stream->Read(file.get(), size, &read)) || read != size) return false;

  // All three texts exist before the first goes out: a download is written whole or not at all.
  const std::string header = ComposeImageDownloadHeader(imageName);
  const std::string end = ComposeImageDataEnd();
  SpoolWrite(pdevobj, header);
  SpoolWrite(pdevobj, std::string_view(file.get(), size));
  SpoolWrite(pdevobj, end);
  return true;
}
