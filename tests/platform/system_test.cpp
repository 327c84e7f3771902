#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "platform/com.h"
#include "platform/fault.h"
#include "platform/file.h"
#include "platform/memory.h"
#include "platform/palette.h"
#include "platform/synch.h"
#include "platform/text.h"
#include "tests/support/temp_home.h"

namespace {

using namespace std::string_literals;

TEST(CodePage, HoldsWhatThePlatformsDoes) {
  const TempHome home;
  const std::u16string text = u"a\u20AC\u00E4\u0081\u009D\u4E00\U0001F600\xD800z";
  char bytes[32];
  BOOL lost = FALSE;
  INT size = WideCharToMultiByte(CP_THREAD_ACP, 0, text.c_str(), -1, bytes, 32, nullptr, &lost);
  EXPECT_EQ(std::string(bytes, size), "a\x80\xE4\x81\x9D???z\0"s);
  EXPECT_TRUE(lost);
  WCHAR wide[32];
  size = MultiByteToWideChar(CP_ACP, 0, "\x80\x81\xE4", 3, wide, 32);
  EXPECT_EQ(std::u16string(wide, size), u"\u20AC\u0081\u00E4");
  home.WriteFile("system.toml", "ansi_code_page = 932");
  size = WideCharToMultiByte(CP_ACP, 0, u"\u4E00\u00E4", 2, bytes, 32, "#", &lost);
  EXPECT_EQ(std::string(bytes, size), "\x88\xEA#");
  size = MultiByteToWideChar(CP_ACP, 0, "x\x88\xEAy\x88", 5, wide, 32);
  EXPECT_EQ(std::u16string(wide, size), u"x\u4E00y\u0088");
  size = MultiByteToWideChar(CP_UTF8, 0, "\xE2\x82\xAC\xC0\xF0\x9F\x98\x80", 8, wide, 32);
  EXPECT_EQ(std::u16string(wide, size), u"\u20AC\uFFFD\U0001F600");
}

TEST(CodePage, BuffersAndArgumentsAreChecked) {
  char bytes[2] = {'#', '#'};
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"abc", 3, nullptr, 0, nullptr, nullptr), 3);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"abc", 3, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(WideCharToMultiByte(31337, 0, u"abc", 3, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, nullptr, 0), 0);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", -2, nullptr, 0), 0);
}

std::string ReadText(const std::string& path) {
  std::FILE* file = _fsopen(path.c_str(), "r", _SH_DENYNO);
  if (file == nullptr) return "<none>";
  std::string content;
  char buffer[1000];
  while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file)) {
    content.append(buffer, count);
  }
  std::fclose(file);
  return content;
}

TEST(TextMode, LineEndsAndEndMarkAreTranslated) {
  const TempHome home;
  const std::pair<std::string, std::string> rows[] = {{"a\r\nb\r\n", "a\nb\n"},
                                                      {"a\rb\r\r\n\r", "a\rb\r\n\r"},
                                                      {"a\x1A"
                                                       "b",
                                                       "a"},
                                                      {"a\r\x1A", "a\r"},
                                                      {"", ""},
                                                      {"\x1A", ""}};
  for (const auto& [content, expected] : rows) {
    home.WriteFile("f", content);
    EXPECT_EQ(ReadText(home.Path("f")), expected);
  }
  for (std::size_t before = 4090; before < 4100; ++before) {  // across the borders of buffers
    const std::string filling(before, 'x');
    home.WriteFile("f", filling + "\r\n" + filling + "\r" + filling);
    EXPECT_EQ(ReadText(home.Path("f")), filling + "\n" + filling + "\r" + filling) << before;
  }
  home.WriteFile("\xC3\xA4", "umlaut");
  EXPECT_EQ(ReadText(home.Path("\xE4")), "umlaut");
}

TEST(TextMode, OnlyRegularFilesOpen) {
  const TempHome home;
  mkfifo(home.Path("fifo").c_str(), 0600);
  for (const std::string& path :
       {home.Path("fifo"), home.Path("."), "/dev/zero"s, "/dev/null"s, home.Path("missing"), ""s}) {
    EXPECT_EQ(ReadText(path), "<none>") << path;
  }
  home.WriteFile("f", "x");
  EXPECT_EQ(_fsopen(home.Path("f").c_str(), "w", _SH_DENYNO), nullptr);
}

TEST(MemoryStream, ReadsWritesAndSeeks) {
  ComPtr<IStream> stream;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
  ULONG count = 0;
  ULARGE_INTEGER position = 0;
  EXPECT_EQ(stream->Write("abc", 3, &count), S_OK);
  EXPECT_EQ(stream->Seek(2, STREAM_SEEK_END, &position), S_OK);
  EXPECT_EQ(position, 5u);
  EXPECT_EQ(stream->Write("d", 1, nullptr), S_OK);
  EXPECT_EQ(stream->Seek(-7, STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
  char bytes[10];
  EXPECT_EQ(stream->Read(bytes, 10, &count), S_OK);
  EXPECT_EQ(std::string(bytes, count), "abc\0\0d"s);
  EXPECT_EQ(stream->Read(bytes, 1, &count), S_OK);
  EXPECT_EQ(count, 0u);
  void* other = nullptr;
  EXPECT_EQ(stream->QueryInterface(IID_ISequentialStream, &other), S_OK);
  EXPECT_EQ(stream->Release(), 1u);
  EXPECT_EQ(CreateStreamOnHGlobal(bytes, TRUE, stream.Put()), E_INVALIDARG);
}

TEST(Identifiers, FollowTheRegistryForm) {
  GUID guid = {};
  EXPECT_EQ(CLSIDFromString(u"{01234567-89aB-CDEF-0123-456789abcdef}", &guid), S_OK);
  EXPECT_EQ(guid,
            (GUID{0x01234567, 0x89AB, 0xCDEF, {1, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}}));
  for (const char16_t* text :
       {u"", u"{}", u"01234567-89ab-cdef-0123-456789abcdef",
        u"{01234567-89ab-cdef-0123-456789abcdef} ", u"{01234567-89ab-cdef-01234-56789abcdef}"}) {
    EXPECT_EQ(CLSIDFromString(text, &guid), CO_E_CLASSSTRING);
    EXPECT_EQ(guid, GUID{});
  }
  GUID first, second;
  EXPECT_EQ(CoCreateGuid(&first), S_OK);
  EXPECT_EQ(CoCreateGuid(&second), S_OK);
  EXPECT_NE(first, second);
  EXPECT_EQ(first.Data3 >> 12, 4);
}

TEST(Palettes, StaleHandlesAreNoPalettes) {
  ULONG colors[] = {0x00332211, 0x00FFFFFF};
  const HPALETTE palette = EngCreatePalette(PAL_INDEXED, 2, colors, 0, 0, 0);
  PALETTEENTRY entries[3] = {};
  EXPECT_EQ(GetPaletteEntries(palette, 0, 3, entries), 2u);
  EXPECT_EQ(entries[0].peRed, 0x11);
  EXPECT_EQ(entries[0].peBlue, 0x33);
  EXPECT_EQ(GetPaletteEntries(palette, 5, 1, entries), 0u);
  EXPECT_TRUE(EngDeletePalette(palette));
  EXPECT_FALSE(EngDeletePalette(palette));
  EXPECT_EQ(GetPaletteEntries(palette, 0, 1, entries), 0u);
  EXPECT_EQ(EngCreatePalette(PAL_INDEXED, 257, colors, 0, 0, 0), nullptr);
}

TEST(Process, ErrorsAreTheThreadsOwnAndLocksRecursive) {
  SetLastError(5);
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  LONG count = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      EXPECT_EQ(GetLastError(), 0u);
      for (int i = 0; i < 5000; ++i) {
        EnterCriticalSection(&section);
        EnterCriticalSection(&section);
        ++count;
        LeaveCriticalSection(&section);
        LeaveCriticalSection(&section);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 20000);
  DeleteCriticalSection(&section);
  EXPECT_EQ(GetLastError(), 5u);
  PlatformSetFaultHook([](const char*, void*) { return true; }, nullptr);
  EXPECT_EQ(LocalAlloc(LPTR, 8), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  PlatformSetFaultHook(nullptr, nullptr);
  auto* block = static_cast<BYTE*>(LocalAlloc(LPTR, 8));
  EXPECT_EQ(block[7], 0);
  EXPECT_EQ(LocalFree(block), nullptr);
}

}  // namespace
