// SPDX-License-Identifier: Apache-2.0
// The record behind a settings handle, names of values, and the library's own settings.
#pragma once

#include <cstdint>

#include "marlo110k/metric.h"
#include "platform/sys/settings.h"

struct ZrMetricKey {
  char16_t path[kZrMetricPathCharacters + 1];
  plat::SettingsKey* key;  ///< Null when it couldn't be opened.
};

namespace marlo {

/// The stored name of a value: a letter for its type, none for numbers, and the id without its sign.
struct MetricName {
  static constexpr uint32_t kCharacters = 16;
  char16_t text[kCharacters];
  MetricName(int32_t id, uint32_t type) noexcept;
};

/// What stands for the library's own settings in reads is replaced by them. @return null for a handle without a key.
plat::SettingsKey* KeyForReading(HZRMETRIC metric) noexcept;
/// @return null for a handle without a key and for that of the library's own settings.
plat::SettingsKey* KeyForWriting(HZRMETRIC metric) noexcept;

/// Stores a value under the name of an id. @return S_OK or E_FAIL.
HRESULT StoreMetric(HZRMETRIC metric, int32_t id, uint32_t type, const void* data, uint32_t bytes) noexcept;

/// 0x8007xxxx for a platform error number, S_OK for 0.
constexpr HRESULT CodeOfError(uint32_t error) noexcept {
  return error == 0 ? S_OK : ZrCode(0x80070000 | (error & 0xFFFF));
}

/// Opens the library's own settings, and lets the language keep its choice in the store. When their key can't be had,
/// the defaults serve.
void OpenKernelMetrics() noexcept;
void CloseKernelMetrics() noexcept;

}  // namespace marlo
