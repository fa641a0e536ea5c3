// SPDX-License-Identifier: Apache-2.0
// Picture files made and read by another program, so that the host doesn't judge itself.
#pragma once

#include <gtest/gtest.h>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"

namespace apps_test {

/// Makes a picture file of straight R, G, B, A bytes.
void MakePicture(const std::string& path, const std::string& size, const Bytes& pixels);
/// R, G, B, A bytes of a picture file.
Bytes PixelsOf(const std::string& path);

class Picture : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasProgram("ffmpeg")) GTEST_SKIP() << "ffmpeg isn't installed";
  }
  Folder folder;
};

}  // namespace apps_test
