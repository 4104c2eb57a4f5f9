// tslib 1.22 forgets its device's name at ts_close() and a module's record at every ts_config() or
// ts_reconfig(). The leak sanitizer shall find ours, not those. These are the names by which its
// runtime asks; without it nobody calls them.

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libts.so\n";
}

extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options()
{
    // Whole stacks: the records are allocated in modules that are unloaded at the end.
    return "fast_unwind_on_malloc=0";
}
// NOLINTEND(bugprone-reserved-identifier)
