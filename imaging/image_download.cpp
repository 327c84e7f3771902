#include "imaging/image_download.h"

#include <string_view>

#include "commands/image_commands.h"
#include "commands/job_stream.h"
#include "config/log.h"
#include "config/png_stream.h"

namespace {

// The end of the log line about a stream that could not be created: why.
std::string ResultSuffix(HRESULT hr) {
  const std::string lastError = ", GetLastError=" + std::to_string(LONG(GetLastError())) + ")";
  if (hr == E_INVALIDARG) return " (hResult=E_INVALIDARG" + lastError;
  if (hr == E_OUTOFMEMORY) return " (hResult=E_OUTOFMEMORY" + lastError;
  return " (hResult=" + std::to_string(hr) + lastError;
}

}  // namespace

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
  LocalBlock<BYTE> file;
  DWORD size = 0;
  if (!ReadStream(stream, file, &size)) return false;
  // Everything exists before the first write: a download is written whole or not at all.
  const std::string header = ComposeImageDownloadHeader(imageName);
  const std::string end = ComposeImageDataEnd();
  SpoolWrite(pdevobj, header);
  SpoolWrite(pdevobj, std::string_view(reinterpret_cast<const char*>(file.get()), size));
  SpoolWrite(pdevobj, end);
  return true;
}
