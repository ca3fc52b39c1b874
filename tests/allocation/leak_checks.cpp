// What LeakSanitizer needs to know here, in builds that have it; elsewhere nobody calls these.

/// Whole stacks, by which leaks are told from those below; the quick way ends at libraries without frame pointers.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }

/// Embree loses the block of a thread that builds a tree when the memory to note it down is refused.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:rtcCommitScene\n"; }
