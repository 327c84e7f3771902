#include "tests/windows/files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

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
  picture.rows.resize(picture.StrideBytes() * picture.heightPx);
  for (LONG y = 0; y < picture.heightPx; ++y) {
    BYTE* row = picture.rows.data() + y * picture.StrideBytes();
    file.read(reinterpret_cast<char*>(row), std::streamsize{3} * picture.widthPx);
    for (LONG x = 0; x < picture.widthPx; ++x) std::swap(row[3 * x], row[3 * x + 2]);
  }
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
