// SPDX-License-Identifier: Apache-2.0
// Lets allocations of wild sizes fail under the sanitizers as they do without them.

extern "C" {
const char* __asan_default_options();
const char* __tsan_default_options();
const char* __asan_default_options() { return "allocator_may_return_null=1"; }
const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
}
