// SPDX-License-Identifier: Apache-2.0
// The trees of settings by root and path: deleting and listing.
#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "marlo110k/metric.h"
#include "platform/base/text.h"
#include "platform/sys/settings.h"

namespace marlo {
namespace {

using plat::SettingsTree;

struct RootRow {
  uint32_t root;
  SettingsTree tree;
};
constexpr RootRow kRoots[] = {{ZRREG_CLASSES_ROOT, SettingsTree::kClasses},
                              {ZRREG_CURRENT_USER, SettingsTree::kUser},
                              {ZRREG_LOCAL_MACHINE, SettingsTree::kMachine}};

const RootRow* FindRoot(uint32_t root) {
  for (const RootRow& row : kRoots) {
    if (row.root == root) return &row;
  }
  return nullptr;
}

std::vector<std::u16string> SubKeys(uint32_t root, const char16_t* path) {
  std::vector<std::u16string> names;
  if (const RootRow* row = FindRoot(root)) plat::ListSettingsKeys(row->tree, path, &names);
  return names;
}

/// Copies the name number `index`.
int32_t Give(const std::vector<std::u16string>& names, uint32_t index, char16_t* buffer, uint32_t size) {
  plat::CopyText(buffer, size, index < names.size() ? names[index].c_str() : u"");
  return index < names.size() ? 1 : 0;
}

}  // namespace
}  // namespace marlo

int32_t ZrRegDeleteKey(uint32_t root, const char16_t* subkey) noexcept {
  const marlo::RootRow* row = marlo::FindRoot(root);
  if (row == nullptr || subkey == nullptr || *subkey == 0) return 0;
  const uint32_t error = plat::DeleteSettingsBranch(row->tree, subkey);
  return error == 0 || error == plat::kSettingMissing ? 1 : 0;
}

uint32_t ZrRegGetSubKeyCount(uint32_t root, const char16_t* subkey, uint32_t* maxNameLength) noexcept {
  if (maxNameLength != nullptr) *maxNameLength = 0;
  try {
    const std::vector<std::u16string> names = marlo::SubKeys(root, subkey);
    if (maxNameLength == nullptr) return static_cast<uint32_t>(names.size());
    for (const std::u16string& name : names) {
      *maxNameLength = std::max(*maxNameLength, static_cast<uint32_t>(name.size()) + 1);
    }
    return static_cast<uint32_t>(names.size());
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

int32_t ZrRegGetSubKeyName(uint32_t root, const char16_t* subkey, uint32_t index, char16_t* buffer,
                           uint32_t size) noexcept {
  try {
    return marlo::Give(marlo::SubKeys(root, subkey), index, buffer, size);
  } catch (const std::bad_alloc&) {
    return marlo::Give({}, 0, buffer, size);
  }
}

int32_t ZrRegGetValueName(uint32_t root, const char16_t* subkey, uint32_t index, char16_t* buffer, uint32_t size,
                          uint32_t* type) noexcept {
  if (type != nullptr) *type = 0;
  const marlo::RootRow* row = marlo::FindRoot(root);
  plat::SettingsKey* key = nullptr;
  if (row == nullptr || plat::OpenSettingsKey(row->tree, subkey, &key) != 0) {
    plat::CopyText(buffer, size, u"");
    return 0;
  }
  int32_t given = 0;
  try {
    std::vector<std::u16string> names;
    plat::ListSettings(key, &names);
    given = marlo::Give(names, index, buffer, size);
    uint32_t bytes = 0;
    if (given != 0 && type != nullptr) plat::QuerySetting(key, names[index].c_str(), type, nullptr, &bytes);
  } catch (const std::bad_alloc&) {
    plat::CopyText(buffer, size, u"");
  }
  plat::CloseSettingsKey(key);
  return given;
}
