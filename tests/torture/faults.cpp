#include "tests/torture/faults.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

#include "platform/extensions.h"
#include "tests/driver/plugin.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SANITIZED 1
#endif
#endif

namespace {

thread_local bool armed = false;
Domain armedDomain = Domain::Calls;
long failAt = 0;
bool failOnwards = false;
long seen = 0;
bool failed = false;

std::set<std::string> names;

bool Fails(Domain domain) {
  if (!armed || !InPlugin::Now() || domain != armedDomain) return false;
  ++seen;
  const bool hit = failOnwards ? seen >= failAt : seen == failAt;
  failed |= hit;
  return hit;
}

bool CallFails(const char* call, void*) {
  if (!Fails(Domain::Calls)) return false;
  const InPlugin outside(false);
  names.insert(call);
  return true;
}

}  // namespace

void Arm(Domain domain, long n, bool onwards) {
  ForgetFailed();
  armedDomain = domain;
  failAt = n;
  failOnwards = onwards;
  seen = 0;
  failed = false;
  armed = true;
  PlatformSetFaultHook(CallFails, nullptr);
}

void Disarm() {
  armed = false;
  PlatformSetFaultHook(nullptr, nullptr);
}

bool HasFailed() { return failed; }
const std::set<std::string>& Failed() { return names; }
void ForgetFailed() { names.clear(); }

std::string Leak(long before) {
  const long blocks = LiveBlocks() - before;
  return blocks == 0 ? "" : std::to_string(blocks) + " blocks leak";
}

#ifdef SANITIZED

// The sanitizer owns malloc, so only operator new can fail.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
long LiveBytes() { return static_cast<long>(__sanitizer_get_current_allocated_bytes()); }
long LiveBlocks() { return LiveBytes(); }

#if !defined(__SANITIZE_THREAD__)
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Fails(Domain::Memory) ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size) {
  void* block = operator new(size, std::nothrow);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
#endif

#else

// Replaces the process's allocator, so that requests of the C library and libpng count too.
namespace {

constexpr std::size_t kMostBytes = std::size_t{128} << 20;  // as the sanitizer is told

std::atomic<long> liveBytes{0};
std::atomic<long> liveBlocks{0};

void Count(void* block, int sign) {
  liveBlocks += block == nullptr ? 0 : sign;
  liveBytes += sign * static_cast<long>(malloc_usable_size(block));
}
void* Counted(void* block) {
  Count(block, 1);
  return block;
}
bool OutOfMemory(std::size_t bytes) {
  if (bytes <= kMostBytes && !Fails(Domain::Memory)) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

long LiveBytes() { return liveBytes; }
long LiveBlocks() { return liveBlocks; }

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
  return OutOfMemory(size) ? nullptr : Counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
  return OutOfMemory(count * size) ? nullptr : Counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
  if (OutOfMemory(size)) return nullptr;
  Count(block, -1);
  return Counted(__libc_realloc(block, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
  return OutOfMemory(size) ? nullptr : Counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) {
  Count(block, -1);
  __libc_free(block);
}
}

#endif
