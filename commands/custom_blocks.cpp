#include "commands/custom_blocks.h"

#include <cstdio>
#include <memory>

#include "commands/job_stream.h"
#include "platform/file.h"

namespace {

constexpr std::string_view kTooLong = "Error 111";
constexpr std::size_t kMostFileBytes = std::size_t{64} << 20;

struct LetterEscape {
  char letter;
  char byte;
};
constexpr LetterEscape kLetterEscapes[] = {
    {'\\', '\\'}, {'e', '\x1B'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'},
};

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The value of a digit of any base up to 16, or 16 when it is none.
unsigned DigitValue(char c) {
  c = LowerAscii(c);
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return 16;
}

// Low 8 bits of the number that makes up all of the text: white space, sign, digits.
std::optional<char> ReadByte(std::string_view text, unsigned base) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  bool negative = false;
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  if (text.empty()) return std::nullopt;
  unsigned value = 0;
  for (const char c : text) {
    const unsigned digit = DigitValue(c);
    if (digit >= base) return std::nullopt;
    value = value * base + digit;
  }
  return static_cast<char>(negative ? 0u - value : value);
}

void SubstitutePageNumber(std::string& text, DWORD pageNumber) {
  const std::size_t open = text.find('{');
  const std::size_t close = text.find('}');
  if (open == std::string::npos || close == std::string::npos || open == 0 || close < open) return;
  text.replace(open, close - open + 1, std::to_string(pageNumber));
}

// Appends what the escape at the start of rest (a backslash and at least one byte more) stands for
// and returns how many bytes it takes.
std::size_t TakeEscape(std::string_view rest, std::string& out) {
  const char letter = LowerAscii(rest[1]);
  for (const LetterEscape& escape : kLetterEscapes) {
    if (escape.letter != letter) continue;
    out += escape.byte;
    return 2;
  }
  const bool hexadecimal = letter == 'x';
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
  out += letter;
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
    // No block for a printer is that long: the file has no end, and the job would have none.
    if (content.size() + count > kMostFileBytes) return {};
    content.append(buffer, count);
  }
  if (std::ferror(file.get())) return {};
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
