// SPDX-License-Identifier: Apache-2.0
// Builders of sound files and the arithmetic of samples.
#include "apps/sound_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

namespace apps_test {

Layout LayoutOf(const std::string& typeName) {
  if (typeName == "pcm8") return {8};
  if (typeName == "pcm16") return {16};
  if (typeName == "pcm24") return {24};
  if (typeName == "pcm32") return {32};
  if (typeName == "float32") return {32, true};
  if (typeName == "float64") return {64, true};
  return {0};
}

double Decode(const uint8_t* sample, const Layout& layout) {
  if (layout.isFloat && layout.bits == 32) {
    float value;
    std::memcpy(&value, sample, 4);
    return value;
  }
  if (layout.isFloat) {
    double value;
    std::memcpy(&value, sample, 8);
    return value;
  }
  int64_t value = 0;
  const int count = layout.bits / 8;
  for (int index = 0; index < count; ++index) value = value << 8 | sample[layout.bigEndian ? index : count - 1 - index];
  if (layout.bits == 8 && !layout.signed8) {
    value -= 128;
  } else if (value >= int64_t{1} << (layout.bits - 1)) {
    value -= int64_t{1} << layout.bits;
  }
  return std::ldexp(static_cast<double>(value), 1 - layout.bits);
}

void Encode(double value, const Layout& layout, Bytes* bytes) {
  if (layout.isFloat) {
    uint8_t raw[8];
    const auto single = static_cast<float>(value);
    std::memcpy(raw, layout.bits == 32 ? static_cast<const void*>(&single) : static_cast<const void*>(&value),
                layout.Bytes());
    bytes->insert(bytes->end(), raw, raw + layout.Bytes());
    return;
  }
  const double scale = std::ldexp(1.0, layout.bits - 1);
  auto whole = static_cast<int64_t>(std::nearbyint(std::clamp(value * scale, -scale, scale - 1)));
  if (layout.bits == 8 && !layout.signed8) whole += 128;
  const int count = layout.bits / 8;
  for (int index = 0; index < count; ++index) {
    bytes->push_back(static_cast<uint8_t>(whole >> 8 * (layout.bigEndian ? count - 1 - index : index)));
  }
}

Bytes EncodeAll(const std::vector<double>& values, const Layout& layout) {
  Bytes bytes;
  for (const double value : values) Encode(value, layout, &bytes);
  return bytes;
}

std::vector<double> DecodeAll(const Bytes& bytes, size_t offset, size_t count, const Layout& layout) {
  std::vector<double> values;
  for (size_t index = 0; index < count && offset + (index + 1) * layout.Bytes() <= bytes.size(); ++index) {
    values.push_back(Decode(bytes.data() + offset + index * layout.Bytes(), layout));
  }
  return values;
}

void Put16(Bytes* bytes, uint32_t value) {
  for (int shift = 0; shift < 16; shift += 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}
void Put32(Bytes* bytes, uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}
void Put64(Bytes* bytes, uint64_t value) {
  for (int shift = 0; shift < 64; shift += 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}
void PutBig16(Bytes* bytes, uint32_t value) {
  for (int shift = 8; shift >= 0; shift -= 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}
void PutBig32(Bytes* bytes, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}
void PutText(Bytes* bytes, const std::string& text) { bytes->insert(bytes->end(), text.begin(), text.end()); }

uint64_t Get64(const Bytes& bytes, size_t offset) {
  uint64_t value = 0;
  for (size_t index = 8; index-- > 0;) value = value << 8 | bytes.at(offset + index);
  return value;
}
uint32_t Get32(const Bytes& bytes, size_t offset) {
  uint32_t value = 0;
  for (size_t index = 4; index-- > 0;) value = value << 8 | bytes.at(offset + index);
  return value;
}
uint32_t GetBig32(const Bytes& bytes, size_t offset) {
  uint32_t value = 0;
  for (size_t index = 0; index < 4; ++index) value = value << 8 | bytes.at(offset + index);
  return value;
}
void Set32(Bytes* bytes, size_t offset, uint32_t value) {
  for (size_t index = 0; index < 4; ++index) bytes->at(offset + index) = static_cast<uint8_t>(value >> 8 * index);
}
void Set64(Bytes* bytes, size_t offset, uint64_t value) {
  for (size_t index = 0; index < 8; ++index) bytes->at(offset + index) = static_cast<uint8_t>(value >> 8 * index);
}
void SetBig32(Bytes* bytes, size_t offset, uint32_t value) {
  for (size_t index = 0; index < 4; ++index)
    bytes->at(offset + index) = static_cast<uint8_t>(value >> (24 - 8 * index));
}

namespace {

void PutFormat(Bytes* bytes, uint32_t tag, const Layout& layout, uint32_t rate, uint16_t channels) {
  const auto frameBytes = static_cast<uint32_t>(layout.Bytes() * channels);
  Put16(bytes, tag);
  Put16(bytes, channels);
  Put32(bytes, rate);
  Put32(bytes, rate * frameBytes);
  Put16(bytes, frameBytes);
  Put16(bytes, static_cast<uint32_t>(layout.bits));
}

uint32_t TagOf(const Layout& layout) { return layout.isFloat ? 3 : 1; }

void PutData(Bytes* bytes, const Bytes& samples) {
  PutText(bytes, "data");
  Put32(bytes, static_cast<uint32_t>(samples.size()));
  bytes->insert(bytes->end(), samples.begin(), samples.end());
  if (samples.size() % 2 != 0) bytes->push_back(0);
  Set32(bytes, 4, static_cast<uint32_t>(bytes->size() - 8));
}

Bytes BeginWave(uint32_t formatBytes) {
  Bytes bytes;
  PutText(&bytes, "RIFF");
  Put32(&bytes, 0);
  PutText(&bytes, "WAVEfmt ");
  Put32(&bytes, formatBytes);
  return bytes;
}

void PutLabel(Bytes* bytes, const std::string& name) {
  static constexpr uint8_t kNamed[] = {0xF3, 0xAC, 0xD3, 0x11, 0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};
  static constexpr uint8_t kRiff[] = {0x2E, 0x91, 0xCF, 0x11, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00};
  PutText(bytes, name);
  const uint8_t* rest = name == "riff" ? kRiff : kNamed;
  bytes->insert(bytes->end(), rest, rest + 12);
}

}  // namespace

Bytes MakeWave(const Layout& layout, uint32_t rate, uint16_t channels, const Bytes& samples) {
  Bytes bytes = BeginWave(16);
  PutFormat(&bytes, TagOf(layout), layout, rate, channels);
  PutData(&bytes, samples);
  return bytes;
}

Bytes MakeExtensibleWave(const Layout& layout, uint32_t rate, uint16_t channels, uint32_t mask, const Bytes& samples) {
  Bytes bytes = BeginWave(40);
  PutFormat(&bytes, 0xFFFE, layout, rate, channels);
  Put16(&bytes, 22);
  Put16(&bytes, static_cast<uint32_t>(layout.bits));
  Put32(&bytes, mask);
  Put16(&bytes, TagOf(layout));
  for (const int byte : {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}) {
    bytes.push_back(static_cast<uint8_t>(byte));
  }
  PutData(&bytes, samples);
  return bytes;
}

Bytes MakeWave64(const Layout& layout, uint32_t rate, uint16_t channels, const Bytes& samples) {
  Bytes bytes;
  PutLabel(&bytes, "riff");
  Put64(&bytes, 0);
  PutLabel(&bytes, "wave");
  PutLabel(&bytes, "fmt ");
  Put64(&bytes, 24 + 18);
  PutFormat(&bytes, TagOf(layout), layout, rate, channels);
  bytes.resize(88);
  PutLabel(&bytes, "data");
  Put64(&bytes, 24 + samples.size());
  bytes.insert(bytes.end(), samples.begin(), samples.end());
  bytes.resize((bytes.size() + 7) / 8 * 8);
  Set64(&bytes, 16, bytes.size());
  return bytes;
}

Bytes MakeAiff(const Layout& layout, uint16_t channels, const Bytes& samples, bool aifc) {
  Bytes bytes;
  PutText(&bytes, "FORM");
  PutBig32(&bytes, 0);
  PutText(&bytes, aifc ? "AIFC" : "AIFF");
  PutText(&bytes, "COMM");
  PutBig32(&bytes, aifc ? 24 : 18);
  PutBig16(&bytes, channels);
  PutBig32(&bytes, static_cast<uint32_t>(samples.size() / (layout.Bytes() * channels)));
  PutBig16(&bytes, static_cast<uint32_t>(layout.bits));
  // 48000 as an 80-bit number: 1.46484375 times 2 to the 15th.
  for (const int byte : {0x40, 0x0E, 0xBB, 0x80, 0, 0, 0, 0, 0, 0}) bytes.push_back(static_cast<uint8_t>(byte));
  if (aifc) {
    PutText(&bytes, "sowt");
    PutBig16(&bytes, 0);
  }
  PutText(&bytes, "SSND");
  PutBig32(&bytes, static_cast<uint32_t>(8 + samples.size()));
  PutBig32(&bytes, 0);
  PutBig32(&bytes, 0);
  bytes.insert(bytes.end(), samples.begin(), samples.end());
  if (samples.size() % 2 != 0) bytes.push_back(0);
  SetBig32(&bytes, 4, static_cast<uint32_t>(bytes.size() - 8));
  return bytes;
}

void AppendChunk(Bytes* wave, const std::string& id, const Bytes& data) {
  PutText(wave, id);
  Put32(wave, static_cast<uint32_t>(data.size()));
  wave->insert(wave->end(), data.begin(), data.end());
  if (data.size() % 2 != 0) wave->push_back(0);
  Set32(wave, 4, static_cast<uint32_t>(wave->size() - 8));
}

Bytes ReadFileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void WriteFileBytes(const std::string& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace apps_test
