// Under the address sanitizer a request of more than 1 GiB can't be met, which gives null as it does without.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=1024"; }
