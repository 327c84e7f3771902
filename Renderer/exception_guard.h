// Keeps exceptions inside the plug-in: a method, hook or export that throws returns its failure
// result instead.
#pragma once

#include <new>
#include <utility>

#include "platform/types.h"

// The body's result, or failure if it throws. The last error tells when memory ran out; of any
// other exception nothing is known, so the last error stays.
template <typename Result, typename Body>
Result Guarded(Result failure, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    SetLastError(ERROR_OUTOFMEMORY);
    return failure;
  } catch (...) {
    return failure;
  }
}
