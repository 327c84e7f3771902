// Makes a job from bytes: which call fails, changes to both records, then calls in any order.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "tests/driver/script.h"
#include "tests/torture/faults.h"

namespace {

// Takes values from the bytes of a case; after the last byte all are zero.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

  template <typename Number>
  Number Take() {
    Number number = 0;
    const std::size_t count = std::min(sizeof number, m_left);
    if (count != 0) std::memcpy(&number, m_data, count);
    m_data += count;
    m_left -= count;
    return number;
  }
  bool Ended() const { return m_left == 0; }

 private:
  const std::uint8_t* m_data;
  std::size_t m_left;
};

constexpr std::size_t kMostVerbs = 64;

void ChangeRecords(Input& input, Driver& driver) {
  for (BYTE count = input.Take<BYTE>() % 16; count > 0; --count) {
    const WORD offset = input.Take<WORD>();
    const DWORD value = input.Take<DWORD>();
    if (offset <= sizeof(OEMDEV) - sizeof value) {
      std::memcpy(reinterpret_cast<BYTE*>(driver.devmode.get()) + offset, &value, sizeof value);
    } else {
      DEVMODEW& devmode = driver.publicDevmode;
      SHORT* fields[] = {&devmode.dmOrientation, &devmode.dmPaperWidth,  &devmode.dmPaperLength,
                         &devmode.dmCopies,      &devmode.dmYResolution, &devmode.dmCollate};
      *fields[offset % std::size(fields)] = static_cast<SHORT>(value);
    }
  }
}

void OddBand(Input& input, Driver& driver) {
  const LONG width = input.Take<LONG>(), height = input.Take<LONG>();
  const WORD size = input.Take<WORD>();
  driver.bandFormat = input.Take<BYTE>();
  const POINT at = {input.Take<LONG>(), input.Take<LONG>()};
  SendOddBand(driver, width, height, size, at, input.Take<BYTE>() & 1);
  driver.bandFormat = 5;
}

}  // namespace

extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=32";
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("VLX_HOME", "/nonexistent", 1);
  static const Plugin plugin;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int loaded = LLVMFuzzerInitialize(nullptr, nullptr);
  static_cast<void>(loaded);
  Input input(data, size);
  {
    Driver driver;
    driver.widthPx = 24;
    driver.heightPx = 12;
    const BYTE fault = input.Take<BYTE>();
    const WORD chance = input.Take<WORD>();
    ChangeRecords(input, driver);
    driver.Open();
    if (fault & 1) Arm(fault & 2 ? Domain::Memory : Domain::Calls, 1 + chance % 512, fault & 4);
    for (std::size_t i = 0; i < kMostVerbs && !input.Ended(); ++i) {
      const char verb = input.Take<char>();
      if (verb == 'B' && driver.objectReferences > 0) {
        OddBand(input, driver);
      } else {
        DoVerb(driver, verb);
      }
    }
    Disarm();
    ForgetFailed();
    if (driver.objectReferences == 0 && driver.helperReferences != 0) std::abort();
  }
  if (Plugin::CanUnloadNow() != S_OK) std::abort();
  return 0;
}
