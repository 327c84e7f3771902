#include "platform/memory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>
#include <string>

#include "platform/extensions.h"
#include "platform/gdiplus.h"
#include "platform/synch.h"

namespace {

constexpr SIZE_T kPage = 3000000;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

// Keeps GDI+ running, which is what keeps memory for the next page.
class Memory : public ::testing::Test {
 protected:
  Memory() { Start(); }
  ~Memory() override { Stop(); }
  void Start() {
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
  }
  void Stop() { Gdiplus::GdiplusShutdown(token); }

  // Page faults while a page's memory is written to once.
  static long FaultsOfAPage() {
    rusage before = {}, after = {};
    getrusage(RUSAGE_SELF, &before);
    Dirty(kPage);
    getrusage(RUSAGE_SELF, &after);
    return after.ru_minflt - before.ru_minflt;
  }
  // Makes, fills and frees a block.
  static void Dirty(SIZE_T size) {
    void* block = LocalAlloc(LMEM_FIXED, size);
    std::memset(block, 0xEE, size);
    LocalFree(block);
  }

  ULONG_PTR token = 0;
};

TEST_F(Memory, IsKeptForTheNextPageAndGivenBackAtTheEnd) {
  if (kSanitized) GTEST_SKIP() << "the sanitizer has its own heap";
  Dirty(kPage);
  EXPECT_LT(FaultsOfAPage(), 50);
  Stop();
  EXPECT_GT(FaultsOfAPage(), 500);
  Start();
}

// What was never written is zero, though the memory held something before.
TEST_F(Memory, StreamHoldsWhatWasWritten) {
  Dirty(200000);
  ComPtr<IStream> stream;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
  const std::string first(9000, 'a'), second(50000, 'b');
  ASSERT_EQ(stream->Write(first.data(), 9000, nullptr), S_OK);
  const LARGE_INTEGER ahead = {.QuadPart = 1000};
  ULARGE_INTEGER position = {};
  ASSERT_EQ(stream->Seek(ahead, STREAM_SEEK_END, &position), S_OK);
  EXPECT_EQ(position.QuadPart, 10000u);
  ASSERT_EQ(stream->Write(second.data(), 50000, nullptr), S_OK);
  ASSERT_EQ(stream->SetSize({.QuadPart = 59000}), S_OK);
  ASSERT_EQ(stream->SetSize({.QuadPart = 61000}), S_OK);
  std::string content(200000, '\0');
  ULONG read = 0;
  stream->Seek({}, STREAM_SEEK_SET, nullptr);
  ASSERT_EQ(stream->Read(content.data(), 200000, &read), S_OK);
  EXPECT_EQ(content.substr(0, read),
            first + std::string(1000, '\0') + second.substr(0, 49000) + std::string(2000, '\0'));
}

}  // namespace
