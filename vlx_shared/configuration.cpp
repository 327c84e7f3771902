// Configuration records of printers, made from the label bounds in system.toml.

#include <algorithm>
#include <list>
#include <mutex>
#include <new>

#include "config/vlx_shared.h"
#include "platform/extensions.h"

namespace {

// One record for each set of bounds. Pointers to records stay valid when system.toml changes.
struct Cache {
  std::mutex mutex;
  int instances = 0;
  std::list<std::pair<PlatformLabelBounds, Config>> records;
};

Cache& TheCache() {
  static Cache cache;
  return cache;
}

ConfigsCache theInstance;

const Config* Intern(const PlatformLabelBounds& bounds) {
  Cache& cache = TheCache();
  const std::lock_guard locked(cache.mutex);
  if (cache.instances == 0) return nullptr;
  for (const auto& [known, record] : cache.records) {
    if (known == bounds) return &record;
  }
  Config record = {};
  record.dwMinLabelWidth = bounds.minWidthUm;
  record.dwMaxLabelWidth = bounds.maxWidthUm;
  record.dwMinLabelLength = bounds.minLengthUm;
  record.dwMaxLabelLength = bounds.maxLengthUm;
  return &cache.records.emplace_back(bounds, record).second;
}

}  // namespace

ConfigsCache* ConfigsCache::GetInstance() {
  const std::lock_guard locked(TheCache().mutex);
  ++TheCache().instances;
  return &theInstance;
}

BOOL ConfigsCache::ReleaseInstance() {
  Cache& cache = TheCache();
  const std::lock_guard locked(cache.mutex);
  if (cache.instances == 0) return FALSE;
  if (--cache.instances == 0) cache.records.clear();
  return TRUE;
}

bool CConfigParser::Load(HANDLE hPrinter, const Config** config, ConfigsCache* cache,
                         CLoggerClient&) try {
  if (config == nullptr) return false;
  *config = nullptr;
  if (cache == nullptr) return false;
  const auto printer = PlatformPrinterFromHandle(hPrinter);
  if (!printer || !printer->label) return false;
  *config = Intern(*printer->label);
  return *config != nullptr;
} catch (const std::bad_alloc&) {
  return false;
}

bool CConfigParser::GetPrinterDriverName(HANDLE hPrinter, LPWSTR buffer, DWORD cchBuffer,
                                         CLoggerClient&) try {
  if (buffer == nullptr || cchBuffer == 0) return false;
  buffer[0] = 0;
  const auto printer = PlatformPrinterFromHandle(hPrinter);
  if (!printer || printer->driver.empty() || printer->driver.size() >= cchBuffer) return false;
  std::copy_n(printer->driver.c_str(), printer->driver.size() + 1, buffer);
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

const char* VlxSharedVersion() { return VLX_VERSION; }
