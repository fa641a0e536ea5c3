// SPDX-License-Identifier: Apache-2.0
// Video frames without a header, and their way to pictures of full range and back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image.h"
#include "marlo110k/yuv.h"

namespace host {

/// A layout of samples as the command line names it.
struct VideoFormat {
  const char* name;
  uint32_t fourcc;   ///< 0: known to the host alone.
  uint32_t reading;  ///< The library's layout that reads and writes it, by planes of its own.
  bool canWrite;
};

/// Throws UsageError for a name that isn't one.
const VideoFormat& ParseVideoFormat(const std::string& name);

struct VideoFrame {
  const VideoFormat* format;
  int32_t width;
  int32_t height;
  std::vector<uint8_t> bytes;
};

/// A file that holds one frame and nothing else. Throws a Failure when its length says otherwise.
VideoFrame ReadVideoFrame(const std::string& path, const VideoFormat& format, int32_t width, int32_t height);

/// @param shrink 0 to 3: the size is divided by 1, 2, 4 or 8. Throws a Failure about `path` without a conversion.
Image ImageOfFrame(const VideoFrame& frame, const tZRYUVPARAMS& params, int32_t shrink, const std::string& path);
/// Transparent parts are laid over black. Throws a Failure about `path` for an odd size.
VideoFrame FrameOfImage(const Image& image, const VideoFormat& format, const tZRYUVPARAMS& params,
                        const std::string& path);
/// Samples in another order, without a detour through colour. @return false when there is no such way.
bool Rearrange(const VideoFrame& source, const VideoFormat& format, const std::string& path, VideoFrame* result);

}  // namespace host
