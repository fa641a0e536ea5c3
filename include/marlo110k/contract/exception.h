// SPDX-License-Identifier: Apache-2.0
// The records in which a processor exception is handed to a filter or a dump.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t kZrMaximumExceptionParameters = 15;

inline constexpr uint32_t EXCEPTION_GUARD_PAGE = 0x80000001;
inline constexpr uint32_t EXCEPTION_DATATYPE_MISALIGNMENT = 0x80000002;
inline constexpr uint32_t EXCEPTION_ACCESS_VIOLATION = 0xC0000005;

/// One exception.
struct EXCEPTION_RECORD {
  uint32_t ExceptionCode;
  uint32_t ExceptionFlags;
  EXCEPTION_RECORD* ExceptionRecord;  ///< The exception during which this one happened, or null.
  void* ExceptionAddress;             ///< The instruction.
  uint32_t NumberParameters;
  uint64_t ExceptionInformation[kZrMaximumExceptionParameters];  ///< An access: 0 read or 1 write, then the address.
};
static_assert(sizeof(EXCEPTION_RECORD) == 152);
static_assert(offsetof(EXCEPTION_RECORD, ExceptionAddress) == 16);
static_assert(offsetof(EXCEPTION_RECORD, ExceptionInformation) == 32);

/// An exception with the processor's state, which the library doesn't read.
struct EXCEPTION_POINTERS {
  EXCEPTION_RECORD* ExceptionRecord;
  void* ContextRecord;
};
static_assert(sizeof(EXCEPTION_POINTERS) == 16);
