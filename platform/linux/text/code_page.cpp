#include "platform/linux/text/code_page.h"

#include <iconv.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "platform/extensions.h"
#include "platform/linux/text/unicode.h"
#include "platform/text.h"

namespace {

constexpr DWORD kWideCharFlags = 0x6F0;  // all flags that exist

class Converter {
 public:
  Converter(const std::string& to, const std::string& from)
      : m_handle(iconv_open(to.c_str(), from.c_str())) {}
  ~Converter() {
    if (IsOpen()) iconv_close(m_handle);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  bool IsOpen() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

  // Converts one character. Returns false if the target has no such character.
  bool Convert(const char* bytes, std::size_t size, char* out, std::size_t room,
               std::size_t* written) {
    char* from = const_cast<char*>(bytes);
    char* to = out;
    std::size_t left = room;
    iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
    const std::size_t result = iconv(m_handle, &from, &size, &to, &left);
    *written = room - left;
    return result == 0 && size == 0;
  }

 private:
  iconv_t m_handle;
};

std::string NameOf(UINT codePage) {
  return codePage == 28591 ? "ISO-8859-1" : "CP" + std::to_string(codePage);
}

// Unassigned bytes of Windows code pages map to the C1 controls of the same number.
bool IsHole(char16_t c) { return c >= 0x80 && c <= 0x9F; }

bool IsPair(std::u16string_view text, std::size_t i) {
  return (text[i] & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
}

}  // namespace

UINT ResolveCodePage(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_THREAD_ACP ? *AnsiCodePage().Get() : codePage;
}

SystemPart<UINT>& AnsiCodePage() {
  static SystemPart<UINT> part(1252, [](const toml::table& file) {
    constexpr const char* kUnknown = "is no known code page";
    const auto number = ReadNumber(file, "ansi_code_page", 0, 65535, kUnknown);
    if (number && !CodePageExists(static_cast<UINT>(*number))) {
      FailAt(*file.get("ansi_code_page"), std::string("ansi_code_page ") + kUnknown);
    }
    return static_cast<UINT>(number.value_or(1252));
  });
  return part;
}

bool CodePageExists(UINT codePage) {
  return codePage == CP_UTF8 || Converter(NameOf(codePage), "UTF-16LE").IsOpen();
}

std::optional<std::string> EncodeText(UINT codePage, std::u16string_view text,
                                      std::string_view fallback, bool* usedFallback) {
  if (codePage == CP_UTF8) return Utf8FromUtf16(text);
  Converter converter(NameOf(codePage), "UTF-16LE");
  if (!converter.IsOpen()) return std::nullopt;
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] < 0x80) {
      out += static_cast<char>(text[i]);
      continue;
    }
    const std::size_t units = IsPair(text, i) ? 2 : 1;
    char bytes[16];
    std::size_t written = 0;
    if (converter.Convert(reinterpret_cast<const char*>(&text[i]), units * sizeof(char16_t), bytes,
                          sizeof bytes, &written)) {
      out.append(bytes, written);
    } else if (char hole = static_cast<char>(text[i]);
               IsHole(text[i]) && DecodeText(codePage, {&hole, 1}) == text.substr(i, 1)) {
      out += hole;
    } else {
      out += fallback;
      *usedFallback = true;
    }
    i += units - 1;
  }
  return out;
}

std::optional<std::u16string> DecodeText(UINT codePage, std::string_view bytes) {
  if (codePage == CP_UTF8) return Utf16FromUtf8(bytes);
  Converter converter("UTF-16LE", NameOf(codePage));
  if (!converter.IsOpen()) return std::nullopt;
  std::u16string out;
  for (std::size_t i = 0; i < bytes.size();) {
    char16_t units[4];
    std::size_t written = 0;
    std::size_t length = 1;  // of the character in bytes; some code pages have longer ones
    while (length <= 4 && i + length <= bytes.size() &&
           !converter.Convert(bytes.data() + i, length, reinterpret_cast<char*>(units),
                              sizeof units, &written)) {
      ++length;
    }
    if (length <= 4 && i + length <= bytes.size()) {
      out.append(units, written / sizeof(char16_t));
      i += length;
      continue;
    }
    const auto byte = static_cast<unsigned char>(bytes[i++]);
    out += IsHole(byte) ? static_cast<char16_t>(byte) : u'\uFFFD';
  }
  return out;
}

INT WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, INT cchWideChar,
                        LPSTR lpMultiByteStr, INT cbMultiByte, LPCSTR lpDefaultChar,
                        LPBOOL lpUsedDefaultChar) try {
  if (lpWideCharStr == nullptr || cchWideChar == 0 || cchWideChar < -1 || cbMultiByte < 0 ||
      (cbMultiByte > 0 && lpMultiByteStr == nullptr)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if ((dwFlags & ~kWideCharFlags) != 0) {
    SetLastError(ERROR_INVALID_FLAGS);
    return 0;
  }
  if (PlatformShouldFail("WideCharToMultiByte")) throw std::bad_alloc();
  const std::size_t units = cchWideChar == -1 ? std::char_traits<WCHAR>::length(lpWideCharStr) + 1
                                              : static_cast<std::size_t>(cchWideChar);
  bool usedFallback = false;
  const auto bytes = EncodeText(ResolveCodePage(CodePage), {lpWideCharStr, units},
                                lpDefaultChar == nullptr ? "?" : lpDefaultChar, &usedFallback);
  if (!bytes || bytes->size() > 0x7FFFFFFF) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (lpUsedDefaultChar != nullptr) *lpUsedDefaultChar = usedFallback;
  const INT size = static_cast<INT>(bytes->size());
  if (cbMultiByte == 0) return size;
  if (size > cbMultiByte) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::memcpy(lpMultiByteStr, bytes->data(), bytes->size());
  return size;
} catch (const std::bad_alloc&) {
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return 0;
}

INT MultiByteToWideChar(UINT CodePage, DWORD, LPCSTR lpMultiByteStr, INT cbMultiByte,
                        LPWSTR lpWideCharStr, INT cchWideChar) try {
  if (lpMultiByteStr == nullptr || cbMultiByte == 0 || cbMultiByte < -1 || cchWideChar < 0 ||
      (cchWideChar > 0 && lpWideCharStr == nullptr)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (PlatformShouldFail("MultiByteToWideChar")) throw std::bad_alloc();
  const std::size_t bytes =
      cbMultiByte == -1 ? std::strlen(lpMultiByteStr) + 1 : static_cast<std::size_t>(cbMultiByte);
  const auto units = DecodeText(ResolveCodePage(CodePage), {lpMultiByteStr, bytes});
  if (!units || units->size() > 0x7FFFFFFF) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const INT size = static_cast<INT>(units->size());
  if (cchWideChar == 0) return size;
  if (size > cchWideChar) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::memcpy(lpWideCharStr, units->data(), units->size() * sizeof(WCHAR));
  return size;
} catch (const std::bad_alloc&) {
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return 0;
}
