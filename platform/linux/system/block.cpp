#include "platform/linux/system/block.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/linux/system/fault_state.h"

namespace {

constexpr SIZE_T kSmallestMapped = SIZE_T{32} << 10;
constexpr SIZE_T kGranule = SIZE_T{64} << 10;    // pages of nearly one size fit the same block
constexpr SIZE_T kMostKept = SIZE_T{160} << 20;  // three pages of 4 x 12 inches at 600 dpi
constexpr std::uintptr_t kPageMask = 4095;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPlain = true;
#elif defined(__has_feature)
constexpr bool kPlain = __has_feature(address_sanitizer);
#else
constexpr bool kPlain = false;
#endif

struct Mapping {
  void* at;  // null: an unused place
  SIZE_T capacity;
  SIZE_T bytes;  // asked for, of a block in use
  bool inUse;
};

// Few enough to search one by one. Where two blocks fit equally the older is taken: it is the one
// whose memory has been written to already.
std::mutex mutex;
Mapping mappings[32];
SIZE_T keptBytes = 0;
bool keeps = false;

SIZE_T RoundUp(SIZE_T bytes) { return (bytes + kGranule - 1) / kGranule * kGranule; }

Mapping* Find(void* at) {
  if (at == nullptr || (reinterpret_cast<std::uintptr_t>(at) & kPageMask) != 0) return nullptr;
  Mapping* found = std::find_if(std::begin(mappings), std::end(mappings),
                                [at](const Mapping& mapping) { return mapping.at == at; });
  return found == std::end(mappings) ? nullptr : found;
}

void Unmap(Mapping& mapping) {
  munmap(mapping.at, mapping.capacity);
  if (!mapping.inUse) keptBytes -= mapping.capacity;
  mapping = {};
}

Mapping* Use(Mapping& kept, SIZE_T bytes) {
  kept.inUse = true;
  kept.bytes = bytes;
  keptBytes -= kept.capacity;
  return &kept;
}

void Keep(Mapping& mapping) {
  mapping.inUse = false;
  keptBytes += mapping.capacity;
  if (!keeps || keptBytes > kMostKept || FaultsArmed()) Unmap(mapping);
}

// A kept block that is not much too large.
Mapping* TakeFitting(SIZE_T bytes) {
  Mapping* best = nullptr;
  for (Mapping& kept : mappings) {
    if (kept.at == nullptr || kept.inUse || kept.capacity < bytes ||
        kept.capacity / 2 > RoundUp(bytes)) {
      continue;
    }
    if (best == nullptr || kept.capacity < best->capacity) best = &kept;
  }
  return best == nullptr ? nullptr : Use(*best, bytes);
}

// The largest kept block, for one that grows and will go on growing.
Mapping* TakeLargest(SIZE_T bytes) {
  Mapping* best = nullptr;
  for (Mapping& kept : mappings) {
    if (kept.at == nullptr || kept.inUse || kept.capacity < bytes) continue;
    if (best == nullptr || kept.capacity > best->capacity) best = &kept;
  }
  return best == nullptr ? nullptr : Use(*best, bytes);
}

// Kept blocks that have become too small make room for the new one.
Mapping* Map(SIZE_T bytes) {
  const SIZE_T capacity = RoundUp(bytes);
  if (capacity < bytes) return nullptr;
  for (Mapping& kept : mappings) {
    if (kept.at != nullptr && !kept.inUse && kept.capacity < bytes) Unmap(kept);
  }
  Mapping* place = std::find_if(std::begin(mappings), std::end(mappings),
                                [](const Mapping& mapping) { return mapping.at == nullptr; });
  if (place == std::end(mappings)) return nullptr;
  void* at = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (at == MAP_FAILED) return nullptr;
  *place = {at, capacity, bytes, true};
  return place;
}

void KeepSpares(SIZE_T bytes, int count) {
  for (; keeps && count > 0; --count) {
    Mapping* spare = Map(bytes);
    if (spare == nullptr) return;
    std::memset(spare->at, 0, spare->capacity);  // so that the memory is real
    Keep(*spare);
  }
}

// A mapped block; null when the heap has to give it.
void* AllocateMapped(SIZE_T bytes, bool zeroFilled, int spares) {
  const std::lock_guard locked(mutex);
  if (Mapping* kept = TakeFitting(bytes)) {
    if (zeroFilled) std::memset(kept->at, 0, bytes);
    return kept->at;
  }
  const Mapping* fresh = Map(bytes);
  if (fresh == nullptr) return nullptr;
  KeepSpares(bytes, spares);
  return fresh->at;
}

// Grows a mapping beyond its capacity, with some room for the growth to come. Its bytes move into a
// kept block when one is large enough.
bool Enlarge(Mapping& mapping, SIZE_T bytes) {
  if (Mapping* larger = TakeLargest(bytes)) {
    std::memcpy(larger->at, mapping.at, mapping.bytes);
    std::swap(mapping.at, larger->at);
    std::swap(mapping.capacity, larger->capacity);
    Keep(*larger);
    return true;
  }
  const SIZE_T capacity = RoundUp(bytes + bytes / 4);
  if (capacity < bytes) return false;
  void* moved = mremap(mapping.at, mapping.capacity, capacity, MREMAP_MAYMOVE);
  if (moved == MAP_FAILED) return false;
  mapping.at = moved;
  mapping.capacity = capacity;
  return true;
}

// Moves a heap block of that many bytes into a mapping.
void* MoveToMapping(void* block, SIZE_T oldBytes, SIZE_T bytes) {
  const std::lock_guard locked(mutex);
  const Mapping* mapping = TakeLargest(bytes);
  if (mapping == nullptr) mapping = Map(bytes);
  if (mapping == nullptr) return nullptr;
  std::memcpy(mapping->at, block, oldBytes);
  std::free(block);
  return mapping->at;
}

void* ReallocateHeap(void* block, SIZE_T bytes, bool mayMap) {
  const SIZE_T oldBytes = malloc_usable_size(block);
  if (mayMap) {
    if (void* moved = MoveToMapping(block, std::min(oldBytes, bytes), bytes)) return moved;
  }
  return std::realloc(block, bytes);
}

}  // namespace

void* AllocateBlock(SIZE_T bytes, bool zeroFilled, int spares) {
  bytes = std::max<SIZE_T>(bytes, 1);
  if (!kPlain && bytes >= kSmallestMapped && !FaultsArmed()) {
    if (void* block = AllocateMapped(bytes, zeroFilled, spares)) return block;
  }
  return zeroFilled ? std::calloc(1, bytes) : std::malloc(bytes);
}

void* ReallocateBlock(void* block, SIZE_T bytes) {
  bytes = std::max<SIZE_T>(bytes, 1);
  if (block == nullptr) return AllocateBlock(bytes, false);
  {
    const std::lock_guard locked(mutex);
    if (Mapping* mapping = Find(block)) {
      if (bytes > mapping->capacity && !Enlarge(*mapping, bytes)) return nullptr;
      mapping->bytes = bytes;
      return mapping->at;
    }
  }
  return ReallocateHeap(block, bytes, !kPlain && bytes >= kSmallestMapped && !FaultsArmed());
}

void FreeBlock(void* block) {
  {
    const std::lock_guard locked(mutex);
    if (Mapping* mapping = Find(block)) return Keep(*mapping);
  }
  std::free(block);
}

void KeepFreedBlocks(bool keep) {
  const std::lock_guard locked(mutex);
  keeps = keep;
  for (Mapping& kept : mappings) {
    if (!keep && kept.at != nullptr && !kept.inUse) Unmap(kept);
  }
}
