// Under a sanitizer a request that can't be met gives null, as it does without.  Blocks of gigabytes can't be had: to mark all
// their bytes would take seconds.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=512"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=512"; }
