// Suppresses leaks of libraries in sanitized builds. libcups 2.4.2 leaks 16 bytes when it reads a
// queue's description (_ppdCacheCreateWithPPD). PAPPL 1.3.1 leaks the options of its command line
// at exit (papplMainloop) and the host name of a printer that it cannot reach (papplDeviceOpen).
// Whole stacks are needed to tell these leaks from ours.

#define SANITIZER_HOOK extern "C" __attribute__((visibility("default"))) const char*

SANITIZER_HOOK __asan_default_options() { return "fast_unwind_on_malloc=0"; }
SANITIZER_HOOK __lsan_default_suppressions() {
  return "leak:_ppdCacheCreateWithPPD\nleak:papplDeviceOpen\nleak:papplMainloop\n";
}
SANITIZER_HOOK __lsan_default_options() { return "print_suppressions=0"; }
