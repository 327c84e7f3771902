#include "tests/windows/files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "platform/com.h"

namespace {

std::ifstream OpenFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + " cannot be read");
  return file;
}

}  // namespace

Picture ReadPicture(const std::string& path) {
  std::ifstream file = OpenFile(path);
  std::string magic;
  Picture picture;
  int most = 0;
  file >> magic >> picture.widthPx >> picture.heightPx >> most;
  file.get();
  if (magic != "P6" || most != 255) throw std::runtime_error(path + " is no 8-bit PPM file");
  picture.pixels.resize(std::size_t{3} * picture.widthPx * picture.heightPx);
  file.read(reinterpret_cast<char*>(picture.pixels.data()),
            static_cast<std::streamsize>(picture.pixels.size()));
  if (!file) throw std::runtime_error(path + " is cut off");
  return picture;
}

std::vector<BYTE> ReadBytes(const std::string& path) {
  std::ifstream file = OpenFile(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::basic_string<WCHAR> Wide(const std::string& text) {
  std::basic_string<WCHAR> wide;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool coded = text.compare(i, 2, "%u") == 0;
    wide += static_cast<WCHAR>(coded ? std::stoul(text.substr(i + 2, 4), nullptr, 16) : text[i]);
    if (coded) i += 5;
  }
  return wide;
}

GUID ReadGuid(const std::string& text) {
  GUID guid = {};
  if (FAILED(CLSIDFromString(Wide(text).c_str(), &guid))) {
    throw std::runtime_error(text + " is no identifier");
  }
  return guid;
}
