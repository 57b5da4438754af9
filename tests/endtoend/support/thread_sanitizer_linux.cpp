// What the thread sanitizer cannot see. One thread takes a module down, another
// one loads it again to the same place; the dynamic loader's own lock keeps them
// apart. Everything else is reported still.

extern "C" char const* __tsan_default_suppressions();  // NOLINT: the sanitizer's name

extern "C" __attribute__((visibility("default"))) char const* __tsan_default_suppressions() {
    return "race:call_init\n"
           "race:_dl_close_worker\n"
           "race:cxa_at_exit_wrapper\n";
}
