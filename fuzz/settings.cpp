// Settings files: accepted, or refused with an error that names the fault.

#include "host/settings/settings.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "host/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("settings", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size))
    return 0;
  try {
    Settings settings;
    settings.ReadFile(path);
    OEMDEV devmode = {};
    settings.ApplyTo(devmode);
  } catch (const HostError& error) {
    if (std::string_view(error.what()).empty()) std::abort();
  }
  return 0;
}
