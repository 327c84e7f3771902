#include "tests/driver/script.h"

#include <cstdint>

namespace {

struct Verb {
  char letter;
  bool (*call)(Driver& driver);
};

constexpr Verb kVerbs[] = {
    {'O', [](Driver& driver) { return driver.CreateObject(); }},
    {'o', [](Driver& driver) { return driver.ReleaseObject(); }},
    {'+', [](Driver& driver) { return driver.AddReference(); }},
    {'L', [](Driver& driver) { return driver.LockServer(); }},
    {'U', [](Driver& driver) { return driver.UnlockServer(); }},
    {'V', [](Driver& driver) { return driver.EnableDriver(); }},
    {'v', [](Driver& driver) { return driver.DisableDriver(); }},
    {'N', [](Driver& driver) { return driver.EnableDevice(); }},
    {'D', [](Driver& driver) { return driver.DisableDevice(); }},
    {'P', [](Driver& driver) { return driver.PublishHelper(); }},
    {'F', [](Driver& driver) { return driver.PassRaster(); }},
    {'S', [](Driver& driver) { return driver.StartDocument(); }},
    {'E', [](Driver& driver) { return driver.EndDocument(); }},
    {'X', [](Driver& driver) { return driver.AbortDocument(); }},
    {'p', [](Driver& driver) { return driver.StartPage(); }},
    {'i', [](Driver& driver) { return driver.SendBand(); }},
    {'s', [](Driver& driver) { return driver.SendPage(); }},
    {'r', [](Driver& driver) { return driver.ResetDevice(); }},
    {'a', [](Driver& driver) { return driver.PrintPage('a'); }},
    {'b', [](Driver& driver) { return driver.PrintPage('b'); }},
    {'c', [](Driver& driver) { return driver.PrintPage('c'); }},
};

bool IsOneOf(char verb, std::string_view verbs) { return verbs.find(verb) != verbs.npos; }

}  // namespace

bool DoVerb(Driver& driver, char verb) {
  for (const Verb& known : kVerbs) {
    if (known.letter == verb) return known.call(driver);
  }
  return true;
}

std::string RunScript(Driver& driver, std::string_view verbs) {
  std::string failed;
  bool skipping = false;
  bool usable = true;
  for (const char verb : verbs) {
    if (verb == 'S') skipping = !usable;
    if (skipping && !IsOneOf(verb, "DvoU")) continue;
    if (DoVerb(driver, verb)) continue;
    failed += verb;
    if (IsOneOf(verb, "OVN")) usable = false;
    if (!usable || IsOneOf(verb, "Spabcisr")) {
      if (usable) driver.AbortDocument();
      skipping = true;
    }
  }
  return failed;
}

void SendOddBand(Driver& driver, LONG widthPx, LONG heightPx, DWORD sizeBytes, POINT offset,
                 bool blank, bool null) {
  const std::int64_t strideBytes = (std::int64_t{widthPx} * 24 + 31) / 32 * 4;
  const bool small = strideBytes > 0 && heightPx > 0 && strideBytes < 0x10000 && heightPx < 0x10000;
  std::vector<BYTE> bytes(blank ? 0 : sizeBytes, 0x55);
  if (sizeBytes == 0 && small && strideBytes * heightPx < 0x20000) {
    bytes.resize(strideBytes * heightPx);
  }
  null = null || blank || bytes.empty();
  driver.SendBand({widthPx, heightPx, sizeBytes, offset, null ? nullptr : bytes.data(), blank});
}

std::vector<std::string> WithoutTime(std::vector<std::string> writes) {
  constexpr std::string_view kTime = ";Created: dd.mm.yyyy, hh:mm:ss";
  for (std::string& write : writes) {
    if (write.starts_with(";Created: ")) write.replace(0, write.find("\r\n"), kTime);
  }
  return writes;
}
