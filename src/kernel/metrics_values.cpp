// SPDX-License-Identifier: Apache-2.0
// Typed values of settings: numbers, strings, binary data, streams, and values of any type.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <vector>

#include "kernel/metrics.h"
#include "marlo110k/platform/stream.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr uint32_t kCharacterBytes = sizeof(char16_t);

struct TypeRow {
  uint32_t type;
  const char16_t* stored;     ///< Format of the stored name.
  const char16_t* displayed;  ///< Format of the name for display, which differs for numbers.
};
constexpr TypeRow kTypes[] = {
    {ZRREG_DWORD, u"%u", u"D%u"},
    {ZRREG_SZ, u"S%u", u"S%u"},
    {ZRREG_BINARY, u"B%u", u"B%u"},
    {ZRREG_MULTI_SZ, u"Z%u", u"Z%u"},
};

const TypeRow* FindType(uint32_t type) {
  const auto* row =
      std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& r) { return r.type == type; });
  return row != std::end(kTypes) ? row : nullptr;
}

/// Without a sign also for the lowest number, whose magnitude is no 32-bit number with sign.
uint32_t Magnitude(int32_t id) { return id < 0 ? 0U - static_cast<uint32_t>(id) : static_cast<uint32_t>(id); }

/// What a read found.
struct Found {
  uint32_t error = plat::kSettingMissing;
  uint32_t bytes = 0;  ///< The stored size.
};

/// Reads a value of one type into the buffer; one of another type is missing.
Found Read(plat::SettingsKey* key, const char16_t* name, uint32_t type, void* buffer, uint32_t size) noexcept {
  if (key == nullptr) return {};
  uint32_t storedType = 0;
  uint32_t bytes = size;
  const uint32_t error = plat::QuerySetting(key, name, &storedType, buffer, &bytes);
  const bool isThere = error == 0 || error == plat::kSettingMoreData;
  if (!isThere || storedType != type) return {};
  return {bytes > size ? plat::kSettingMoreData : 0, bytes};
}

bool ReadNumber(HZRMETRIC metric, const char16_t* name, int32_t* value) noexcept {
  const Found found = Read(KeyForReading(metric), name, ZRREG_DWORD, value, sizeof *value);
  return found.error == 0 && found.bytes == sizeof *value;
}

void ZeroFrom(void* buffer, uint32_t start, uint32_t size) noexcept {
  if (buffer != nullptr && start < size) std::memset(static_cast<char*>(buffer) + start, 0, size - start);
}

/// Texts of one type.
uint32_t ReadText(HZRMETRIC metric, int32_t id, uint32_t type, char16_t* buffer, uint32_t size,
                  const char16_t* defaultText, int32_t keepEmpty) noexcept {
  if (buffer == nullptr || size == 0) return 0;
  std::fill_n(buffer, size, u'\0');
  const uint32_t bytes = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{size} * kCharacterBytes, UINT32_MAX - 1));
  const Found found = Read(KeyForReading(metric), MetricName(id, type).text, type, buffer, bytes);
  // A text that fills the buffer without a terminator doesn't fit.
  const bool isWhole = found.error == 0 && (found.bytes / kCharacterBytes < size || buffer[size - 1] == 0);
  if (isWhole && buffer[0] != 0) {
    ZeroFrom(buffer, found.bytes / kCharacterBytes * kCharacterBytes, bytes);
    return type == ZRREG_MULTI_SZ ? found.bytes / kCharacterBytes : static_cast<uint32_t>(plat::TextLength(buffer));
  }
  std::fill_n(buffer, size, u'\0');
  if (defaultText == nullptr || (isWhole && keepEmpty != 0)) return 0;
  return static_cast<uint32_t>(plat::CopyText(buffer, size, defaultText));
}

/// Ends a string that a read has put into the buffer.
HRESULT Terminate(void* buffer, uint32_t size, uint32_t* bytes) noexcept {
  const uint32_t characters = *bytes / kCharacterBytes;
  char16_t last = 1;
  auto* const place = static_cast<char*>(buffer);
  const uint32_t end = characters * kCharacterBytes;
  if (characters != 0) std::memcpy(&last, place + end - kCharacterBytes, kCharacterBytes);
  constexpr char16_t kTerminator = 0;
  if (size - end >= kCharacterBytes) {
    std::memcpy(place + end, &kTerminator, kCharacterBytes);
    return S_OK;
  }
  if (last == 0) return S_OK;
  if (characters != 0) std::memcpy(place + end - kCharacterBytes, &kTerminator, kCharacterBytes);
  *bytes += kCharacterBytes;
  return ZR_E_BUFFER_TOO_SMALL;
}

/// Where a stream ends; its position stays.
HRESULT StreamBytes(IStream* stream, uint64_t* bytes) {
  uint64_t position = 0;
  HRESULT result = stream->Seek(0, STREAM_SEEK_CUR, &position);
  if (SUCCEEDED(result)) result = stream->Seek(0, STREAM_SEEK_END, bytes);
  if (SUCCEEDED(result)) result = stream->Seek(static_cast<int64_t>(position), STREAM_SEEK_SET, nullptr);
  return result;
}

}  // namespace

MetricName::MetricName(int32_t id, uint32_t type) noexcept {
  const TypeRow* row = FindType(type);
  ZrCchPrintF(text, kCharacters, nullptr, row != nullptr ? row->stored : u"%u", Magnitude(id));
}

HRESULT StoreMetric(HZRMETRIC metric, int32_t id, uint32_t type, const void* data, uint32_t bytes) noexcept {
  plat::SettingsKey* key = KeyForWriting(metric);
  if (key == nullptr || (data == nullptr && bytes != 0)) return E_FAIL;
  return plat::SetSetting(key, MetricName(id, type).text, type, data, bytes) == 0 ? S_OK : E_FAIL;
}

}  // namespace marlo

using marlo::kCharacterBytes;
using marlo::KeyForReading;
using marlo::KeyForWriting;
using marlo::MetricName;

int32_t ZrGetMetric(HZRMETRIC metric, int32_t id) noexcept { return ZrGetMetricEx(metric, id, 0, 0, 0); }

int32_t ZrGetMetricEx(HZRMETRIC metric, int32_t id, int32_t minimum, int32_t maximum, int32_t defaultValue) noexcept {
  int32_t value = 0;
  if (!marlo::ReadNumber(metric, MetricName(id, ZRREG_DWORD).text, &value)) value = defaultValue;
  if (minimum == maximum) return value;
  return std::min(std::max(value, minimum), maximum);
}

bool ZrGetMetricBool(HZRMETRIC metric, int32_t id, int32_t defaultValue) noexcept {
  return ZrGetMetricEx(metric, id, 0, 0, defaultValue) != 0;
}

HRESULT ZrSetMetric(HZRMETRIC metric, int32_t id, int32_t value) noexcept {
  plat::SettingsKey* key = KeyForReading(metric);  // The library's own settings may be written here.
  if (key == nullptr) return E_FAIL;
  const MetricName name(id, ZRREG_DWORD);
  return plat::SetSetting(key, name.text, ZRREG_DWORD, &value, sizeof value) == 0 ? S_OK : E_FAIL;
}

int32_t ZrGetMetricUsingName(HZRMETRIC metric, const char16_t* name, int32_t defaultValue) noexcept {
  int32_t value = 0;
  return marlo::ReadNumber(metric, name, &value) ? value : defaultValue;
}

HRESULT ZrSetMetricUsingName(HZRMETRIC metric, const char16_t* name, int32_t value) noexcept {
  plat::SettingsKey* key = KeyForWriting(metric);
  if (key == nullptr) return E_FAIL;
  return marlo::CodeOfError(plat::SetSetting(key, name, ZRREG_DWORD, &value, sizeof value));
}

uint32_t ZrGetMetricStringEx(HZRMETRIC metric, int32_t id, char16_t* buffer, uint32_t size, const char16_t* defaultText,
                             int32_t keepEmpty) noexcept {
  return marlo::ReadText(metric, id, ZRREG_SZ, buffer, size, defaultText, keepEmpty);
}

HRESULT ZrSetMetricString(HZRMETRIC metric, int32_t id, const char16_t* text) noexcept {
  const size_t characters = text != nullptr ? plat::TextLength(text) + 1 : 0;
  if (characters > UINT32_MAX / kCharacterBytes) return E_FAIL;
  return marlo::StoreMetric(metric, id, ZRREG_SZ, text, static_cast<uint32_t>(characters * kCharacterBytes));
}

uint32_t ZrGetMetricMultiStringEx(HZRMETRIC metric, int32_t id, char16_t* buffer, uint32_t size,
                                  const char16_t* defaultText, int32_t keepEmpty) noexcept {
  return marlo::ReadText(metric, id, ZRREG_MULTI_SZ, buffer, size, defaultText, keepEmpty);
}

HRESULT ZrSetMetricMultiString(HZRMETRIC metric, int32_t id, const char16_t* data, uint32_t characters) noexcept {
  if (characters > UINT32_MAX / kCharacterBytes) return E_FAIL;
  return marlo::StoreMetric(metric, id, ZRREG_MULTI_SZ, data, characters * kCharacterBytes);
}

uint32_t ZrGetMetricBinary(HZRMETRIC metric, int32_t id, void* buffer, uint32_t size) noexcept {
  if (buffer == nullptr) return 0;
  const MetricName name(id, ZRREG_BINARY);
  const marlo::Found found = marlo::Read(KeyForReading(metric), name.text, ZRREG_BINARY, buffer, size);
  const uint32_t bytes = found.error == 0 ? found.bytes : 0;
  marlo::ZeroFrom(buffer, bytes, size);
  return bytes;
}

HRESULT ZrGetMetricBinaryEx(HZRMETRIC metric, int32_t id, void* buffer, uint32_t size, uint32_t* needed) noexcept {
  if (needed == nullptr) return E_INVALIDARG;
  *needed = 0;
  const uint32_t room = buffer != nullptr ? size : 0;
  plat::SettingsKey* key = KeyForReading(metric);
  const marlo::Found found = marlo::Read(key, MetricName(id, ZRREG_BINARY).text, ZRREG_BINARY, buffer, room);
  *needed = found.bytes;
  marlo::ZeroFrom(buffer, found.bytes, room);
  if (key == nullptr) return ZR_E_NOT_FOUND;
  if (found.error == plat::kSettingMissing) return S_FALSE;
  return found.error == 0 ? S_OK : ZR_E_BUFFER_TOO_SMALL;
}

HRESULT ZrSetMetricBinary(HZRMETRIC metric, int32_t id, const void* data, uint32_t bytes) noexcept {
  return marlo::StoreMetric(metric, id, ZRREG_BINARY, data, bytes);
}

HRESULT ZrGetMetricStream(HZRMETRIC metric, int32_t id, IStream* stream) noexcept {
  if (stream == nullptr) return E_POINTER;
  plat::SettingsKey* key = KeyForReading(metric);
  const MetricName name(id, ZRREG_BINARY);
  const marlo::Found size = marlo::Read(key, name.text, ZRREG_BINARY, nullptr, 0);
  if (size.error == plat::kSettingMissing || size.bytes == 0) return E_UNEXPECTED;
  try {
    std::vector<char> data(size.bytes);
    const marlo::Found found = marlo::Read(key, name.text, ZRREG_BINARY, data.data(), size.bytes);
    // Somebody may have stored another value between the two reads.
    if (found.error != 0 || found.bytes != size.bytes) return E_UNEXPECTED;
    const HRESULT result = stream->Seek(0, STREAM_SEEK_SET, nullptr);
    return FAILED(result) ? result : stream->Write(data.data(), size.bytes, nullptr);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT ZrSetMetricStream(HZRMETRIC metric, int32_t id, IStream* stream) noexcept {
  if (stream == nullptr) return E_POINTER;
  uint64_t bytes = 0;
  HRESULT result = marlo::StreamBytes(stream, &bytes);
  if (FAILED(result)) return result;
  if (bytes == 0) return E_UNEXPECTED;
  if (bytes > kZrMetricStreamBytes) return E_INVALIDARG;
  void* block = nullptr;
  result = plat::GetBlockOfStream(stream, &block);
  if (FAILED(result)) return result;
  return ZrSetMetricBinary(metric, id, block, static_cast<uint32_t>(bytes));
}

HRESULT ZrGetMetricAny(HZRMETRIC metric, int32_t id, uint32_t type, void* buffer, uint32_t size,
                       uint32_t* needed) noexcept {
  if (needed != nullptr) *needed = 0;
  plat::SettingsKey* key = KeyForReading(metric);
  if (key == nullptr) return E_UNEXPECTED;
  const uint32_t room = buffer != nullptr ? size : 0;
  marlo::Found found = marlo::Read(key, MetricName(id, ZRREG_DWORD).text, type, buffer, room);
  if (found.error == plat::kSettingMissing) return ZR_E_NOT_FOUND;
  HRESULT result = found.error == 0 ? S_OK : ZR_E_BUFFER_TOO_SMALL;
  if (result == S_OK && type == ZRREG_SZ) result = marlo::Terminate(buffer, room, &found.bytes);
  if (needed != nullptr) *needed = found.bytes;
  return result;
}

int32_t ZrDoesMetricExist(HZRMETRIC metric, int32_t id, uint32_t type) noexcept {
  const marlo::Found found = marlo::Read(KeyForReading(metric), MetricName(id, type).text, type, nullptr, 0);
  return found.error == plat::kSettingMissing ? 1 : 0;
}

HRESULT ZrDeleteMetric(HZRMETRIC metric, int32_t id, uint32_t type) noexcept {
  if (marlo::FindType(type) == nullptr) return KeyForWriting(metric) != nullptr ? E_FAIL : S_FALSE;
  return ZrDeleteMetricUsingName(metric, MetricName(id, type).text, type);
}

HRESULT ZrDeleteMetricUsingName(HZRMETRIC metric, const char16_t* name, uint32_t) noexcept {
  plat::SettingsKey* key = KeyForWriting(metric);
  if (key == nullptr) return S_FALSE;
  return plat::DeleteSetting(key, name) == 0 ? S_OK : E_FAIL;
}

void ZrMetricGetName(int32_t id, uint32_t type, char16_t* buffer) noexcept {
  if (buffer == nullptr) return;
  const marlo::TypeRow* row = marlo::FindType(type);
  ZrCchPrintF(buffer, MetricName::kCharacters, nullptr, row != nullptr ? row->displayed : u"", marlo::Magnitude(id));
}
