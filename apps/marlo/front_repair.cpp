// SPDX-License-Identifier: Apache-2.0
// Rehearses and runs the library's repair of lost fronts.
#include "front_repair.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "errors.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"

namespace host {
namespace {

constexpr uint64_t kUsualLimit = 65536;
constexpr uint64_t kHighestLimit = 64u << 20;
// The byte search looks at whole blocks of this size, so it can see a little past the limit.
constexpr uint64_t kSearchBlock = 4096;

HRESULT Fix(plat::File* file, const FrontRepair& repair) {
  const WAVEFORMATEX* defaults = repair.defaults ? &*repair.defaults : nullptr;
  return repair.container == Container::kWave64 ? ZrFixTrashedW64(file, defaults, static_cast<uint64_t>(repair.limit))
                                                : ZrFixTrashedWav(file, defaults, static_cast<uint32_t>(repair.limit));
}

// The format and the start of the samples that a front of the library's states.
bool ReadFront(plat::File* file, FrontRepair* repair) {
  uint64_t bytes64 = 0;
  uint32_t bytes = 0;
  uint64_t position = 0;
  const bool wide = repair->container == Container::kWave64;
  if (FAILED(wide ? riff64_FindChunkHeaderInRIFF(file, &kZrLabelFmt, &bytes64, nullptr)
                  : riff_FindChunkHeaderInRIFF(file, ZrChunkId("fmt "), &bytes, nullptr)) ||
      FAILED(riff_ReadData(file, &repair->format, sizeof repair->format)) ||
      FAILED(wide ? riff64_FindChunkHeaderInRIFF(file, &kZrLabelData, &bytes64, nullptr)
                  : riff_FindChunkHeaderInRIFF(file, ZrChunkId("data"), &bytes, nullptr)) ||
      !plat::SeekFile(file, 0, plat::kSeekCurrent, &position)) {
    return false;
  }
  repair->dataOffset = static_cast<int64_t>(position);
  return repair->format.nBlockAlign != 0;
}

// True when the label of a data chunk stands where one belongs in front of the samples.
bool LabelStandsBefore(const std::vector<uint8_t>& image, const FrontRepair& repair) {
  const bool wide = repair.container == Container::kWave64;
  const size_t headerBytes = wide ? 24 : 8;
  const size_t labelBytes = wide ? 16 : 4;
  const auto start = static_cast<size_t>(repair.dataOffset);
  if (start < headerBytes || start > image.size()) return false;
  const void* label = wide ? static_cast<const void*>(&kZrLabelData) : static_cast<const void*>("data");
  return std::memcmp(image.data() + start - headerBytes, label, labelBytes) == 0;
}

}  // namespace

Container ContainerOfBrokenFile(plat::File* file, const std::string& path) {
  uint8_t head[12] = {};
  uint32_t got = 0;
  SeekTo(file, 0, path);
  if (!ZrReadFile(file, head, sizeof head, &got)) throw Failure(ZR_E_FILE_READ, path);
  const std::string_view id(reinterpret_cast<const char*>(head), 4);
  const std::string_view formType(reinterpret_cast<const char*>(head) + 8, 4);
  if (id == "RIFF" && formType == "WAVE") return Container::kWave;
  if (std::memcmp(head, &kZrLabelRiff, sizeof head) == 0) return Container::kWave64;
  for (const std::string_view other : {"RF64", "BW64", "RIFX", "FORM", "fLaC", "OggS", "caff", "ID3\3", "ID3\4"}) {
    if (id == other) throw Failure(ZR_E_UNSUPPORTED_FILE, path, "Files of this kind can't be given a new front.");
  }
  const std::optional<Container> named = ContainerOfName(path);
  const bool plainName = named == Container::kWave || named == Container::kWave64;
  // A RIFF of another form ("AVI ") is another kind of file; one with a damaged form may be ours.
  const bool otherForm =
      id == "RIFF" && std::all_of(formType.begin(), formType.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
  if (!plainName || otherForm) throw Failure(ZR_E_UNKNOWN_FORMAT, path);
  return *named;
}

FrontRepair RehearseFrontRepair(plat::File* file, Container container, const std::optional<WAVEFORMATEX>& defaults,
                                std::optional<uint64_t> askedLimit, const std::string& path) {
  const auto fileBytes = static_cast<uint64_t>(LengthOf(file, path));
  FrontRepair repair;
  repair.container = container;
  repair.defaults = defaults;
  repair.limit = static_cast<int64_t>(std::min(askedLimit.value_or(kUsualLimit), kHighestLimit));

  std::vector<uint8_t> image(std::min(fileBytes, static_cast<uint64_t>(repair.limit) + 2 * kSearchBlock));
  uint32_t got = 0;
  SeekTo(file, 0, path);
  if (!ZrReadFile(file, image.data(), static_cast<uint32_t>(image.size()), &got) || got != image.size()) {
    throw Failure(ZR_E_FILE_READ, path);
  }
  const OpenFile rehearsal(plat::OpenMemoryFile(image.data(), image.size(), image.size()));
  if (!rehearsal.IsOpen()) throw Failure(E_OUTOFMEMORY, path);
  const HRESULT code = Fix(rehearsal.Get(), repair);
  if (code == ZR_E_BAD_STREAM) {
    throw Failure(code, path, "A new front doesn't fit before the samples; the file stays as it is.");
  }
  Check(code, path);
  if (!ReadFront(rehearsal.Get(), &repair)) throw Failure(ZR_E_BAD_STREAM, path);
  if (!askedLimit && !LabelStandsBefore(image, repair)) {
    throw Failure(ZR_E_NOT_FOUND, path,
                  "Nothing in the first 64 KiB shows where the samples begin; say it with --limit, which is then "
                  "taken for their start.");
  }
  const uint64_t available = fileBytes - std::min(fileBytes, static_cast<uint64_t>(repair.dataOffset));
  repair.dataBytes = available / repair.format.nBlockAlign * repair.format.nBlockAlign;
  if (container == Container::kWave && repair.dataBytes + static_cast<uint64_t>(repair.dataOffset) > 0xFFFFFFF7) {
    throw Failure(ZR_E_FILE_TOO_LARGE, path, "A Wave file can't state so many samples.");
  }
  return repair;
}

void ApplyFrontRepair(plat::File* file, const FrontRepair& repair, const std::string& path) {
  const HRESULT code = Fix(file, repair);
  if (code == ZR_E_FILE_WRITE) throw WriteFailure(path);
  Check(code, path);
  if (!plat::FlushFile(file)) throw WriteFailure(path);
}

}  // namespace host
