// SPDX-License-Identifier: Apache-2.0
// Sound files byte by byte and samples by arithmetic, written for the tests alone so that nothing of the
// library judges itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace apps_test {

using Bytes = std::vector<uint8_t>;

/// A sample layout: 8 to 32 bit integers or 32 and 64 bit floats.
struct Layout {
  int bits;
  bool isFloat = false;
  bool bigEndian = false;
  bool signed8 = false;  ///< 8-bit samples are unsigned without it.
  size_t Bytes() const { return static_cast<size_t>(bits) / 8; }
};

/// Layouts as the command line names them.
Layout LayoutOf(const std::string& typeName);

/// One sample to and from a number whose full scale is 1. Writing clamps, then rounds ties to even.
double Decode(const uint8_t* sample, const Layout& layout);
void Encode(double value, const Layout& layout, Bytes* bytes);
Bytes EncodeAll(const std::vector<double>& values, const Layout& layout);
std::vector<double> DecodeAll(const Bytes& bytes, size_t offset, size_t count, const Layout& layout);

/// Little-endian and big-endian numbers and texts, appended.
void Put16(Bytes* bytes, uint32_t value);
void Put32(Bytes* bytes, uint32_t value);
void Put64(Bytes* bytes, uint64_t value);
void PutBig16(Bytes* bytes, uint32_t value);
void PutBig32(Bytes* bytes, uint32_t value);
void PutText(Bytes* bytes, const std::string& text);
/// A number at a place.
uint32_t Get32(const Bytes& bytes, size_t offset);
uint64_t Get64(const Bytes& bytes, size_t offset);
uint32_t GetBig32(const Bytes& bytes, size_t offset);
void Set32(Bytes* bytes, size_t offset, uint32_t value);
void Set64(Bytes* bytes, size_t offset, uint64_t value);
void SetBig32(Bytes* bytes, size_t offset, uint32_t value);

/// A Wave file with a 16-byte format chunk, so that the samples begin at 44.
Bytes MakeWave(const Layout& layout, uint32_t rate, uint16_t channels, const Bytes& samples);
/// A Wave file with a 40-byte extensible format chunk: samples at 68.
Bytes MakeExtensibleWave(const Layout& layout, uint32_t rate, uint16_t channels, uint32_t mask, const Bytes& samples);
/// A Wave64 file: samples at 112.
Bytes MakeWave64(const Layout& layout, uint32_t rate, uint16_t channels, const Bytes& samples);
/// An AIFF file, or an AIFC one of type "sowt" for a little-endian layout of more than 8 bits: samples at 54 or 72.
Bytes MakeAiff(const Layout& layout, uint16_t channels, const Bytes& samples, bool aifc = false);
/// A RIFF chunk behind a Wave file, counted by its size.
void AppendChunk(Bytes* wave, const std::string& id, const Bytes& data);

Bytes ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const Bytes& bytes);

}  // namespace apps_test
