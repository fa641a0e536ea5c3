// SPDX-License-Identifier: Apache-2.0
// A host module with its language module beside it, in a folder of their own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "marlo110k/lang.h"
#include "platform/sys/module.h"
#include "testing/temp_folder.h"

namespace testing_support {

inline std::string ReadWhole(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// The language module, with the terminator behind string 4 that this resource compiler drops and others keep.
inline std::string LanguageModuleBytes() {
  std::string bytes = ReadWhole(MARLO_LANG_MODULE);
  const size_t mark = bytes.find(std::string("t\0#", 3));
  EXPECT_NE(std::string::npos, mark);
  if (mark != std::string::npos) bytes[mark + 2] = 0;
  return bytes;
}

/// The handle's module is opened for its resources alone, as a host's own would be for its code.
class LanguageFiles {
 public:
  explicit LanguageFiles(const std::string& languageModule = LanguageModuleBytes()) {
    const std::u16string main = folder_.Put("host.so.3", ReadWhole(MARLO_LANG_MAIN));
    if (!languageModule.empty()) folder_.Put("host.LNG", languageModule);
    module_ = plat::LoadDataModule(main.c_str());
    EXPECT_NE(nullptr, module_);
    EXPECT_EQ(S_OK, ZrLang_Open(&language_, module_, 0, 0));
  }
  ~LanguageFiles() {
    ZrLang_UpdateKernelLCID(language_, 0x409);
    ZrLang_Close(language_);
    plat::UnloadModule(module_);
  }
  LanguageFiles(const LanguageFiles&) = delete;
  LanguageFiles& operator=(const LanguageFiles&) = delete;

  HZRLANG Language() const { return language_; }
  plat::Module* Main() const { return module_; }

 private:
  TempFolder folder_;
  plat::Module* module_ = nullptr;
  HZRLANG language_ = nullptr;
};

}  // namespace testing_support
