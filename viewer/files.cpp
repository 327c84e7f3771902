#include "viewer/files.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "common/error.h"
#include "common/write_error.h"

namespace viewer {

std::string ReadJobFile(const std::string& path) {
  const auto fail = [&](const std::string& why) {
    throw CommandError(kExitInput, "The job " + (path == "-" ? "on standard input" : path) +
                                       " cannot be read: " + why);
  };
  std::FILE* file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) fail(std::string(std::strerror(errno)) + "; check its name");
  const std::unique_ptr<std::FILE, void (*)(std::FILE*)> owner(file, [](std::FILE* f) {
    if (f != stdin) std::fclose(f);
  });
  std::string job;
  char bytes[1 << 16];
  for (std::size_t count; (count = std::fread(bytes, 1, sizeof bytes, file)) > 0;) {
    job.append(bytes, count);
    if (job.size() > kMostJobBytes) fail("it is longer than 1 GiB; split it");
  }
  if (std::ferror(file)) fail(std::string(std::strerror(errno)) + "; name a file");
  return job;
}

void WriteWholeFile(const std::string& path, std::string_view content) {
  const bool toOutput = path == "-";
  const std::string part = path + "." + std::to_string(getpid()) + ".part";
  std::FILE* file = toOutput ? stdout : std::fopen(part.c_str(), "wb");
  if (file == nullptr) FailToWrite(path, errno);
  bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  written = (toOutput ? std::fflush(file) : std::fclose(file)) == 0 && written;
  if (written && (toOutput || std::rename(part.c_str(), path.c_str()) == 0)) return;
  const int error = errno;
  if (!toOutput) std::remove(part.c_str());
  FailToWrite(toOutput ? "standard output" : path, error);
}

void MakeFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  const int fault = error ? error.value() : ENOTDIR;
  if (!std::filesystem::is_directory(path, error)) FailToWrite(path, fault);
}

bool NamesFile(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const std::initializer_list<std::string_view> known = {".png", ".jpg",  ".jpeg", ".gif", ".bmp",
                                                         ".tif", ".tiff", ".webp", ".svg", ".pdf",
                                                         ".pbm", ".pgm",  ".ppm",  ".job"};
  std::error_code error;
  return std::find(known.begin(), known.end(), ending) != known.end() &&
         !std::filesystem::is_directory(path, error);
}

void MakePictureFolder(const std::string& path) {
  if (NamesFile(path)) {
    throw CommandError(kExitUsage, "\"" + path + "\" is the name of a file",
                       "name a folder for the pictures");
  }
  MakeFolder(path);
}

std::string JobStem(const std::string& path) {
  const std::string stem = std::filesystem::path(path).stem().string();
  return path == "-" || stem.empty() ? "job" : stem;
}

}  // namespace viewer
