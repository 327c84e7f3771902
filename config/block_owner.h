// Owners of blocks of the platform's two heaps.
#pragma once

#include <memory>

#include "platform/memory.h"

struct LocalFreer {
  void operator()(void* block) const { LocalFree(block); }
};
template <typename T>
using LocalBlock = std::unique_ptr<T, LocalFreer>;

struct GlobalFreer {
  void operator()(void* block) const { GlobalFree(block); }
};
template <typename T>
using GlobalBlock = std::unique_ptr<T, GlobalFreer>;
