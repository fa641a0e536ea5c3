// SPDX-License-Identifier: Apache-2.0
// Reads chunk headers through the library's chunk layers and knows the names of common chunks.
#include "chunk_header.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"

namespace host {
namespace {

constexpr std::string_view kKnownRiff[] = {
    "fmt ", "data", "fact", "LIST", "JUNK", "junk", "PAD ", "FLLR", "bext", "cue ", "plst", "smpl",
    "inst", "acid", "strc", "iXML", "axml", "chna", "umid", "levl", "PEAK", "DISP", "cart", "id3 ",
    "ID3 ", "_PMX", "aXML", "INFO", "note", "labl", "ltxt", "afsp", "minf", "elm1", "regn", "qlty",
};
constexpr std::string_view kKnownAiff[] = {
    "COMM", "SSND", "MARK", "INST", "MIDI", "AESD", "APPL", "COMT", "NAME",
    "AUTH", "(c) ", "ANNO", "FVER", "ID3 ", "CHAN", "PEAK", "SAXL", "FLLR",
};

struct NamedLabel {
  const char* name;
  GUID label;
};
constexpr NamedLabel kKnownWave64[] = {
    {"riff", kZrLabelRiff}, {"list", kZrLabelList}, {"wave", kZrLabelWave}, {"fmt ", kZrLabelFmt},
    {"data", kZrLabelData}, {"junk", kZrLabelJunk}, {"bext", kZrLabelBext}, {"disp", kZrLabelDisplay},
};

ChunkLabel LabelOf(const GUID& guid) {
  ChunkLabel label;
  static_assert(sizeof guid == sizeof label);
  std::memcpy(label.data(), &guid, sizeof guid);
  return label;
}

// The four characters of an id whose lowest byte comes first in the file.
ChunkLabel LabelOf(uint32_t littleEndianId) {
  ChunkLabel label{};
  for (size_t index = 0; index < 4; ++index) label[index] = static_cast<uint8_t>(littleEndianId >> (8 * index));
  return label;
}

uint32_t Reversed(uint32_t value) {
  return value << 24 | (value & 0xFF00u) << 8 | (value >> 8 & 0xFF00u) | value >> 24;
}

bool IsAiff(Container container) { return container == Container::kAiff || container == Container::kAifc; }

// Labels made from a four-character name share twelve bytes.
bool HasNamedTail(const ChunkLabel& label) {
  const ChunkLabel named = LabelOf(kZrLabelData);
  return std::equal(label.begin() + 4, label.end(), named.begin() + 4);
}

bool IsPrintable(const ChunkLabel& label) {
  return std::all_of(label.begin(), label.begin() + 4, [](uint8_t byte) { return byte >= 0x20 && byte < 0x7F; });
}

std::string_view FirstFour(const ChunkLabel& label) { return {reinterpret_cast<const char*>(label.data()), 4}; }

}  // namespace

int64_t PaddingOf(Container container) { return container == Container::kWave64 ? 8 : 2; }

std::optional<FormHeader> ReadFormHeader(plat::File* file) {
  FormHeader form;
  uint32_t bytes32 = 0;
  uint32_t formType = 0;
  plat::SeekFile(file, 0, plat::kSeekStart, nullptr);
  if (SUCCEEDED(riff_ReadFileID(file, &bytes32, &formType))) {
    if (formType != ZrChunkId("WAVE")) return std::nullopt;
    // The size handed back counts from behind the form type and wraps below 4.
    form.firstChunk = 12;
    form.end = uint64_t{bytes32 + 4} + 8;
    return form;
  }
  uint64_t bytes64 = 0;
  GUID formLabel{};
  plat::SeekFile(file, 0, plat::kSeekStart, nullptr);
  if (SUCCEEDED(riff64_ReadFileID(file, &bytes64, &formLabel))) {
    if (LabelOf(formLabel) != LabelOf(kZrLabelWave)) return std::nullopt;
    form.container = Container::kWave64;
    form.firstChunk = 40;
    form.end = bytes64 + 40;
    return form;
  }
  tIFFCHUNK header{};
  plat::SeekFile(file, 0, plat::kSeekStart, nullptr);
  if (SUCCEEDED(iff_ReadFormType(file, &header, &formType))) {
    if (formType != ZrIffId("AIFF") && formType != ZrIffId("AIFC")) return std::nullopt;
    form.container = formType == ZrIffId("AIFF") ? Container::kAiff : Container::kAifc;
    form.firstChunk = 12;
    form.end = uint64_t{header.size} + 8;
    return form;
  }
  return std::nullopt;
}

std::optional<ChunkHeader> ReadChunkHeader(plat::File* file, Container container, int64_t offset) {
  ChunkHeader chunk;
  chunk.offset = offset;
  if (!plat::SeekFile(file, offset, plat::kSeekStart, nullptr)) return std::nullopt;
  if (container == Container::kWave64) {
    GUID label{};
    if (FAILED(riff64_ReadChunkHeader(file, &label, &chunk.bytes))) return std::nullopt;
    chunk.label = LabelOf(label);
    chunk.dataOffset = offset + 24;
  } else if (IsAiff(container)) {
    tIFFCHUNK header{};
    if (FAILED(iff_ReadChunkHdr(file, &header))) return std::nullopt;
    chunk.label = LabelOf(Reversed(header.id));
    chunk.bytes = header.size;
    chunk.dataOffset = offset + 8;
  } else {
    uint32_t id = 0;
    uint32_t bytes = 0;
    if (FAILED(riff_ReadChunkHeader(file, &id, &bytes))) return std::nullopt;
    chunk.label = LabelOf(id);
    chunk.bytes = bytes;
    chunk.dataOffset = offset + 8;
  }
  return chunk;
}

int64_t EndOfChunk(Container container, const ChunkHeader& chunk) {
  const auto padding = static_cast<uint64_t>(PaddingOf(container));
  constexpr uint64_t kFarthest = INT64_MAX;
  const uint64_t room = kFarthest - static_cast<uint64_t>(chunk.dataOffset);
  if (chunk.bytes > room - (padding - 1)) return INT64_MAX;
  return chunk.dataOffset + static_cast<int64_t>((chunk.bytes + padding - 1) / padding * padding);
}

std::string NameOf(Container container, const ChunkLabel& label) {
  if (container != Container::kWave64) {
    std::string name(FirstFour(label));
    for (char& character : name) {
      if (character < 0x20 || character > 0x7E) character = '?';
    }
    return name;
  }
  for (const NamedLabel& known : kKnownWave64) {
    if (LabelOf(known.label) == label) return known.name;
  }
  if (HasNamedTail(label) && IsPrintable(label)) return std::string(FirstFour(label));
  std::string digits;
  for (const uint8_t byte : label) {
    char text[3];
    std::snprintf(text, sizeof text, "%02X", byte);
    digits += text;
  }
  return digits;
}

bool IsKnownLabel(Container container, const ChunkLabel& label) {
  if (container == Container::kWave64) {
    return HasNamedTail(label) || std::any_of(std::begin(kKnownWave64), std::end(kKnownWave64),
                                              [&](const NamedLabel& known) { return LabelOf(known.label) == label; });
  }
  if (IsAiff(container)) {
    return std::find(std::begin(kKnownAiff), std::end(kKnownAiff), FirstFour(label)) != std::end(kKnownAiff);
  }
  return std::find(std::begin(kKnownRiff), std::end(kKnownRiff), FirstFour(label)) != std::end(kKnownRiff);
}

bool IsPlausibleLabel(Container container, const ChunkLabel& label) {
  return container == Container::kWave64 ? label != ChunkLabel{} : IsPrintable(label);
}

bool HasName(Container container, const ChunkLabel& label, const char* name) {
  return (container != Container::kWave64 || IsKnownLabel(container, label)) && NameOf(container, label) == name;
}

}  // namespace host
