// SPDX-License-Identifier: Apache-2.0
// Raw pixels to files and back by ffmpeg.
#include "apps/picture_files.h"

namespace apps_test {

void MakePicture(const std::string& path, const std::string& size, const Bytes& pixels) {
  WriteFileBytes(path + ".raw", pixels);
  const RunResult result = RunProgram({"ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "rgba", "-s", size,
                                       "-i", path + ".raw", "-frames:v", "1", path});
  ASSERT_EQ(result.exitCode, 0) << result.err;
}

Bytes PixelsOf(const std::string& path) {
  const RunResult result =
      RunProgram({"ffmpeg", "-v", "error", "-y", "-i", path, "-f", "rawvideo", "-pix_fmt", "rgba", path + ".out"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  return ReadFileBytes(path + ".out");
}

}  // namespace apps_test
