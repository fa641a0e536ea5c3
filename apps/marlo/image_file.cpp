// SPDX-License-Identifier: Apache-2.0
// Decoding and encoding in memory by libpng and libjpeg; sizes are checked before pixels are allocated.
#include "image_file.h"

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "errors.h"
#include "whole_file.h"

namespace host {
namespace {

constexpr int kJpegQuality = 95;

enum class Coding { Unknown, Png, Jpeg };

Coding CodingOfExtension(const std::string& path) {
  const size_t dot = path.rfind('.');
  std::string extension = dot == std::string::npos ? "" : path.substr(dot);
  for (char& letter : extension) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  if (extension == ".png") return Coding::Png;
  if (extension == ".jpg" || extension == ".jpeg") return Coding::Jpeg;
  return Coding::Unknown;
}

Failure Broken(const std::string& path, const std::string& reason) {
  return Failure(ZR_E_FILE_READ, path, "The picture is broken: " + reason + ".");
}

/// An empty picture of the size that a file states.
Image RoomFor(uint64_t width, uint64_t height, const std::string& path) {
  if (width == 0 || height == 0 || width > kMostPixels || height > kMostPixels || width * height > kMostPixels) {
    throw Failure(ZR_E_FILE_TOO_LARGE, path, "A picture has at most 67108864 pixels.");
  }
  return Image(static_cast<int32_t>(width), static_cast<int32_t>(height));
}

// ---- PNG -------------------------------------------------------------------------------------------

/// libpng's record, freed at the end of its scope.
struct PngImage {
  PngImage() {
    std::memset(&record, 0, sizeof record);
    record.version = PNG_IMAGE_VERSION;
  }
  ~PngImage() { png_image_free(&record); }
  PngImage(const PngImage&) = delete;
  PngImage& operator=(const PngImage&) = delete;
  png_image record;
};

Image DecodePng(const std::vector<uint8_t>& bytes, const std::string& path) {
  PngImage png;
  if (png_image_begin_read_from_memory(&png.record, bytes.data(), bytes.size()) == 0) {
    throw Broken(path, png.record.message);
  }
  // Without a gamma of its own a 16-bit file has the same curve as an 8-bit one.
  png.record.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
  png.record.format = PNG_FORMAT_BGRA;
  Image image = RoomFor(png.record.width, png.record.height, path);
  // A negative stride: rows come from the top, ours lie bottom-up.
  if (png_image_finish_read(&png.record, nullptr, image.Pixels().data(), -4 * image.Width(), nullptr) == 0) {
    throw Broken(path, png.record.message);
  }
  return image;
}

void WritePng(const std::string& path, const Image& image) {
  PngImage png;
  png.record.width = static_cast<png_uint_32>(image.Width());
  png.record.height = static_cast<png_uint_32>(image.Height());
  png.record.format = PNG_FORMAT_BGRA;
  std::vector<uint8_t> bytes(PNG_IMAGE_PNG_SIZE_MAX(png.record));
  png_alloc_size_t length = bytes.size();
  if (png_image_write_to_memory(&png.record, bytes.data(), &length, 0, image.Pixels().data(), -4 * image.Width(),
                                nullptr) == 0) {
    throw Failure(ZR_E_FILE_WRITE, path, png.record.message);
  }
  WriteWholeFile(path, bytes.data(), length);
}

/// Bytes that libpng wrote so far. Its callers are C, so nothing here throws.
struct PngSink {
  unsigned char* bytes = nullptr;
  size_t length = 0;
  size_t room = 0;
  ~PngSink() { std::free(bytes); }
};

void AppendPng(png_structp png, png_bytep data, size_t length) {
  auto* sink = static_cast<PngSink*>(png_get_io_ptr(png));
  if (length > sink->room - sink->length) {
    const size_t room = 2 * sink->room + length;
    void* grown = std::realloc(sink->bytes, room);
    if (grown == nullptr) png_error(png, "no memory");
    sink->bytes = static_cast<unsigned char*>(grown);
    sink->room = room;
  }
  std::memcpy(sink->bytes + sink->length, data, length);
  sink->length += length;
}

void FlushNothing(png_structp) {}

void JumpOutOfPng(png_structp png, png_const_charp) { png_longjmp(png, 1); }

/// Big-endian R, G, B, A words of a row.
void MakeRow16(const tZRPIXEL128* pixels, int32_t count, uint8_t* row) {
  for (int32_t x = 0; x < count; ++x) {
    for (const float channel : {pixels[x].r, pixels[x].g, pixels[x].b, pixels[x].a}) {
      const auto word = static_cast<uint16_t>(std::lround(std::clamp(channel, 0.0f, 1.0f) * 65535.0f));
      *row++ = static_cast<uint8_t>(word >> 8);
      *row++ = static_cast<uint8_t>(word);
    }
  }
}

/// No object with a destructor lives here: an error jumps out.
bool WritePngRows16(png_structp png, png_infop info, PngSink* sink, const FloatImage* image, uint8_t* row) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_set_write_fn(png, sink, AppendPng, FlushNothing);
  png_set_IHDR(png, info, static_cast<png_uint_32>(image->Width()), static_cast<png_uint_32>(image->Height()), 16,
               PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int32_t y = 0; y < image->Height(); ++y) {
    MakeRow16(image->Row(y), image->Width(), row);
    png_write_row(png, row);
  }
  png_write_end(png, info);
  return true;
}

// ---- JPEG ------------------------------------------------------------------------------------------

/// libjpeg's error handler with the place it jumps to; the functions that set the place hold no objects with
/// destructors, which the jump would pass over.
struct JpegErrors {
  jpeg_error_mgr manager;
  std::jmp_buf place;
  char message[JMSG_LENGTH_MAX];
};

void JumpOut(j_common_ptr common) {
  auto* errors = reinterpret_cast<JpegErrors*>(common->err);
  common->err->format_message(common, errors->message);
  std::longjmp(errors->place, 1);
}

/// A warning means lost data, a cut file for instance; it fails as an error does.
void JumpOutOnWarning(j_common_ptr common, int level) {
  if (level < 0) JumpOut(common);
}

void PrepareErrors(JpegErrors* errors) {
  jpeg_std_error(&errors->manager);
  errors->manager.error_exit = JumpOut;
  errors->manager.emit_message = JumpOutOnWarning;
}

bool CreateReader(jpeg_decompress_struct* jpeg, JpegErrors* errors) {
  if (setjmp(errors->place) != 0) return false;
  jpeg_create_decompress(jpeg);
  return true;
}

bool ReadJpegSize(jpeg_decompress_struct* jpeg, JpegErrors* errors, const std::vector<uint8_t>& bytes) {
  if (setjmp(errors->place) != 0) return false;
  jpeg_mem_src(jpeg, bytes.data(), bytes.size());
  jpeg_read_header(jpeg, TRUE);
  return true;
}

bool ReadJpegRows(jpeg_decompress_struct* jpeg, JpegErrors* errors, Image* image) {
  if (setjmp(errors->place) != 0) return false;
  jpeg->out_color_space = JCS_EXT_BGRA;
  jpeg_start_decompress(jpeg);
  while (jpeg->output_scanline < jpeg->output_height) {
    JSAMPROW row = reinterpret_cast<JSAMPROW>(image->Row(static_cast<int32_t>(jpeg->output_scanline)));
    jpeg_read_scanlines(jpeg, &row, 1);
  }
  jpeg_finish_decompress(jpeg);
  return true;
}

struct JpegReader {
  JpegReader() {
    PrepareErrors(&errors);
    jpeg.err = &errors.manager;
    created = CreateReader(&jpeg, &errors);
  }
  ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
  JpegErrors errors = {};
  jpeg_decompress_struct jpeg = {};
  bool created = false;
};

Image DecodeJpeg(const std::vector<uint8_t>& bytes, const std::string& path) {
  JpegReader reader;
  if (!reader.created || !ReadJpegSize(&reader.jpeg, &reader.errors, bytes)) throw Broken(path, reader.errors.message);
  Image image = RoomFor(reader.jpeg.image_width, reader.jpeg.image_height, path);
  if (!ReadJpegRows(&reader.jpeg, &reader.errors, &image)) throw Broken(path, reader.errors.message);
  return image;
}

bool CreateWriter(jpeg_compress_struct* jpeg, JpegErrors* errors) {
  if (setjmp(errors->place) != 0) return false;
  jpeg_create_compress(jpeg);
  return true;
}

bool WriteJpegRows(jpeg_compress_struct* jpeg, JpegErrors* errors, const Image* image, unsigned char** bytes,
                   unsigned long* length) {
  if (setjmp(errors->place) != 0) return false;
  jpeg_mem_dest(jpeg, bytes, length);
  jpeg->image_width = static_cast<JDIMENSION>(image->Width());
  jpeg->image_height = static_cast<JDIMENSION>(image->Height());
  jpeg->input_components = 4;
  jpeg->in_color_space = JCS_EXT_BGRX;
  jpeg_set_defaults(jpeg);
  jpeg_set_quality(jpeg, kJpegQuality, TRUE);
  jpeg_start_compress(jpeg, TRUE);
  while (jpeg->next_scanline < jpeg->image_height) {
    const tZRPIXEL32* pixels = image->Row(static_cast<int32_t>(jpeg->next_scanline));
    JSAMPROW row = reinterpret_cast<JSAMPROW>(const_cast<tZRPIXEL32*>(pixels));
    jpeg_write_scanlines(jpeg, &row, 1);
  }
  jpeg_finish_compress(jpeg);
  return true;
}

struct JpegWriter {
  JpegWriter() {
    PrepareErrors(&errors);
    jpeg.err = &errors.manager;
    created = CreateWriter(&jpeg, &errors);
  }
  ~JpegWriter() {
    jpeg_destroy_compress(&jpeg);
    std::free(bytes);
  }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;
  JpegErrors errors = {};
  jpeg_compress_struct jpeg = {};
  bool created = false;
  unsigned char* bytes = nullptr;
  unsigned long length = 0;
};

void WriteJpeg(const std::string& path, const Image& image) {
  Image overBlack = image;
  overBlack.Premultiply();
  JpegWriter writer;
  if (!writer.created || !WriteJpegRows(&writer.jpeg, &writer.errors, &overBlack, &writer.bytes, &writer.length)) {
    throw Failure(ZR_E_FILE_WRITE, path, std::string(writer.errors.message) + ".");
  }
  WriteWholeFile(path, writer.bytes, writer.length);
}

}  // namespace

ImageFile ReadImageFile(const std::string& path) {
  constexpr uint8_t kPngStart[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
  constexpr uint8_t kJpegStart[] = {0xFF, 0xD8, 0xFF};
  const std::vector<uint8_t> bytes = ReadWholeFile(path);
  const auto startsWith = [&](const auto& start) {
    return bytes.size() >= sizeof start && std::memcmp(bytes.data(), start, sizeof start) == 0;
  };
  if (startsWith(kPngStart)) return {"PNG", DecodePng(bytes, path)};
  if (startsWith(kJpegStart)) return {"JPEG", DecodeJpeg(bytes, path)};
  throw Failure(ZR_E_UNKNOWN_FORMAT, path, "It is neither a PNG nor a JPEG file.");
}

void WriteImageFile(const std::string& path, const Image& image) {
  RequireImageExtension(path);
  if (CodingOfExtension(path) == Coding::Png) {
    WritePng(path, image);
  } else {
    WriteJpeg(path, image);
  }
}

void WritePng16(const std::string& path, const FloatImage& image) {
  RequirePngExtension(path);
  PngSink sink;
  std::vector<uint8_t> row(8 * static_cast<size_t>(image.Width()));
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, JumpOutOfPng, nullptr);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  const bool written = info != nullptr && WritePngRows16(png, info, &sink, &image, row.data());
  png_destroy_write_struct(&png, &info);
  if (!written) throw Failure(ZR_E_FILE_WRITE, path, "The picture can't be encoded.");
  WriteWholeFile(path, sink.bytes, sink.length);
}

void RequireImageExtension(const std::string& path) {
  if (CodingOfExtension(path) == Coding::Unknown) {
    throw UsageError("\"" + path + "\" ends with neither .png nor .jpg nor .jpeg.");
  }
}

void RequirePngExtension(const std::string& path) {
  if (CodingOfExtension(path) != Coding::Png) throw UsageError("\"" + path + "\" doesn't end with .png.");
}

}  // namespace host
