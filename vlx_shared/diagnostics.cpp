// The diagnostic save: page images as PNG files, for whoever wants to see what a stage made.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "config/vlx_shared.h"
#include "config/wide_text.h"
#include "platform/com.h"
#include "platform/text.h"

namespace {

// The stage's name as part of a file name.
std::string FileNamePart(LPCWSTR text) {
  std::string part;
  for (; text != nullptr && *text != 0; ++text) {
    const bool plain = (*text >= WTEXT('0') && *text <= WTEXT('9')) ||
                       (*text >= WTEXT('A') && *text <= WTEXT('Z')) ||
                       (*text >= WTEXT('a') && *text <= WTEXT('z')) || *text == WTEXT('_') ||
                       *text == WTEXT('-');
    part += plain ? static_cast<char>(*text) : '_';
  }
  return part;
}

bool EncodePng(Gdiplus::Bitmap* bitmap, std::vector<BYTE>& file) {
  UINT count = 0;
  UINT bytes = 0;
  if (Gdiplus::DllExports::GdipGetImageEncodersSize(&count, &bytes) != Gdiplus::Ok) return false;
  std::vector<Gdiplus::ImageCodecInfo> encoders(bytes / sizeof(Gdiplus::ImageCodecInfo) + 1);
  if (Gdiplus::DllExports::GdipGetImageEncoders(count, bytes, encoders.data()) != Gdiplus::Ok) {
    return false;
  }
  const Gdiplus::ImageCodecInfo* png = nullptr;
  for (UINT i = 0; i < count; ++i) {
    if (WideView(encoders[i].MimeType) == WTEXT("image/png")) png = &encoders[i];
  }
  ComPtr<IStream> stream;
  STATSTG statistics = {};
  if (png == nullptr || FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) ||
      bitmap->Save(stream.Get(), &png->Clsid, nullptr) != Gdiplus::Ok ||
      FAILED(stream->Stat(&statistics, STATFLAG_NONAME)) ||
      FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr))) {
    return false;
  }
  file.resize(statistics.cbSize.QuadPart);
  ULONG read = 0;
  return SUCCEEDED(stream->Read(file.data(), static_cast<ULONG>(file.size()), &read)) &&
         read == file.size();
}

// Writes the file whole or not at all.
bool WriteFile(const std::string& path, const std::vector<BYTE>& content) {
  const std::string temporary = path + "." + std::to_string(getpid()) + ".tmp";
  std::FILE* file = std::fopen(temporary.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  std::error_code error;
  if (std::fclose(file) == 0 && written) {
    std::filesystem::rename(temporary, path, error);  // replaces an older one on every system
    if (!error) return true;
  }
  std::filesystem::remove(temporary, error);
  return false;
}

}  // namespace

void BitmapHelper::DevTestSaveBitmapAs(Gdiplus::Bitmap* bitmap, DWORD dwJobId, DWORD dwPage,
                                       LPCWSTR stage, CLoggerClient& client) try {
  const char* folder = std::getenv("VLX_SAVE_BITMAPS");
  if (folder == nullptr || *folder == '\0' || bitmap == nullptr) return;
  char name[64];
  std::snprintf(name, sizeof name, "/job%05u_page%04u_", UINT{dwJobId}, UINT{dwPage});
  const std::string path = std::string(folder) + name + FileNamePart(stage) + ".png";
  std::vector<BYTE> file;
  if (EncodePng(bitmap, file) && WriteFile(path, file)) return;
  const std::string line = "The page image " + path + " (VLX_SAVE_BITMAPS) cannot be written";
  std::vector<WCHAR> wide(line.size() + 1);
  MultiByteToWideChar(CP_UTF8, 0, line.c_str(), -1, wide.data(), static_cast<INT>(wide.size()));
  CLogger::LOG_ERROR(client, wide.data(), nullptr);
} catch (...) {
  // A diagnosis never disturbs a job.
}
