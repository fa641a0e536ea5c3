// SPDX-License-Identifier: Apache-2.0
// Translates error numbers of the platform and of common dialogs into result codes.
#include <cstddef>
#include <cstdint>

#include "marlo110k/errors.h"

namespace marlo {
namespace {

struct ErrorRow {
  uint32_t error;
  HRESULT code;
};

constexpr ErrorRow kPlatformErrors[] = {
    {0, S_OK},
    {1, E_INVALIDARG},
    {2, ZR_E_NOT_FOUND},
    {3, ZR_E_NOT_FOUND},
    {4, ZR_E_TOO_MANY_FILES},
    {5, E_ACCESSDENIED},
    {6, E_HANDLE},
    {14, E_OUTOFMEMORY},
    {15, ZrCode(0x800404B0)},  // an invalid device
    {32, ZR_E_SHARING},
    {39, ZR_E_DISK_FULL},
    {80, ZR_E_FILE_EXISTS},
    {84, E_OUTOFMEMORY},
    {110, ZR_E_FILE_OPEN},
    {112, ZR_E_DISK_FULL},
    {120, E_NOTIMPL},
    {123, ZR_E_INVALID_NAME},
    {126, ZR_E_NOT_FOUND},
    {127, ZR_E_NOT_FOUND},
    {170, ZR_E_BUSY},
    {183, ZR_E_ALREADY_EXISTS},
};

constexpr HRESULT kMissingResource = ZrCode(0x8004E00E);

constexpr ErrorRow kDialogErrors[] = {
    {0, S_OK},
    {1, E_INVALIDARG},
    {2, E_OUTOFMEMORY},
    {3, E_INVALIDARG},
    {4, E_INVALIDARG},
    {5, E_OUTOFMEMORY},
    {6, kMissingResource},
    {7, E_OUTOFMEMORY},
    {8, E_OUTOFMEMORY},
    {9, E_OUTOFMEMORY},
    {10, E_OUTOFMEMORY},
    {11, E_INVALIDARG},
    {12289, E_OUTOFMEMORY},
    {12290, ZR_E_INVALID_NAME},
    {12291, E_INVALIDARG},
    {16385, E_INVALIDARG},
    {65535, E_INVALIDARG},
};

template <size_t kRows>
HRESULT Translate(const ErrorRow (&rows)[kRows], uint32_t error) noexcept {
  for (const ErrorRow& row : rows) {
    if (row.error == error) return row.code;
  }
  return E_FAIL;
}

}  // namespace
}  // namespace marlo

HRESULT ZrErrorHandler_TranslateWin32Error(uint32_t error) noexcept {
  return marlo::Translate(marlo::kPlatformErrors, error);
}

HRESULT ZrErrorHandler_TranslateCommDlgError(uint32_t error) noexcept {
  return marlo::Translate(marlo::kDialogErrors, error);
}
