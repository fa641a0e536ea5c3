// SPDX-License-Identifier: Apache-2.0
// A process that writes settings for a test: settings_writer FOLDER ID COUNT. Prints each number that stands.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/base/text.h"
#include "platform/sys/settings.h"

int main(int count, char** words) {
  if (count != 4) return 2;
  plat::UseSettings(plat::SettingsBackend::kFiles, plat::FromUtf8(words[1]).c_str());
  plat::SettingsKey* key = nullptr;
  if (plat::CreateSettingsKey(plat::SettingsTree::kUser, u"Shared\\Key", &key) != 0) return 1;
  const std::u16string name = plat::FromUtf8(words[2]);
  const int last = std::atoi(words[3]);
  char shared[3000];
  std::memset(shared, words[2][0], sizeof shared);
  for (int32_t number = 1; number <= last; ++number) {
    if (plat::SetSetting(key, name.c_str(), plat::kSettingNumber, &number, sizeof number) != 0) return 1;
    if (plat::SetSetting(key, u"shared", plat::kSettingBytes, shared, sizeof shared) != 0) return 1;
    std::printf("%d\n", number);
    std::fflush(stdout);
  }
  plat::CloseSettingsKey(key);
  return 0;
}
