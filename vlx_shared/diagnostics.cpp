// The diagnostic save: the page image of each stage as a PNG file.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "config/png_stream.h"
#include "config/vlx_shared.h"
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

// Encodes the bitmap as a PNG file in a block of *size bytes.
bool EncodePng(Gdiplus::Bitmap* bitmap, LocalBlock<BYTE>& file, DWORD* size) {
  CLSID encoder;
  ComPtr<IStream> stream;
  return FindPngEncoder(&encoder) &&
         SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) &&
         bitmap->Save(stream.Get(), &encoder, nullptr) == Gdiplus::Ok &&
         ReadStream(stream.Get(), file, size);
}

// Writes the file whole or not at all.
bool WriteFile(const std::string& path, const void* content, DWORD size) {
  const std::string temporary = path + "." + std::to_string(getpid()) + ".tmp";
  std::FILE* file = std::fopen(temporary.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(content, 1, size, file) == size;
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
  LocalBlock<BYTE> file;
  DWORD size = 0;
  if (EncodePng(bitmap, file, &size) && WriteFile(path, file.get(), size)) return;
  const std::string line = "The page image " + path + " (VLX_SAVE_BITMAPS) cannot be written";
  std::vector<WCHAR> wide(line.size() + 1);
  MultiByteToWideChar(CP_UTF8, 0, line.c_str(), -1, wide.data(), static_cast<INT>(wide.size()));
  CLogger::LOG_ERROR(client, wide.data(), nullptr);
} catch (...) {
  // A diagnosis never disturbs a job.
}
