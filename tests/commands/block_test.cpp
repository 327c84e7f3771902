#include <gtest/gtest.h>

#include "commands/custom_blocks.h"
#include "commands/job_stream.h"
#include "tests/support/logged_home.h"

namespace {

using namespace std::string_literals;

TEST(CustomBlocks, EscapesAreResolvedOrLeftAsTheyStand) {
  const std::pair<std::string, std::string> rows[] = {
      {R"(A\\B)", R"(A\B)"},       {R"(\e\E)", "\x1B\x1B"},
      {R"(\n\R\t\N)", "\n\r\t\n"}, {R"(\x41\X41)", "AA"},
      {R"(\1018)", "A8"},          {R"(\x4A\x4a\x19\xFf)", "JJ\x19\xFF"},
      {R"(\x4^)", R"(\x4^)"},      {"\\x\r5\\x\t5", "\x05\x05"},
      {R"(\x4G)", R"(\x4G)"},      {R"(\X4G)", R"(\x4G)"},
      {R"(\x4)", R"(\x4)"},        {R"(\q12)", R"(\q12)"},
      {R"(\999)", R"(\999)"},      {R"(\777)", "\xFF"},
      {R"(\x00Z)", "\0Z"s},        {R"(\x-1)", "\xFF"},
      {R"(\x 5)", "\x05"},         {R"(\x+a)", "\x0A"},
      {R"(\x- )", R"(\x- )"},      {R"(\x  )", R"(\x  )"},
      {R"(\-17)", "\xF1"},         {R"(\ +7)", "\x07"},
      {R"(\18a)", R"(\18a)"},      {R"(\10)", R"(\10)"},  // too short for a number
      {R"(end\)", R"(end\)"},      {"", ""},
      {R"(\z\\)", R"(\z\)"},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(ParseEscapes(text, std::nullopt), expected) << text;
  }
}

TEST(CustomBlocks, PageNumberReplacesTheFirstBraces) {
  const std::pair<const char*, const char*> rows[] = {
      {"No. {n}", "No. 4294967295"}, {"{n}", "{n}"},
      {"a}b{c}", "a}b{c}"},          {"a{b", "a{b"},
      {"a{}b{}", "a4294967295b{}"},  {"a{\\n}", "a4294967295"},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(ParseEscapes(text, 0xFFFFFFFFu), expected) << text;
  }
  EXPECT_EQ(ParseEscapes("No. {n}", std::nullopt), "No. {n}");
}

TEST(CustomBlocks, EightyBytesAreTooLong) {
  const std::string text(79, 'x');
  EXPECT_EQ(ParseEscapes(text, std::nullopt), text);
  EXPECT_EQ(ParseEscapes(text + "x", std::nullopt), "Error 111");
  EXPECT_EQ(ParseEscapes(std::string(76, 'x') + "{n}", 1), std::string(76, 'x') + "1");
  EXPECT_EQ(ParseEscapes(std::string(76, 'x') + "{n}", 1000), "Error 111");
}

TEST(CustomBlocks, KindDecidesHowTheTextBecomesBytes) {
  EXPECT_EQ(ExpandCustomBlock(0, "text", 7), "");
  EXPECT_EQ(ExpandCustomBlock(2, "a\\x41{n}", 7), "aA{n}");  // never a page number
  EXPECT_EQ(ExpandCustomBlock(3, "a\\n{n}", 7), "a\\n{n}");
  EXPECT_EQ(ExpandCustomBlock(4, "a\\x41{n}", 7), "aA7");
  EXPECT_EQ(ExpandCustomBlock(7, "a\\n", 7), "a\\n");
}

TEST(CustomBlocks, FileIsSentWholeInTextMode) {
  const LoggedHome home;
  home.WriteFile("block", std::string(10000, 'q') + "\r\n\\n");
  EXPECT_EQ(ExpandCustomBlock(1, home.Path("block")), std::string(10000, 'q') + "\n\\n");
  home.WriteFile("long", "");
  std::filesystem::resize_file(home.Path("long"), 70'000'000);
  EXPECT_EQ(ExpandCustomBlock(1, home.Path("long")).size(), 70'000'000u);
  EXPECT_EQ(home.LogLines(), std::vector<std::string>{});
  // The last one opens and cannot be read.
  for (const std::string& path :
       {home.Path("missing"), home.Path(""), std::string(), std::string("/proc/self/mem")}) {
    EXPECT_EQ(ExpandCustomBlock(1, path), "") << path;
  }
  EXPECT_EQ(home.LogLines(),
            std::vector<std::string>{
                "error\t\tThe file of a custom command block was read only in part"});
}

TEST(FormatFixed, RoundsTheFloatQuotientHalfAwayFromZero) {
  const std::pair<LONG, const char*> rows[] = {
      {54000, "54.00"}, {25400, "25.40"}, {1764, "1.76"},  {2345, "2.35"},
      {1005, "1.00"},   {1015, "1.01"},   {3005, "3.01"},  {-4, "-0.00"},
      {0, "0.00"},      {125, "0.13"},    {-125, "-0.13"}, {-2147483647 - 1, "-2147483.75"}};
  for (const auto& [lengthUm, text] : rows) EXPECT_EQ(FormatLength(lengthUm), text) << lengthUm;
  EXPECT_EQ(FormatFixed(1.25f, 1), "1.3");
  EXPECT_EQ(FormatFixed(4294967295u, 0), "4294967295");
}

}  // namespace
