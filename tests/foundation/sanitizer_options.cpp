// Under a sanitizer a request for more memory than there is has to give null too, as it does
// without one. The sanitizers ask these functions; nothing else calls them.

extern "C" {
const char* __asan_default_options();
const char* __tsan_default_options();

const char* __asan_default_options() { return "allocator_may_return_null=1"; }
const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
}
