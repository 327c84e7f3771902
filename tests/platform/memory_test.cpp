#include "platform/memory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/fault.h"
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
  ~Memory() override {
    PlatformSetFaultHook(nullptr, nullptr);
    Stop();
  }
  void Start() {
    const Gdiplus::GdiplusStartupInput input = {1, nullptr, FALSE, FALSE};
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
  }
  void Stop() { Gdiplus::GdiplusShutdown(token); }

  // Page faults while a page's memory is written to once.
  static long FaultsOfAPage() {
    rusage before = {}, after = {};
    getrusage(RUSAGE_SELF, &before);
    void* block = LocalAlloc(LMEM_FIXED, kPage);
    std::memset(block, 1, kPage);
    LocalFree(block);
    getrusage(RUSAGE_SELF, &after);
    return after.ru_minflt - before.ru_minflt;
  }
  static bool IsFilled(const BYTE* bytes, SIZE_T size, BYTE with) {
    return std::all_of(bytes, bytes + size, [with](BYTE byte) { return byte == with; });
  }

  ULONG_PTR token = 0;
};

TEST_F(Memory, IsKeptForTheNextPageAndGivenBackAtTheEnd) {
  if (kSanitized) GTEST_SKIP() << "every block is heap memory";
  EXPECT_GT(FaultsOfAPage(), 500);
  EXPECT_LT(FaultsOfAPage(), 50);
  void* last = LocalAlloc(LMEM_FIXED, kPage);
  Stop();
  LocalFree(last);
  EXPECT_GT(FaultsOfAPage(), 500);
  EXPECT_GT(FaultsOfAPage(), 500);
  Start();
  EXPECT_GT(FaultsOfAPage(), 500);
  PlatformSetFaultHook([](const char*, void*) { return false; }, nullptr);
  EXPECT_GT(FaultsOfAPage() + FaultsOfAPage(), 500);  // a test sees every allocation
}

TEST_F(Memory, GrowingPageTakesTheRoomOfTheLast) {
  if (kSanitized) GTEST_SKIP() << "every block is heap memory";
  FaultsOfAPage();
  rusage before = {}, after = {};
  getrusage(RUSAGE_SELF, &before);
  BYTE* block = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, 30000));
  for (SIZE_T size = 60000; size <= kPage; size += 30000) {
    block = static_cast<BYTE*>(LocalReAlloc(block, size, LMEM_MOVEABLE));
    std::memset(block + size - 30000, 1, 30000);
  }
  getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_minflt - before.ru_minflt, 100);
  LocalFree(block);
}

TEST_F(Memory, LaterPagesFindRoomForDotsThatAreKept) {
  if (kSanitized) GTEST_SKIP() << "every block is heap memory";
  namespace Flat = Gdiplus::DllExports;
  std::vector<Gdiplus::GpBitmap*> kept;  // black and highlight of one page, then of the next
  rusage before = {}, after = {};
  for (int i = 0; i < 4; ++i) {
    Gdiplus::GpBitmap* bitmap = nullptr;
    Flat::GdipCreateBitmapFromScan0(1200, 1800, 0, Gdiplus::PixelFormat1bppIndexed, nullptr,
                                    &bitmap);
    if (i == 1) getrusage(RUSAGE_SELF, &before);
    Gdiplus::BitmapData data = {};
    ASSERT_EQ(Flat::GdipBitmapLockBits(bitmap, nullptr, Gdiplus::ImageLockModeWrite,
                                       Gdiplus::PixelFormat1bppIndexed, &data),
              Gdiplus::Ok);
    std::memset(data.Scan0, 0x55, data.Stride * 1800);
    Flat::GdipBitmapUnlockBits(bitmap, &data);
    kept.push_back(bitmap);
  }
  getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_minflt - before.ru_minflt, 20);
  for (Gdiplus::GpBitmap* bitmap : kept) Flat::GdipDisposeImage(bitmap);
}

TEST_F(Memory, DirtyBlocksComeBackZeroedOnRequest) {
  for (const SIZE_T size : {SIZE_T{100}, SIZE_T{40000}, kPage}) {
    BYTE* block = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, size));
    std::memset(block, 0xEE, size);
    LocalFree(block);
    block = static_cast<BYTE*>(LocalAlloc(LPTR, size));
    EXPECT_TRUE(IsFilled(block, size, 0)) << size;
    LocalFree(block);
  }
}

// Blocks of several owners that are made, grown and freed in any order, each filled with a byte of
// its own: none ever lies in another.
void Churn(unsigned seed) {
  struct Owned {
    BYTE* bytes = nullptr;
    SIZE_T size = 0;
  };
  std::mt19937 random(seed);
  std::vector<Owned> blocks(6);
  for (int round = 0; round < 600; ++round) {
    const std::size_t index = random() % blocks.size();
    Owned& block = blocks[index];
    const auto fill = static_cast<BYTE>(seed * 16 + index);
    const SIZE_T size = random() % (random() % 2 == 0 ? 200000 : 2000);
    const SIZE_T kept = std::min(size, block.size);
    if (random() % 3 == 0) {
      LocalFree(block.bytes);
      block = {static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, size)), size};
    } else if (block.bytes != nullptr) {
      block = {static_cast<BYTE*>(LocalReAlloc(block.bytes, size, LMEM_MOVEABLE)), size};
      ASSERT_TRUE(
          std::all_of(block.bytes, block.bytes + kept, [fill](BYTE byte) { return byte == fill; }))
          << "round " << round;
    }
    if (block.bytes != nullptr) std::memset(block.bytes, fill, size);
  }
  for (const Owned& block : blocks) LocalFree(block.bytes);
}

TEST_F(Memory, BlocksOfManyOwnersNeverMeet) {
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= 4; ++seed) threads.emplace_back(Churn, seed);
  for (std::thread& thread : threads) thread.join();
}

TEST_F(Memory, BlockThatCannotGrowStaysAsItWas) {
  for (const SIZE_T size : {SIZE_T{100}, SIZE_T{100000}}) {
    BYTE* block = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, size));
    std::memset(block, 7, size);
    if (!kSanitized) {  // which would end the program
      EXPECT_EQ(LocalReAlloc(block, ~SIZE_T{0} / 2, LMEM_MOVEABLE), nullptr);
      EXPECT_EQ(GetLastError(), 8u);
    }
    EXPECT_EQ(LocalReAlloc(block, 200, LPTR), nullptr);
    EXPECT_EQ(LocalReAlloc(nullptr, 200, LMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GetLastError(), 87u);
    PlatformSetFaultHook(
        [](const char* call, void*) { return std::strcmp(call, "LocalReAlloc") == 0; }, nullptr);
    EXPECT_EQ(LocalReAlloc(block, 300000, LMEM_MOVEABLE), nullptr);
    PlatformSetFaultHook(nullptr, nullptr);
    EXPECT_TRUE(IsFilled(block, size, 7)) << size;
    LocalFree(block);
  }
}

// Any mix of writing, seeking and sizing against a plain string; what was never written is zero,
// though the memory held something before.
TEST_F(Memory, StreamHoldsWhatWasWritten) {
  std::mt19937 random(4);
  for (int round = 0; round < 30; ++round) {
    void* dirt = LocalAlloc(LMEM_FIXED, 200000);
    std::memset(dirt, 0xEE, 200000);
    LocalFree(dirt);
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    std::string expected;
    for (int step = 0; step < 12; ++step) {
      const std::size_t at = random() % 60000;
      if (random() % 4 == 0) {
        ASSERT_EQ(stream->SetSize(at), S_OK);
        expected.resize(at);
        continue;
      }
      const std::string piece(1 + random() % 9000, static_cast<char>('a' + step));
      if (expected.size() < at + piece.size()) expected.resize(at + piece.size());
      expected.replace(at, piece.size(), piece);
      ULARGE_INTEGER position = 0;
      ASSERT_EQ(stream->Seek(static_cast<LARGE_INTEGER>(at), STREAM_SEEK_SET, &position), S_OK);
      ASSERT_EQ(stream->Write(piece.data(), static_cast<ULONG>(piece.size()), nullptr), S_OK);
    }
    std::string content(expected.size() + 1, '\0');
    ULONG read = 0;
    ASSERT_EQ(stream->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
    ASSERT_EQ(stream->Read(content.data(), static_cast<ULONG>(content.size()), &read), S_OK);
    content.resize(read);
    ASSERT_EQ(content, expected) << "round " << round;
  }
}

}  // namespace
