// SPDX-License-Identifier: Apache-2.0
// Settings handles: opening, closing and deleting keys; the library's own settings.
#include "kernel/metrics.h"

#include <atomic>
#include <iterator>
#include <string_view>

#include "kernel/language_settings.h"
#include "marlo110k/kernel.h"
#include "marlo110k/printf.h"
#include "platform/base/memory.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

using plat::SettingsTree;

constexpr uint32_t kPathTooLong = 206;
constexpr char16_t kMetrics[] = u"\\Metrics";
constexpr uint32_t kNewestWithoutLevel = 0x00FFFFFF;  ///< Version words up to here have no level in the path.
/// Room for a path that is too long by far, so that it shows as such.
constexpr uint32_t kComposeCharacters = 1024;

constinit std::atomic<ZrMetricKey*> kernelMetric{nullptr};

bool IsEmpty(const char16_t* text) { return text == nullptr || *text == 0; }

/// A path in the making; one that doesn't fit is marked as such.
struct Path {
  char16_t text[kComposeCharacters] = {};
  bool fits = true;

  /// The key of a product, and of its version when it has one.
  static Path OfProduct(const char16_t* product, uint32_t version, const char16_t* company) noexcept {
    Path path;
    const bool hasLevel = version > kNewestWithoutLevel;
    const HRESULT result =
        hasLevel ? ZrCchPrintF(path.text, kComposeCharacters, nullptr, u"Software\\%s\\%s\\%d.%d", company, product,
                               version >> 24, (version >> 16) & 0xFF)
                 : ZrCchPrintF(path.text, kComposeCharacters, nullptr, u"Software\\%s\\%s", company, product);
    path.fits = result == S_OK;
    return path;
  }

  Path& Add(const char16_t* piece) noexcept {
    const size_t length = plat::TextLength(text);
    plat::CopyText(text + length, kComposeCharacters - length, piece);
    if (plat::TextLength(piece) >= kComposeCharacters - length) fits = false;
    return *this;
  }
  Path& AddKey(const char16_t* subkey) noexcept { return IsEmpty(subkey) ? *this : Add(u"\\").Add(subkey); }
};

/// The record takes the path's first part even when it doesn't fit: its key is then missing.
HRESULT OpenPath(HZRMETRIC* metric, const Path& path) noexcept {
  auto* record = static_cast<ZrMetricKey*>(plat::AllocateZeroed(sizeof(ZrMetricKey)));
  if (record == nullptr) return E_OUTOFMEMORY;
  plat::CopyText(record->path, std::size(record->path), path.text);
  uint32_t error = kPathTooLong;
  if (path.fits && plat::TextLength(path.text) <= kZrMetricPathCharacters) {
    error = plat::CreateSettingsKey(SettingsTree::kUser, record->path, &record->key);
  }
  *metric = record;
  return CodeOfError(error);
}

/// What all opening functions refuse first; S_OK when they may go on.
HRESULT CheckOut(const HZRMETRIC* metric) noexcept {
  if (metric == nullptr) return E_POINTER;
  return *metric != nullptr ? ZR_S_NO_CHANGE : S_OK;
}

HRESULT DeleteBranch(SettingsTree tree, const Path& path) noexcept {
  if (!path.fits) return E_FAIL;
  const uint32_t error = plat::DeleteSettingsBranch(tree, path.text);
  return error == 0 || error == plat::kSettingMissing ? S_OK : E_FAIL;
}

HRESULT DeleteInBothTrees(const Path& path) noexcept {
  const HRESULT machine = DeleteBranch(SettingsTree::kMachine, path);
  const HRESULT user = DeleteBranch(SettingsTree::kUser, path);
  return FAILED(machine) ? machine : user;
}

// ---- The language's choice -------------------------------------------------------------------------

SettingsTree TreeOf(SettingsRoot root) {
  return root == SettingsRoot::kUser ? SettingsTree::kUser : SettingsTree::kMachine;
}

bool ReadNumber(SettingsRoot root, const char16_t* path, const char16_t* name, uint32_t* number) {
  plat::SettingsKey* key = nullptr;
  if (plat::OpenSettingsKey(TreeOf(root), path, &key) != 0) return false;
  uint32_t type = 0;
  uint32_t bytes = sizeof *number;
  const uint32_t error = plat::QuerySetting(key, name, &type, number, &bytes);
  plat::CloseSettingsKey(key);
  return error == 0 && type == plat::kSettingNumber && bytes == sizeof *number;
}

bool WriteNumber(SettingsRoot root, const char16_t* path, const char16_t* name, uint32_t number) {
  plat::SettingsKey* key = nullptr;
  if (plat::CreateSettingsKey(TreeOf(root), path, &key) != 0) return false;
  const uint32_t error = plat::SetSetting(key, name, plat::kSettingNumber, &number, sizeof number);
  plat::CloseSettingsKey(key);
  return error == 0;
}

constexpr NumberStore kLanguageStore = {ReadNumber, WriteNumber};

}  // namespace

plat::SettingsKey* KeyForReading(HZRMETRIC metric) noexcept {
  const ZrMetricKey* record = metric == kZrKernelMetric ? kernelMetric.load(std::memory_order_acquire) : metric;
  return record != nullptr ? record->key : nullptr;
}

plat::SettingsKey* KeyForWriting(HZRMETRIC metric) noexcept {
  return metric != kZrKernelMetric ? KeyForReading(metric) : nullptr;
}

void OpenKernelMetrics() noexcept {
  SetLanguageStore(&kLanguageStore);
  if (kernelMetric.load(std::memory_order_acquire) != nullptr) return;
  HZRMETRIC metric = nullptr;
  ZrMetric_Open(&metric, u"Marlo Pro", kZrKernelVersion, u"Kernel");
  kernelMetric.store(metric, std::memory_order_release);
}

void CloseKernelMetrics() noexcept {
  SetLanguageStore(nullptr);
  ZrMetric_Close(kernelMetric.exchange(nullptr, std::memory_order_acq_rel));
}

}  // namespace marlo

using marlo::kOwnCompany;
using marlo::Path;

HRESULT ZrMetric_Open(HZRMETRIC* metric, const char16_t* product, uint32_t version, const char16_t* subkey) noexcept {
  return ZrMetric_OpenRegHiveAndVersion(metric, product, version, kOwnCompany, subkey);
}

HRESULT ZrMetric_OpenRegHiveAndVersion(HZRMETRIC* metric, const char16_t* product, uint32_t version,
                                       const char16_t* company, const char16_t* subkey) noexcept {
  if (const HRESULT result = marlo::CheckOut(metric); result != S_OK) return result;
  if (product == nullptr || company == nullptr) return E_INVALIDARG;
  return marlo::OpenPath(metric, Path::OfProduct(product, version, company).Add(marlo::kMetrics).AddKey(subkey));
}

HRESULT ZrMetric_OpenAppVersion(HZRMETRIC* metric, const char16_t* path, const char16_t* subkey) noexcept {
  if (const HRESULT result = marlo::CheckOut(metric); result != S_OK) return result;
  if (path == nullptr) return E_INVALIDARG;
  return marlo::OpenPath(metric, Path().Add(path).AddKey(subkey));
}

HRESULT ZrMetric_OpenSubKey(HZRMETRIC* metric, HZRMETRIC parent, const char16_t* subkey) noexcept {
  if (const HRESULT result = marlo::CheckOut(metric); result != S_OK) return result;
  const ZrMetricKey* record = parent == kZrKernelMetric ? marlo::kernelMetric.load(std::memory_order_acquire) : parent;
  if (record == nullptr) return E_FAIL;
  Path path;
  path.Add(record->path);
  const size_t cut = std::u16string_view(path.text).find(marlo::kMetrics);
  if (cut != std::u16string_view::npos) path.text[cut + std::size(marlo::kMetrics) - 1] = 0;
  return marlo::OpenPath(metric, path.AddKey(subkey));
}

void ZrMetric_Close(HZRMETRIC metric) noexcept {
  if (metric == nullptr || metric == kZrKernelMetric) return;
  plat::CloseSettingsKey(metric->key);
  plat::FreeBlock(metric);
}

HRESULT ZrMetric_CloseAndDeleteKey(HZRMETRIC metric) noexcept {
  if (metric == nullptr || metric == kZrKernelMetric) return E_FAIL;
  const bool hadKey = metric->key != nullptr;
  const Path path = Path().Add(metric->path);
  ZrMetric_Close(metric);
  // A path that was cut would name another key.
  return hadKey ? marlo::DeleteBranch(plat::SettingsTree::kUser, path) : E_FAIL;
}

HRESULT ZrMetric_DeleteKey(const char16_t* product, uint32_t version, const char16_t* subkey) noexcept {
  return ZrMetric_DeleteKeyHiveAndVersion(product, version, kOwnCompany, subkey);
}

HRESULT ZrMetric_DeleteKeyHiveAndVersion(const char16_t* product, uint32_t version, const char16_t* company,
                                         const char16_t* subkey) noexcept {
  if (product == nullptr || company == nullptr) return E_INVALIDARG;
  return marlo::DeleteInBothTrees(Path::OfProduct(product, version, company).Add(marlo::kMetrics).AddKey(subkey));
}

HRESULT ZrMetric_DeleteAll(const char16_t* product, uint32_t version) noexcept {
  return ZrMetric_DeleteAllHiveAndVersion(product, version, kOwnCompany);
}

HRESULT ZrMetric_DeleteAllHiveAndVersion(const char16_t* product, uint32_t version, const char16_t* company) noexcept {
  if (product == nullptr || company == nullptr) return E_INVALIDARG;
  return marlo::DeleteInBothTrees(Path::OfProduct(product, version, company));
}

HRESULT ZrMetric_DeleteUserMetrics(const char16_t* product, uint32_t version) noexcept {
  if (product == nullptr) return E_INVALIDARG;
  return marlo::DeleteBranch(plat::SettingsTree::kUser, Path::OfProduct(product, version, kOwnCompany));
}
