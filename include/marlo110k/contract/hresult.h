// SPDX-License-Identifier: Apache-2.0
// Result codes: the platform's common ones and the library's own range.
#pragma once

#include <cstdint>

/// Status of an operation: negative on failure, zero or positive on success.
using HRESULT = int32_t;

/// True for success, with or without a remark.
constexpr bool SUCCEEDED(HRESULT code) noexcept { return code >= 0; }
/// True for a failure.
constexpr bool FAILED(HRESULT code) noexcept { return code < 0; }

/// Makes a code from its published unsigned form, since failures have the top bit set.
constexpr HRESULT ZrCode(uint32_t code) noexcept { return static_cast<HRESULT>(code); }

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = ZrCode(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = ZrCode(0x80004002);
inline constexpr HRESULT E_POINTER = ZrCode(0x80004003);
inline constexpr HRESULT E_FAIL = ZrCode(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = ZrCode(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = ZrCode(0x80070005);
inline constexpr HRESULT E_HANDLE = ZrCode(0x80070006);
inline constexpr HRESULT E_OUTOFMEMORY = ZrCode(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = ZrCode(0x80070057);

// What streams fail with.
inline constexpr HRESULT STG_E_INVALIDFUNCTION = ZrCode(0x80030001);
inline constexpr HRESULT STG_E_ACCESSDENIED = ZrCode(0x80030005);
inline constexpr HRESULT STG_E_INVALIDPOINTER = ZrCode(0x80030009);
inline constexpr HRESULT STG_E_WRITEFAULT = ZrCode(0x8003001D);
inline constexpr HRESULT STG_E_READFAULT = ZrCode(0x8003001E);
inline constexpr HRESULT STG_E_MEDIUMFULL = ZrCode(0x80030070);
inline constexpr HRESULT ZR_E_END_OF_STREAM = ZrCode(0x800A0026);

// The library's own failures (0x8004E000 up) and successes with a remark (0x0004E000 up).
inline constexpr HRESULT ZR_E_UNSUPPORTED_MEDIA = ZrCode(0x8004E000);
inline constexpr HRESULT ZR_E_DISK_FULL = ZrCode(0x8004E002);
inline constexpr HRESULT ZR_E_BUSY = ZrCode(0x8004E005);
inline constexpr HRESULT ZR_E_FILE_CREATE = ZrCode(0x8004E006);
inline constexpr HRESULT ZR_E_FILE_OPEN = ZrCode(0x8004E007);
inline constexpr HRESULT ZR_E_FILE_READ = ZrCode(0x8004E008);
inline constexpr HRESULT ZR_E_FILE_WRITE = ZrCode(0x8004E009);
inline constexpr HRESULT ZR_E_NOT_FOUND = ZrCode(0x8004E00A);
inline constexpr HRESULT ZR_E_UNKNOWN_FORMAT = ZrCode(0x8004E00B);
inline constexpr HRESULT ZR_E_CANCELLED = ZrCode(0x8004E00C);
inline constexpr HRESULT ZR_E_INVALID_NAME = ZrCode(0x8004E00D);
inline constexpr HRESULT ZR_E_UNSUPPORTED_FILE = ZrCode(0x8004E016);
inline constexpr HRESULT ZR_E_FAULT = ZrCode(0x8004E017);
inline constexpr HRESULT ZR_E_UNSUPPORTED_VERSION = ZrCode(0x8004E01C);
inline constexpr HRESULT ZR_E_TOO_MANY_FILES = ZrCode(0x8004E026);
inline constexpr HRESULT ZR_E_FILE_EXISTS = ZrCode(0x8004E032);
inline constexpr HRESULT ZR_E_FILE_TOO_LARGE = ZrCode(0x8004E03A);
inline constexpr HRESULT ZR_E_BUFFER_TOO_SMALL = ZrCode(0x8004E03C);
inline constexpr HRESULT ZR_E_SHARING = ZrCode(0x8004E05A);
inline constexpr HRESULT ZR_E_NO_RIFF_HEADER = ZrCode(0x8004E080);
inline constexpr HRESULT ZR_E_NO_LIST_HEADER = ZrCode(0x8004E081);
inline constexpr HRESULT ZR_E_EMPTY_CHUNK = ZrCode(0x8004E082);
inline constexpr HRESULT ZR_E_BAD_STREAM = ZrCode(0x8004E083);
inline constexpr HRESULT ZR_E_ENGINE = ZrCode(0x8004E0A2);
inline constexpr HRESULT ZR_E_ALREADY_EXISTS = ZrCode(0x8004E170);
inline constexpr HRESULT ZR_E_NO_CODEPAGE = ZrCode(0x8004E1FD);
inline constexpr HRESULT ZR_S_NO_CHANGE = 0x0004E001;
inline constexpr HRESULT ZR_S_PEAKS_VALID = 0x0004E00F;
