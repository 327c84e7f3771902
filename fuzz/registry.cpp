// Registry exports: a malformed one is refused with a message.

#include <cstdint>
#include <stdexcept>

#include "platform/linux/registry/registry_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    ParseRegistryFile(std::string(reinterpret_cast<const char*>(data), size));
  } catch (const std::runtime_error&) {
  }
  return 0;
}
