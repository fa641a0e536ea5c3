// SPDX-License-Identifier: Apache-2.0
// The cheapest call through a shared library: the measure of a lookup.
#include <cstdint>

extern "C" uint32_t BenchEmptyCall(uint32_t value);
extern "C" uint32_t BenchEmptyCall(uint32_t value) { return value; }
