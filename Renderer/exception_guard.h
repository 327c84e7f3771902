// What keeps exceptions inside the plug-in: a method, hook or export that runs out of memory gives
// its failure result instead.
#pragma once

#include <utility>

#include "platform/types.h"

template <typename Result, typename Body>
Result Guarded(Result failure, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    SetLastError(ERROR_OUTOFMEMORY);
    return failure;
  }
}
