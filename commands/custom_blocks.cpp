#include "commands/custom_blocks.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>

#include "commands/job_stream.h"
#include "config/log.h"
#include "platform/file.h"

namespace {

constexpr std::string_view kTooLong = "Error 111";

// The bytes that letters after a backslash stand for.
constexpr std::string_view kEscapes = "\\eEnNrRtT";
constexpr std::string_view kEscaped = "\\\x1B\x1B\n\n\r\r\t\t";
static_assert(kEscapes.size() == kEscaped.size());

// The low 8 bits of a number, as strtol reads it; nullopt unless the whole text is the number.
std::optional<char> ReadByte(std::string_view text, int base) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  unsigned value;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc() || last != end) return std::nullopt;
  return static_cast<char>(negative ? 0u - value : value);
}

void SubstitutePageNumber(std::string& text, DWORD pageNumber) {
  const std::size_t open = text.find_first_of("{}");
  const std::size_t close = text.find('}');
  if (open == 0 || open == close || close == std::string::npos) return;
  text.replace(open, close - open + 1, std::to_string(pageNumber));
}

// Appends the meaning of the escape at the start of rest, which is a backslash and at least one
// more byte. Returns the escape's length in bytes.
std::size_t TakeEscape(std::string_view rest, std::string& out) {
  if (const std::size_t known = kEscapes.find(rest[1]); known != std::string_view::npos) {
    out += kEscaped[known];
    return 2;
  }
  const bool hexadecimal = rest[1] == 'x' || rest[1] == 'X';
  std::optional<char> byte;
  if (rest.size() >= 4) {
    byte = hexadecimal ? ReadByte(rest.substr(2, 2), 16) : ReadByte(rest.substr(1, 3), 8);
  }
  if (byte) {
    out += *byte;
    return 4;
  }
  out += '\\';
  if (!hexadecimal) return 1;
  out += 'x';
  return 2;
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string ReadTextFile(std::string_view path) {
  const std::unique_ptr<std::FILE, FileCloser> file(
      _fsopen(std::string(path).c_str(), "r", _SH_DENYNO));
  std::string content;
  if (file == nullptr) return content;
  char buffer[4096];
  while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get())) {
    content.append(buffer, count);
  }
  if (std::ferror(file.get())) {
    LogError(kNoCategory, "The file of a custom command block was read only in part");
  }
  return content;
}

}  // namespace

std::string ParseEscapes(std::string_view text, std::optional<DWORD> pageNumber) {
  std::string source(text);
  if (pageNumber) SubstitutePageNumber(source, *pageNumber);

  std::string out;
  std::string_view rest = source;
  while (!rest.empty()) {
    const std::size_t backslash = rest.find('\\');
    out.append(rest.substr(0, backslash));
    if (backslash == std::string_view::npos) break;
    rest.remove_prefix(backslash);
    if (rest.size() == 1) {
      out += '\\';
      break;
    }
    rest.remove_prefix(TakeEscape(rest, out));
  }
  return out.size() >= kCustomTextSize ? std::string(kTooLong) : out;
}

std::string ExpandCustomBlock(WORD kind, std::string_view text, std::optional<DWORD> pageNumber) {
  switch (kind) {
    case kBlockNone:
      return {};
    case kBlockFile:
      return ReadTextFile(text);
    case kBlockEscaped:
      return ParseEscapes(text, std::nullopt);
    case kBlockInline:
      return ParseEscapes(text, pageNumber);
    default:
      return std::string(text);
  }
}

std::string ExpandCustomBlock(const OEMDEV& devmode, int k, std::optional<DWORD> pageNumber) {
  const CustomBlock block = GetCustomBlock(devmode, k);
  return ExpandCustomBlock(block.kind, block.text, pageNumber);
}

std::string WithLineEnd(std::string expansion) {
  if (!expansion.empty()) expansion += g_strLineEnd;
  return expansion;
}

std::string AfterLineEnd(std::string expansion) {
  if (!expansion.empty()) expansion.insert(0, g_strLineEnd);
  return expansion;
}
