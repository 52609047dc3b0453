// Built into the GNUstep tests under AddressSanitizer only. GNUstep's runtime and libraries
// keep allocations from their start-up (class tables, method lists, caches) for the life of
// the process without a pointer LeakSanitizer can see; those are theirs, not ours. Leaks of
// our own allocations still fail, and the window-list objects are counted by the tests.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libobjc.so\n"
         "leak:libgnustep-base.so\n"
         "leak:libgnustep-gui.so\n";
}
