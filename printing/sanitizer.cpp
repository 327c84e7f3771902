// Sanitized builds only. libcups leaks a list of 16 bytes when it reads a queue's description
// (_ppdCacheCreateWithPPD, version 2.4.2). PAPPL leaks its command line's options at exit
// (papplMainloop, version 1.3.1) and the host name of a network printer that it cannot reach
// (papplDeviceOpen). The whole stack is needed to tell these leaks from ours.

#define SANITIZER_HOOK extern "C" __attribute__((visibility("default"))) const char*

SANITIZER_HOOK __asan_default_options() { return "fast_unwind_on_malloc=0"; }
SANITIZER_HOOK __lsan_default_suppressions() {
  return "leak:_ppdCacheCreateWithPPD\nleak:papplDeviceOpen\nleak:papplMainloop\n";
}
SANITIZER_HOOK __lsan_default_options() { return "print_suppressions=0"; }
