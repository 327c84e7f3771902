#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/file.h"
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

std::string ReadText(const std::string& path) {
  std::FILE* file = _fsopen(path.c_str(), "r", _SH_DENYNO);
  if (file == nullptr) return "<none>";
  std::string content;
  for (int c; (c = std::fgetc(file)) != EOF;) content.push_back(static_cast<char>(c));
  std::fclose(file);
  return content;
}

TEST(TextMode, LineEndsAndEndMarkAreTranslated) {
  const TempHome home;
  const std::pair<std::string, std::string> rows[] = {{"a\r\nb\r\n", "a\nb\n"},
                                                      {"a\rb\r\r\n\r", "a\rb\r\n\r"},
                                                      {"a\x1A\n", "a"},
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

}  // namespace
