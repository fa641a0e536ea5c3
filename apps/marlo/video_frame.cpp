// SPDX-License-Identifier: Apache-2.0
// Floats of full range stand between video and pictures; where the library has bytes only, their studio range is
// stretched here.
#include "video_frame.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "errors.h"
#include "float_image.h"
#include "whole_file.h"

namespace host {
namespace {

/// Names full range and the same curve as the video's.
constexpr double kFullRange = 2.2222222222222223;

constexpr VideoFormat kFormats[] = {
    {"bgra", 0, 0, true},
    {"i420", ZRDIB_FOURCC_I420, ZRDIB_FOURCC_I420, true},
    {"uyvy", ZRDIB_FOURCC_UYVY, ZRDIB_FOURCC_UYVY, true},
    {"v210", ZRDIB_FOURCC_V210, ZRDIB_FOURCC_V210, true},
    {"y41b", ZRDIB_FOURCC_Y41B, ZRDIB_FOURCC_Y41B, false},
    {"yuv422p", 0, 0, false},
    {"yuyv", ZRDIB_FOURCC_YUYV, ZRDIB_FOURCC_YUYV, true},
    {"yv12", ZRYUV_FOURCC_YV12, ZRDIB_FOURCC_I420, true},
};

bool Is(const VideoFormat& format, const char* name) { return std::strcmp(format.name, name) == 0; }

BITMAPINFOHEADER VideoHeader(uint32_t fourcc, int32_t width, int32_t height) {
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biCompression = fourcc;
  return header;
}

/// Bytes of a frame with its planes.
struct FrameLayout {
  uint64_t bytes;
  uint32_t planes[5] = {};

  FrameLayout(const VideoFormat& format, int32_t width, int32_t height) {
    const uint64_t pixels = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
    if (pixels > kMostPixels) throw Failure(ZR_E_FILE_TOO_LARGE, "", "A picture has at most 67108864 pixels.");
    const BITMAPINFOHEADER header = VideoHeader(format.fourcc, width, height);
    bytes = format.fourcc != 0 ? ZrYUVImageBytesAndOffsets(&header, planes) : pixels * (Is(format, "bgra") ? 4 : 2);
    // Rows of a narrow v210 frame are mostly padding.
    constexpr uint64_t kMostFrameBytes = uint64_t{1} << 29;
    if (bytes == 0 || bytes > kMostFrameBytes) throw Failure(ZR_E_FILE_TOO_LARGE, "", "A frame has at most 512 MiB.");
  }
};

/// 16 to 235 becomes 0 to 255.
void StretchRange(Image* image) {
  uint8_t table[256];
  for (int32_t value = 0; value < 256; ++value) {
    table[value] = static_cast<uint8_t>(std::clamp(((value - 16) * 510 + 219) / 438, 0, 255));
  }
  for (tZRPIXEL32& pixel : image->Pixels()) pixel = {table[pixel.b], table[pixel.g], table[pixel.r], pixel.a};
}

/// The picture's rows from its top, in a frame's order.
void CopyRows(const Image& image, uint8_t* to) {
  const size_t rowBytes = 4 * static_cast<size_t>(image.Width());
  for (int32_t y = 0; y < image.Height(); ++y)
    std::memcpy(to + rowBytes * static_cast<size_t>(y), image.Row(y), rowBytes);
}

Image FromBgra(const VideoFrame& frame) {
  Image image(frame.width, frame.height);
  const size_t rowBytes = 4 * static_cast<size_t>(frame.width);
  for (int32_t y = 0; y < frame.height; ++y) {
    std::memcpy(image.Row(y), frame.bytes.data() + rowBytes * static_cast<size_t>(y), rowBytes);
  }
  return image;
}

Image FromPlanar422(const VideoFrame& frame, int32_t colorSpace, const std::string& path) {
  Image image(frame.width, frame.height);
  const uint8_t* const y = frame.bytes.data();
  const uint8_t* const u = y + static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height);
  const uint8_t* const v = u + static_cast<size_t>(frame.width / 2) * static_cast<size_t>(frame.height);
  Check(ZrYUV422PlanarToRGBA(frame.width, frame.height, image.Row(0), -4 * frame.width, y, frame.width, u,
                             frame.width / 2, v, frame.width / 2, colorSpace),
        path);
  StretchRange(&image);
  return image;
}

}  // namespace

const VideoFormat& ParseVideoFormat(const std::string& name) {
  const VideoFormat* const format = std::find_if(std::begin(kFormats), std::end(kFormats),
                                                 [&](const VideoFormat& known) { return Is(known, name.c_str()); });
  if (format == std::end(kFormats)) throw UsageError("There is no video format \"" + name + "\".");
  return *format;
}

VideoFrame ReadVideoFrame(const std::string& path, const VideoFormat& format, int32_t width, int32_t height) {
  const FrameLayout layout(format, width, height);
  VideoFrame frame = {&format, width, height, ReadWholeFile(path)};
  if (frame.bytes.size() != layout.bytes) {
    throw Failure(ZR_E_FILE_READ, path,
                  "A frame of this size has " + std::to_string(layout.bytes) + " bytes, the file " +
                      std::to_string(frame.bytes.size()) + ".");
  }
  return frame;
}

Image ImageOfFrame(const VideoFrame& frame, const tZRYUVPARAMS& params, int32_t shrink, const std::string& path) {
  if (frame.format->reading == 0) {
    if (shrink != 0) throw Failure(E_FAIL, path, "This format can't be shrunk.");
    return Is(*frame.format, "bgra") ? FromBgra(frame) : FromPlanar422(frame, params.colorSpace, path);
  }
  const FrameLayout layout(*frame.format, frame.width, frame.height);
  const BITMAPINFOHEADER source = VideoHeader(frame.format->reading, frame.width, frame.height);
  if (shrink == 0) {
    FloatImage floats(frame.width, frame.height);
    const BITMAPINFOHEADER target = floats.Header();
    Check(ZrYUV_YUVToRGB(&target, kFullRange, floats.Pixels().data(), 0, &source, &params, frame.bytes.data(),
                         layout.planes, 0, 0),
          path);
    return floats.ToBytes();
  }
  Image image(frame.width >> shrink, frame.height >> shrink);
  const BITMAPINFOHEADER target = image.Header();
  Check(ZrYUV_YUVToRGB(&target, kFullRange, image.Pixels().data(), 0, &source, &params, frame.bytes.data(),
                       layout.planes, shrink, 0),
        path);
  StretchRange(&image);
  return image;
}

VideoFrame FrameOfImage(const Image& image, const VideoFormat& format, const tZRYUVPARAMS& params,
                        const std::string& path) {
  const FrameLayout layout(format, image.Width(), image.Height());
  VideoFrame frame = {&format, image.Width(), image.Height(), std::vector<uint8_t>(layout.bytes)};
  if (format.reading == 0) {
    CopyRows(image, frame.bytes.data());
    return frame;
  }
  FloatImage floats(image);
  floats.Premultiply();
  const BITMAPINFOHEADER source = floats.Header();
  const BITMAPINFOHEADER target = VideoHeader(format.reading, image.Width(), image.Height());
  Check(ZrYUV_RGBToYUV(&target, &params, frame.bytes.data(), layout.planes, &source, kFullRange, floats.Pixels().data(),
                       0, 0, 0),
        path);
  return frame;
}

bool Rearrange(const VideoFrame& source, const VideoFormat& format, const std::string& path, VideoFrame* result) {
  const FrameLayout from(*source.format, source.width, source.height);
  const FrameLayout to(format, source.width, source.height);
  VideoFrame frame = {&format, source.width, source.height, std::vector<uint8_t>(to.bytes)};
  const bool packed = Is(format, "uyvy");
  if (&format == source.format) {
    frame.bytes = source.bytes;
  } else if (source.format->reading == ZRDIB_FOURCC_I420 && (packed || Is(format, "yv12"))) {
    const BITMAPINFOHEADER sourceHeader = VideoHeader(ZRDIB_FOURCC_I420, source.width, source.height);
    const BITMAPINFOHEADER header = VideoHeader(format.fourcc, source.width, source.height);
    Check(ZrYUV_YUVToYUV(&header, frame.bytes.data(), to.planes, &sourceHeader, source.bytes.data(), from.planes),
          path);
  } else if (Is(*source.format, "v210") && packed) {
    Check(ZrYUV_v210_TO_UYVY(frame.bytes.data(), source.bytes.data(), static_cast<int32_t>(to.planes[0]),
                             static_cast<int32_t>(from.planes[0]), source.width, source.height),
          path);
  } else {
    return false;
  }
  *result = std::move(frame);
  return true;
}

}  // namespace host
