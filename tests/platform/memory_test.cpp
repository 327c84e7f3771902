#include "platform/memory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

bool IsFilled(const BYTE* bytes, SIZE_T size, BYTE with) {
  return std::all_of(bytes, bytes + size, [with](BYTE byte) { return byte == with; });
}

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

  // Page faults during some work.
  template <typename Work>
  static long FaultsOf(const Work& work) {
    rusage before = {}, after = {};
    getrusage(RUSAGE_SELF, &before);
    work();
    getrusage(RUSAGE_SELF, &after);
    return after.ru_minflt - before.ru_minflt;
  }
  // Those while a page's memory is written to once.
  static long FaultsOfAPage() {
    return FaultsOf([] { Dirty(kPage); });
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
  mallopt(M_MMAP_THRESHOLD, 128 << 10);  // whatever the tests before have made the heap keep,
  malloc_trim(0);                        // and have left in it
  EXPECT_GT(FaultsOfAPage() + FaultsOfAPage(), 500);  // a test sees every allocation
  PlatformSetFaultHook(nullptr, nullptr);
}

TEST_F(Memory, LaterPagesTakeTheRoomOfEarlierOnes) {
  if (kSanitized) GTEST_SKIP() << "every block is heap memory";
  Dirty(kPage);
  void* block = LocalAlloc(LMEM_FIXED, 30000);
  EXPECT_LT(FaultsOf([&] {
              for (SIZE_T size = 60000; size <= kPage; size += 30000) {
                block = LocalReAlloc(block, size, LMEM_MOVEABLE);
                std::memset(static_cast<BYTE*>(block) + size - 30000, 1, 30000);
              }
            }),
            100);
  LocalFree(block);
  // Black and highlight of one page are kept while the next one's are made.
  std::vector<std::unique_ptr<Gdiplus::Bitmap>> kept;
  const auto keep = [&kept] {
    kept.push_back(std::make_unique<Gdiplus::Bitmap>(1200, 1800, PixelFormat1bppIndexed));
    Gdiplus::Graphics(kept.back().get()).Clear(0xFFFFFFFF);
  };
  keep();
  EXPECT_LT(FaultsOf([&] { keep(), keep(), keep(); }), 20);
}

// Blocks of several owners that are made, grown and freed in any order, each filled with a byte of
// its own: none ever lies in another, and what is asked for zeroed is zero whatever it held before.
void Churn(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::pair<BYTE*, SIZE_T>> blocks(6);
  for (int round = 0; round < 600; ++round) {
    const std::size_t index = random() % blocks.size();
    auto& [block, size] = blocks[index];
    const auto fill = static_cast<BYTE>(seed * 16 + index);
    const SIZE_T kept = std::exchange(size, random() % (random() % 2 == 0 ? 200000 : 2000));
    if (random() % 3 == 0) {
      LocalFree(block);
      const bool zeroed = random() % 2 == 0;
      block = static_cast<BYTE*>(LocalAlloc(zeroed ? LPTR : LMEM_FIXED, size));
      ASSERT_TRUE(!zeroed || IsFilled(block, size, 0)) << "round " << round;
    } else if (block != nullptr) {
      block = static_cast<BYTE*>(LocalReAlloc(block, size, LMEM_MOVEABLE));
      ASSERT_TRUE(IsFilled(block, std::min(size, kept), fill)) << "round " << round;
    }
    if (block != nullptr) std::memset(block, fill, size);
  }
  for (const auto& [block, size] : blocks) LocalFree(block);
}

TEST_F(Memory, BlocksOfManyOwnersNeverMeet) {
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= 4; ++seed) threads.emplace_back(Churn, seed);
  for (std::thread& thread : threads) thread.join();
}

// Any mix of writing, seeking and sizing against a plain string; what was never written is zero,
// though the memory held something before.
TEST_F(Memory, StreamHoldsWhatWasWritten) {
  std::mt19937 random(4);
  for (int round = 0; round < 30; ++round) {
    Dirty(200000);
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    std::string expected;
    for (int step = 0; step < 12; ++step) {
      const std::size_t at = random() % 60000;
      if (random() % 4 == 0) {
        ASSERT_EQ(stream->SetSize({.QuadPart = at}), S_OK);
        expected.resize(at);
        continue;
      }
      const std::string piece(1 + random() % 9000, static_cast<char>('a' + step));
      expected.resize(std::max(expected.size(), at + piece.size()));
      expected.replace(at, piece.size(), piece);
      const LARGE_INTEGER to = {.QuadPart = static_cast<std::int64_t>(at)};
      ASSERT_EQ(stream->Seek(to, STREAM_SEEK_SET, nullptr), S_OK);
      ASSERT_EQ(stream->Write(piece.data(), static_cast<ULONG>(piece.size()), nullptr), S_OK);
    }
    std::string content(200000, '\0');
    ULONG read = 0;
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    ASSERT_EQ(stream->Read(content.data(), 200000, &read), S_OK);
    ASSERT_EQ(content.substr(0, read), expected) << "round " << round;
  }
}

}  // namespace
