#include <atomic>

#include "platform/extensions.h"

namespace {

std::atomic<PlatformFaultHook> hook{nullptr};
void* hookContext = nullptr;  // changes only while no platform call runs

}  // namespace

void PlatformSetFaultHook(PlatformFaultHook newHook, void* context) {
  hook.store(nullptr);
  hookContext = context;
  hook.store(newHook);
}

bool PlatformShouldFail(const char* call) {
  const PlatformFaultHook current = hook.load(std::memory_order_relaxed);
  return current != nullptr && current(call, hookContext);
}
